#include "tests/support/SampleBackup.h"

#include <array>
#include <openssl/evp.h>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/ManifestBuilder.h"
#include "tests/support/SampleDatabases.h"

namespace ZkMobileBackup {
namespace {

constexpr const char* kInfo = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
	<key>Display Name</key>
	<string>Amelia’s phone 📱</string>
	<key>Last Backup Date</key>
	<date>2013-03-05T18:30:00Z</date>
	<key>Serial Number</key>
	<string>SAMPLE000001</string>
	<key>Unique Identifier</key>
	<string>00000000SAMPLE0000000000000000000000BACKUP</string>
</dict>
</plist>
)";

constexpr std::uint32_t kMarch2013 = 1'362'500'000;
constexpr std::uint16_t kFolderMode = 0x41ED;

struct File {
    std::string domain;
    std::string path;
    std::vector<std::uint8_t> content;
};

std::vector<std::uint8_t> filler(std::string_view head) {
    const auto bytes = bytesOf(head);
    std::vector<std::uint8_t> content(bytes.begin(), bytes.end());
    content.resize(512, 0x5A);
    return content;
}

std::vector<File> databases() {
    return {
        {"HomeDomain", "Library/AddressBook/AddressBook.sqlitedb", sampleAddressBook()},
        {"HomeDomain", "Library/SMS/sms.db", sampleMessages()},
        {"HomeDomain", "Library/Calendar/Calendar.sqlitedb", sampleCalendar()},
        {"HomeDomain", "Library/Notes/notes.sqlite", sampleNotes()},
        {"HomeDomain", "Library/Safari/Bookmarks.db", sampleBookmarks()},
        {"HomeDomain", "Library/Voicemail/voicemail.db", sampleVoicemail()},
        {"WirelessDomain", "Library/CallHistory/call_history.db", sampleCallHistory()},
        {"CameraRollDomain", "Media/PhotoData/Photos.sqlite", samplePhotoLibrary()},
    };
}

/// Small files that have the names of pictures and movies; what is in them does not matter to finding them.
std::vector<File> mediaFiles() {
    return {
        {"CameraRollDomain", "Media/DCIM/100MEDIA/IMG_0001.JPG", filler("\xFF\xD8\xFF\xE0")},
        {"CameraRollDomain", "Media/DCIM/100MEDIA/IMG_0002.JPG", filler("\xFF\xD8\xFF\xE1")},
        {"CameraRollDomain", "Media/DCIM/100MEDIA/IMG_0003.PNG", filler("\x89PNG\r\n\x1A\n")},
        {"CameraRollDomain", "Media/DCIM/100MEDIA/IMG_0004.MOV", filler("moov")},
        {"CameraRollDomain", "Media/PhotoData/Thumbnails/120x120.ithmb", filler("thumbnails")},
        {"AppDomain-com.example.reader", "Documents/lower case is no photo.jpg", filler("\xFF\xD8")},
        {"AppDomain-com.example.reader", "Documents/Bücherliste 📚.txt", filler("titles")},
    };
}

std::string fileName(const File& file) {
    const std::string text = file.domain + "-" + file.path;
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    if (EVP_Digest(text.data(), text.size(), digest.data(), &length, EVP_sha1(), nullptr) != 1) {
        throw std::runtime_error("cannot hash " + text);
    }
    std::string name;
    for (const unsigned char byte : std::span(digest).first(length)) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        name += kDigits[byte >> 4];
        name += kDigits[byte & 15];
    }
    return name;
}

/// A name that differs from the hash, so that it can only come from the index.
std::string indexedFileName(const File& file) {
    const std::string name = fileName(file);
    return {name.rbegin(), name.rend()};
}

ManifestRecord recordOf(const File& file) {
    ManifestRecord record;
    record.domain = file.domain;
    record.path = file.path;
    record.length = file.content.size();
    record.modified = record.accessed = record.changed = kMarch2013;
    record.properties = {{"com.example.source", "sample"}};
    return record;
}

ManifestRecord folderRecord(std::string domain, std::string path) {
    ManifestRecord record;
    record.domain = std::move(domain);
    record.path = std::move(path);
    record.mode = kFolderMode;
    record.flag = 0;
    return record;
}

}  // namespace

void writeSampleBackup(const std::string& folder, BackupIndex index) {
    std::vector<File> files = databases();
    for (File& file : mediaFiles()) files.push_back(std::move(file));

    ManifestBuilder manifest;
    manifest.add(folderRecord("HomeDomain", ""));
    manifest.add(folderRecord("HomeDomain", "Library"));
    for (const File& file : files) {
        const std::string name = index == BackupIndex::Present ? indexedFileName(file) : fileName(file);
        manifest.addIndexed(recordOf(file), name);
        writeBytes(folder + "/" + name, file.content);
    }
    writeBytes(folder + "/Manifest.mbdb", manifest.bytes());
    if (index == BackupIndex::Present) writeBytes(folder + "/Manifest.mbdx", manifest.indexBytes());
    writeText(folder + "/Info.plist", kInfo);
}

}  // namespace ZkMobileBackup
