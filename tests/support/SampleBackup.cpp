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
#include "tests/support/MediaFiles.h"
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

constexpr std::uint32_t kMarch2013 = 1'362'500'000;  // when the first file was changed
constexpr std::uint32_t kHour = 3600;                // until the next one was
constexpr std::uint16_t kFolderMode = 0x41ED;

struct File {
    std::string domain;
    std::string path;
    std::vector<std::uint8_t> content;
};

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

/// Pictures show the digit that their name ends in; recovered_media.py knows them all.
std::vector<File> photos() {
    const std::string domain = "CameraRollDomain";
    const std::string folder = "Media/DCIM/100MEDIA/";
    return {
        {domain, folder + "IMG_0001.JPG", jpegFile(numberedQuadrants(400, 300, 1))},
        {domain, folder + "IMG_0002.JPG", jpegFile(numberedQuadrants(300, 200, 2))},
        {domain, folder + "IMG_0003.PNG", pngFile(numberedQuadrants(320, 480, 3))},
        {domain, folder + "IMG_0005.JPG", jpegFile(numberedQuadrants(480, 640, 5), {.orientation = 6})},
        {domain, folder + "IMG_0007.JPG", jpegFile(detailedQuadrants(1600, 1200), {.progressive = true})},
        {domain, "Media/DCIM/101MEDIA/IMG_0001.JPG", jpegFile(numberedQuadrants(180, 240, 1))},
        {"AppDomain-com.example.reader", "Documents/lower case is no photo.jpg", jpegFile(quadrants(64, 64))},
    };
}

std::vector<File> movies() {
    const std::string domain = "CameraRollDomain";
    const std::string folder = "Media/DCIM/100MEDIA/";
    return {
        {domain, folder + "IMG_0004.MOV", movieFile({.width = 320, .height = 240, .frames = 60})},
        {domain, folder + "IMG_0006.MOV",
         movieFile({.width = 180, .height = 320, .frames = 45, .rotation = 90, .sound = true})},
    };
}

/// Slots with these digits; a 0 stands for an empty one.
File thumbnails(const std::string& name, int width, int height, const std::vector<int>& digits) {
    std::vector<ThumbnailSlot> slots;
    for (const int digit : digits) {
        slots.push_back(digit == 0 ? ThumbnailSlot() : numberedQuadrants(width, height, digit));
    }
    return {"CameraRollDomain", "Media/PhotoData/Thumbnails/" + name, thumbnailStore(width, height, slots)};
}

/// Of these stores the one with the widest pictures is read, "3319.ithmb".
std::vector<File> thumbnailStores() {
    return {
        thumbnails("3303.ithmb", 24, 22, {5, 0, 6}),
        thumbnails("3309.ithmb", 64, 64, {0, 7}),
        thumbnails("3319.ithmb", 160, 157, {1, 0, 2, 3, 0, 0, 4}),
        thumbnails("4031.ithmb", 120, 120, {8, 9, 0}),
    };
}

std::vector<File> otherFiles() {
    return {{"AppDomain-com.example.reader", "Documents/Bücherliste 📚.txt", {'t', 'i', 't', 'l', 'e', 's'}}};
}

std::vector<File> allFiles() {
    std::vector<File> all;
    for (const auto& files : {databases(), photos(), movies(), thumbnailStores(), otherFiles()}) {
        all.insert(all.end(), files.begin(), files.end());
    }
    return all;
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

ManifestRecord recordOf(const File& file, std::uint32_t time) {
    ManifestRecord record;
    record.domain = file.domain;
    record.path = file.path;
    record.length = file.content.size();
    record.modified = record.accessed = record.changed = time;
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
    ManifestBuilder manifest;
    manifest.add(folderRecord("HomeDomain", ""));
    manifest.add(folderRecord("HomeDomain", "Library"));
    std::uint32_t time = kMarch2013;
    for (const File& file : allFiles()) {
        const std::string name = index == BackupIndex::Present ? indexedFileName(file) : fileName(file);
        manifest.addIndexed(recordOf(file, time), name);
        writeBytes(folder + "/" + name, file.content);
        time += kHour;
    }
    writeBytes(folder + "/Manifest.mbdb", manifest.bytes());
    if (index == BackupIndex::Present) writeBytes(folder + "/Manifest.mbdx", manifest.indexBytes());
    writeText(folder + "/Info.plist", kInfo);
}

}  // namespace ZkMobileBackup
