#include "ZkMobileBackup/scan/ZkMobileBackupParser.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "ZkMobileBackup/backup/ApplicationDatabases.h"
#include "ZkMobileBackup/backup/BackupFolder.h"
#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"
#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "base/Text.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

enum ScanState : std::int64_t { kDomainAdded = 1, kFinished = 3 };

/// Pictures and movies follow the databases: two more steps of progress.
constexpr std::size_t kStepsBehindDatabases = 2;

// Extensions as the phone's own camera and photo library write them. Pictures of other programs come in lower case;
// they are no photos of the user.
constexpr std::string_view kThumbnailStoreExtension = "ithmb";
constexpr std::string_view kPhotoExtensions[] = {"JPG", "PNG"};
constexpr std::string_view kMovieExtension = "MOV";

std::string_view textOf(const Dictionary& record, std::string_view key) {
    const std::string* text = record.text(key);
    return text != nullptr ? *text : std::string_view();
}

std::string_view fileNameOf(const Dictionary& record) {
    return lastPathComponent(textOf(record, "filename"));
}

/// The info of the database in a file of the backup; nothing when it cannot be read.
std::optional<Dictionary> loadDatabase(BackupFolder& folder, const Dictionary& record) {
    const auto path = folder.pathOf(textOf(record, "fileID"));
    auto bytes = path ? readFile(*path) : std::nullopt;
    if (!bytes) return std::nullopt;
    return Dictionary{
        {kRawDBNameKey, pathWithoutExtension(fileNameOf(record))},
        {kRawDBdataKey, std::make_shared<const std::vector<std::uint8_t>>(*std::move(bytes))},
    };
}

Dictionary mediaInfo(std::string_view name, const std::string& path) {
    return {{kRawDBNameKey, pathWithoutExtension(name)}, {kRawDBdataKey, path}};
}

Dictionary photoInfo(std::string_view name, const std::string& path, const Dictionary& record) {
    Dictionary info = mediaInfo(name, path);
    const Value* changed = record.find("ctime");
    info.set(kRawDBdateKey, Date{changed != nullptr ? changed->numberOr0() : 0});
    return info;
}

}  // namespace

/// What is read of the backup once and kept.
struct ZkMobileBackupParser::Backup {
    Manifest manifest;
    BackupFolder folder;
};

/// One scan: sorts the files of the manifest and reports what it makes of them.
class ZkMobileBackupParser::Scan {
public:
    Scan(ZkMobileBackupParser& parser, const ScanCallback& callback) : parser_(parser), callback_(callback) {}

    void run() {
        parser_.domains_.clear();
        contacts_ = parser_.addressBookDomain();
        ZkMobileBackupAppDomain::setAddressBookDomain(contacts_);
        for (const auto& [offset, record] : parser_.backup_->manifest) sortIn(record);
        add(ZkMobileBackupPhotoDomain::initWithPhotos(std::move(photos_), std::move(thumbnailStores_)), reported_ + 1);
        add(ZkMobileBackupMovieDomain::initWithMovoes(std::move(movies_)), reported_ + 2);
    }

private:
    void sortIn(const Dictionary& record) {
        const std::string_view name = fileNameOf(record);
        // A thumbnail store is looked at further: whatever else its name makes of it, it is that too.
        if (pathExtension(name) == kThumbnailStoreExtension) addThumbnailStore(name, record);
        if (!isDatabase(name)) return addMedia(name, record);
        if (name == kAddressBookDatabase) return addContacts();
        addDatabase(record);
    }

    bool isDatabase(std::string_view name) const { return std::ranges::find(databases_, name) != databases_.end(); }

    void addThumbnailStore(std::string_view name, const Dictionary& record) {
        if (const auto path = pathOf(record))
            thumbnailStores_.push_back({{kThumbnailStorePathKey, *path}, {kThumbnailStoreNameKey, name}});
    }

    void addMedia(std::string_view name, const Dictionary& record) {
        const std::string_view extension = pathExtension(name);
        const bool isPhoto = std::ranges::find(kPhotoExtensions, extension) != std::end(kPhotoExtensions);
        if (!isPhoto && extension != kMovieExtension) return;
        const auto path = pathOf(record);
        if (!path) return;
        if (isPhoto) {
            photos_.push_back(photoInfo(name, *path, record));
        } else {
            movies_.push_back(mediaInfo(name, *path));
        }
    }

    /// Each record of the contacts database reports the one domain made before; progress does not count it.
    void addContacts() {
        if (contacts_) add(contacts_, reported_);
    }

    void addDatabase(const Dictionary& record) {
        const auto info = loadDatabase(parser_.backup_->folder, record);
        if (!info) return;
        const Domains domains = ZkMobileBackupAppDomain::appDomainWithBackupParser(parser_.shared_from_this(), *info);
        parser_.domains_.insert(parser_.domains_.end(), domains.begin(), domains.end());
        for (const auto& domain : domains) report(domain, ++reported_);
    }

    void add(const std::shared_ptr<ZkMobileBackupAppDomain>& domain, std::size_t step) {
        parser_.domains_.push_back(domain);
        report(domain, step);
    }

    void report(const std::shared_ptr<ZkMobileBackupAppDomain>& domain, std::size_t step) {
        const std::size_t steps = databases_.size() + kStepsBehindDatabases;
        const double progress = static_cast<double>(step) / static_cast<double>(steps);
        if (callback_) callback_(kDomainAdded, domain, &parser_.shouldStop_, progress);
    }

    std::optional<std::string> pathOf(const Dictionary& record) {
        return parser_.backup_->folder.pathOf(textOf(record, "fileID"));
    }

    ZkMobileBackupParser& parser_;
    const ScanCallback& callback_;
    const std::vector<std::string>& databases_ = parser_.snapshot_->userTextDataDB();
    std::shared_ptr<ZkMobileBackupAddressBookDomain> contacts_;
    std::size_t reported_ = 0;  // domains of databases other than contacts
    std::vector<Dictionary> photos_;
    std::vector<Dictionary> thumbnailStores_;
    std::vector<Dictionary> movies_;
};

std::shared_ptr<ZkMobileBackupParser> ZkMobileBackupParser::initWithBackupSnapshot(
    std::shared_ptr<ZkDeviceBackupSnapshot> snapshot) {
    return std::shared_ptr<ZkMobileBackupParser>(new ZkMobileBackupParser(std::move(snapshot)));
}

ZkMobileBackupParser::ZkMobileBackupParser(std::shared_ptr<ZkDeviceBackupSnapshot> snapshot)
    : snapshot_(std::move(snapshot)) {}

ZkMobileBackupParser::~ZkMobileBackupParser() = default;

void ZkMobileBackupParser::parserSnapshotWithCallbackBlock(const ScanCallback& callback) {
    const auto self = shared_from_this();  // the callback may let go of the parser
    readBackupOnce();
    if (backup_ && !backup_->manifest.empty()) Scan(*this, callback).run();
    if (callback) callback(kFinished, nullptr, &shouldStop_, 1.0);
}

void ZkMobileBackupParser::readBackupOnce() {
    if (backup_ || !snapshot_) return;
    if (auto manifest = ZkMbdbFileParser::fileListFromMbdb(*snapshot_)) {
        backup_ = std::make_unique<Backup>(Backup{*std::move(manifest), BackupFolder(snapshot_->path())});
    }
}

std::shared_ptr<ZkMobileBackupAddressBookDomain> ZkMobileBackupParser::addressBookDomain() {
    if (!backup_) return nullptr;
    const auto isContacts = [](const auto& entry) { return fileNameOf(entry.second) == kAddressBookDatabase; };
    const auto found = std::ranges::find_if(backup_->manifest, isContacts);
    if (found == backup_->manifest.end()) return nullptr;
    const auto info = loadDatabase(backup_->folder, found->second);
    if (!info) return nullptr;
    const Domains domains = ZkMobileBackupAppDomain::appDomainWithBackupParser(shared_from_this(), *info);
    return std::dynamic_pointer_cast<ZkMobileBackupAddressBookDomain>(domains.front());
}

std::shared_ptr<ZkiTunesBackupParser> ZkiTunesBackupParser::initWithBackupSnapshot(
    std::shared_ptr<ZkDeviceBackupSnapshot> snapshot) {
    return std::shared_ptr<ZkiTunesBackupParser>(new ZkiTunesBackupParser(std::move(snapshot)));
}

std::shared_ptr<ZkiCloudBackupParser> ZkiCloudBackupParser::initWithBackupSnapshot(
    std::shared_ptr<ZkDeviceBackupSnapshot> snapshot) {
    return std::shared_ptr<ZkiCloudBackupParser>(new ZkiCloudBackupParser(std::move(snapshot)));
}

std::shared_ptr<ZkDeviceBackupParser> ZkDeviceBackupParser::initWithBackupSnapshot(
    std::shared_ptr<ZkDeviceBackupSnapshot> snapshot) {
    return std::shared_ptr<ZkDeviceBackupParser>(new ZkDeviceBackupParser(std::move(snapshot)));
}

}  // namespace ZkMobileBackup
