#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fmt/format.h>
#include <functional>
#include <utility>
#include <vector>

#include "ZkMobileBackup/backup/HashValue.h"
#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"
#include "ZkMobileBackup/backup/manifest_fields.h"
#include "base/Log.h"
#include "base/Text.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

constexpr std::string_view kManifestName = "Manifest.mbdb";
constexpr std::string_view kIndexName = "Manifest.mbdx";

/// The magic and a version that is not looked at.
constexpr std::size_t kHeaderLength = 6;

constexpr std::size_t kIndexEntryLength = 24;
constexpr std::size_t kIndexNameLength = 20;
constexpr std::string_view kLowerCaseDigits = "0123456789abcdef";

/// One of the two files that describe a backup.
struct FileKind {
    std::string_view magic;
    std::string_view title;
};

constexpr FileKind kManifestKind{"mbdb", "MBDB"};
constexpr FileKind kIndexKind{"mbdx", "MBDX"};

/// A field of a record: its key, and its width in bytes or kText.
struct Field {
    const char* key;
    int width;
};

constexpr int kText = 0;

/// The fields of a record as they follow each other, up to its properties.
constexpr std::array kFields = {
    Field{"domain", kText},   Field{"filename", kText}, Field{"linktarget", kText}, Field{"datahash", kText},
    Field{"unknown1", kText}, Field{"mode", 2},         Field{"unknown2", 4},       Field{"unknown3", 4},
    Field{"userid", 4},       Field{"groupid", 4},      Field{"mtime", 4},          Field{"atime", 4},
    Field{"ctime", 4},        Field{"filelen", 8},      Field{"flag", 1},           Field{"numprops", 1},
};

// Places of a record's keys.
constexpr std::size_t kStartOffset = 0;
constexpr std::size_t kFirstField = 1;
constexpr std::size_t kDomain = 1;
constexpr std::size_t kFilename = 2;
constexpr std::size_t kPropertyCount = kFields.size();
constexpr std::size_t kProperties = kFields.size() + 1;
constexpr std::size_t kFileID = kFields.size() + 2;
constexpr const char* kFileIDKey = "fileID";

Dictionary makeEmptyRecord(bool withFileID) {
    Dictionary record;
    record.set("start_offset", Value());
    for (const Field& field : kFields) record.set(field.key, Value());
    record.set("properties", Value());
    if (withFileID) record.set(kFileIDKey, Value());
    return record;
}

/// Gives the "fileID" of a record that is complete but for it.
using Naming = std::function<std::optional<std::string>(const Dictionary& record)>;

std::optional<std::string> hashedName(const Dictionary& record) {
    const std::string& domain = *record.valueAt(kDomain).text();
    const std::string& path = *record.valueAt(kFilename).text();
    std::string text;
    text.reserve(domain.size() + 1 + path.size());
    return HashValue::getHashValue(text.append(domain).append("-").append(path));
}

Naming namingByIndex(const ManifestIndex& index) {
    return [&index](const Dictionary& record) {
        const auto found = index.find(*record.valueAt(kStartOffset).integer());
        return found != index.end() ? found->second : std::string(kNoFileID);
    };
}

/// Reads the records of a manifest one after another. Without a naming they get no "fileID".
class RecordReader {
public:
    RecordReader(Bytes bytes, Naming naming)
        : bytes_(bytes), naming_(std::move(naming)), emptyRecord_(makeEmptyRecord(naming_ != nullptr)) {}

    Manifest readAll() {
        Manifest manifest;
        while (position_ < bytes_.size()) {
            const auto start = static_cast<std::int64_t>(position_);
            manifest.emplace_hint(manifest.end(), start, readRecord(start));
        }
        return manifest;
    }

private:
    Dictionary readRecord(std::int64_t start) {
        Dictionary record = emptyRecord_;
        record.setValueAt(kStartOffset, start);
        for (std::size_t i = 0; i < kFields.size(); ++i) record.setValueAt(kFirstField + i, readField(kFields[i]));
        record.setValueAt(kProperties, readProperties(*record.valueAt(kPropertyCount).integer()));
        if (naming_) setFileID(record);
        return record;
    }

    Value readField(const Field& field) {
        if (field.width == kText) return getstring(bytes_, position_);
        return getint(bytes_, position_, field.width);
    }

    Dictionary readProperties(std::int64_t count) {
        Dictionary properties;
        for (std::int64_t i = 0; i < count; ++i) {
            const std::string name = getstring(bytes_, position_);
            properties.set(name, getstring(bytes_, position_));
        }
        return properties;
    }

    void setFileID(Dictionary& record) {
        if (std::optional<std::string> name = naming_(record)) {
            record.setValueAt(kFileID, *std::move(name));
        } else {
            record.remove(kFileIDKey);
        }
    }

    const Bytes bytes_;
    const Naming naming_;
    const Dictionary emptyRecord_;  // every record starts as a copy, which shares its keys
    std::size_t position_ = kHeaderLength;
};

/// The bytes of a file, none at all when it does not begin with its magic; nothing when it cannot be read.
std::optional<std::vector<std::uint8_t>> load(const std::string& path, const FileKind& kind) {
    std::optional<std::vector<std::uint8_t>> bytes = readFile(path);
    if (!bytes) {
        writeLog(fmt::format("No {} file found at '{}'", kind.title, path));
    } else if (bytes->size() < kind.magic.size() ||
               !std::ranges::equal(kind.magic, Bytes(*bytes).first(kind.magic.size()))) {
        std::fputs(fmt::format("Bad header found for {} file", kind.magic).c_str(), stderr);
        bytes->clear();
    }
    return bytes;
}

std::string nameInIndex(Bytes bytes, std::size_t entry) {
    std::array<std::uint8_t, kIndexNameLength> name{};
    std::ranges::copy(bytes.subspan(entry, std::min(name.size(), bytes.size() - entry)), name.begin());
    return hexadecimal(name, kLowerCaseDigits);
}

std::int64_t startInIndex(Bytes bytes, std::size_t entry) {
    std::size_t position = entry + kIndexNameLength;
    const auto offset = static_cast<std::uint32_t>(getint(bytes, position, 4));
    return std::int64_t{offset} + std::int64_t{kHeaderLength};
}

}  // namespace

std::optional<Manifest> parserMbdb(const std::string& path) {
    const bool hasIndex = entryExists(joinedPath(pathWithoutLastComponent(path), kIndexName));
    const auto bytes = load(path, kManifestKind);
    if (!bytes) return std::nullopt;
    return RecordReader(*bytes, hasIndex ? Naming() : hashedName).readAll();
}

std::optional<ManifestIndex> parserMbdx(const std::string& path) {
    const auto bytes = load(path, kIndexKind);
    if (!bytes) return std::nullopt;
    ManifestIndex index;
    for (std::size_t entry = kHeaderLength; entry < bytes->size(); entry += kIndexEntryLength) {
        index.insert_or_assign(startInIndex(*bytes, entry), nameInIndex(*bytes, entry));
    }
    return index;
}

std::optional<Manifest> ZkMbdbFileParser::fileListFromMbdb(const ZkDeviceBackupSnapshot& snapshot) {
    const std::string manifestPath = joinedPath(snapshot.path(), kManifestName);
    const std::string indexPath = joinedPath(snapshot.path(), kIndexName);
    if (!entryExists(indexPath)) return parserMbdb(manifestPath);
    const auto bytes = load(manifestPath, kManifestKind);
    const auto index = parserMbdx(indexPath);
    if (!bytes || !index) return std::nullopt;
    return RecordReader(*bytes, namingByIndex(*index)).readAll();
}

}  // namespace ZkMobileBackup
