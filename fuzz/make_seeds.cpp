// make_seeds CORPUS: writes the seeds of the fuzz targets into a folder for each target. The same bytes at every call.
#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <string>

#include "export/ZipCipher.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/ManifestBuilder.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/ZipBuilder.h"

using namespace ZkMobileBackup;

namespace {

constexpr int kSmallPage = 512;

std::string rows(int count) {
    return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) + ") ";
}

DatabaseBuilder itemDatabase(DatabaseOptions options, int count) {
    DatabaseBuilder database(options);
    database.exec("CREATE TABLE item (id INTEGER PRIMARY KEY, number INTEGER, title TEXT DEFAULT '0', body BLOB)");
    database.exec(rows(count) + "INSERT INTO item SELECT i, i * 7, 'Title ' || i, x'0011223344' FROM n");
    return database;
}

std::vector<std::uint8_t> withDeletedRows() {
    return itemDatabase({.pageSize = kSmallPage}, 12).exec("DELETE FROM item WHERE id IN (3, 4, 9)").bytes();
}

std::vector<std::uint8_t> withInteriorAndFreePages() {
    return itemDatabase({.pageSize = kSmallPage}, 90).exec("DELETE FROM item WHERE id BETWEEN 20 AND 70").bytes();
}

std::vector<std::uint8_t> withPointerMap() {
    return itemDatabase({.pageSize = kSmallPage, .autoVacuum = AutoVacuum::Incremental}, 40)
        .exec("DELETE FROM item WHERE id > 20")
        .bytes();
}

std::vector<std::uint8_t> withOverflow() {
    DatabaseBuilder database({.pageSize = kSmallPage});
    database.exec("CREATE TABLE note (id INTEGER PRIMARY KEY, title TEXT, text TEXT)");
    for (const int length : {100, 600, 1700}) {
        database.run("INSERT INTO note (title, text) VALUES (?, ?)",
                     {"note", std::string(static_cast<std::size_t>(length), 'x')});
    }
    return database.exec("DELETE FROM note WHERE id = 2").bytes();
}

std::vector<std::uint8_t> withEveryType() {
    DatabaseBuilder database({.pageSize = kSmallPage});
    database.exec("CREATE TABLE every (a INTEGER, b REAL, c TEXT, d BLOB, e VARCHAR(9), f TIMESTAMP)");
    constexpr std::array<std::int64_t, 7> kNumbers = {0, 1, -1, 300, 70'000, 5'000'000'000, -(1LL << 50)};
    for (const std::int64_t number : kNumbers) {
        database.insert("every", {number, static_cast<double>(number) / 3, "tëxt", std::vector<std::uint8_t>{1, 2},
                                  nullptr, number});
    }
    return database.exec("CREATE INDEX byA ON every (a); CREATE VIEW v AS SELECT a FROM every").bytes();
}

std::vector<std::uint8_t> ofBooks() {
    DatabaseBuilder database({.pageSize = 1024, .autoVacuum = AutoVacuum::Full});
    database.exec("CREATE TABLE bookmarks (id INTEGER PRIMARY KEY, title TEXT, url TEXT)");
    database.exec(rows(20) + "INSERT INTO bookmarks SELECT i, '題 ' || i, 'https://example.com/' || i FROM n");
    return database.exec("DELETE FROM bookmarks WHERE id % 3 = 0").bytes();
}

void writeDatabases(const std::string& folder) {
    writeBytes(folder + "/deleted_rows.db", withDeletedRows());
    writeBytes(folder + "/interior_and_free_pages.db", withInteriorAndFreePages());
    writeBytes(folder + "/pointer_map.db", withPointerMap());
    writeBytes(folder + "/overflow.db", withOverflow());
    writeBytes(folder + "/every_type.db", withEveryType());
    writeBytes(folder + "/bookmarks.db", ofBooks());
    writeBytes(folder + "/empty.db", {});
}

void writeSchemaTexts(const std::string& folder) {
    writeText(folder + "/key_and_default.txt",
              "t\nCREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT DEFAULT 'x', b BLOB)");
    writeText(folder + "/length.txt", "t\nCREATE TABLE t (a VARCHAR(20), b INTEGER)");
    writeText(folder + "/quoted_name.txt", "my table\nCREATE TABLE \"my table\" ([a b] TEXT, \"c\" INTEGER)");
    writeText(folder + "/constraints.txt",
              "t\nCREATE TABLE t(a TEXT NOT NULL, b REAL CHECK (b > (1 + 2)), PRIMARY KEY (a, b), UNIQUE (a))");
    writeText(folder + "/no_columns.txt", "t\nCREATE TABLE t)");
    writeText(folder + "/long_word.txt", "t\nCREATE TABLE t (" + std::string(1500, 'w') + " TEXT, ü TIMESTAMP)");
}

std::vector<std::uint8_t> manifestInput(const ManifestBuilder& builder, bool indexed) {
    constexpr std::size_t kMagic = 4;
    const auto manifest = std::span(builder.bytes()).subspan(kMagic);
    ByteBuilder input;
    input.u16(static_cast<unsigned>(manifest.size())).bytes(manifest);
    if (indexed) input.bytes(std::span(builder.indexBytes()).subspan(kMagic));
    return input.bytes();
}

void writeManifests(const std::string& folder) {
    ManifestRecord record;
    record.domain = "HomeDomain";
    record.path = "Library/Notes/notes.sqlite";
    record.length = 0x1'0000'0005;
    record.properties = {{"first", "value"}, {"second", ""}};
    ManifestBuilder builder;
    builder.addIndexed(record, std::string(40, 'a'));
    record.path = "not UTF-8 \xFF";
    builder.add(record);
    std::vector<std::uint8_t> cut = manifestInput(builder, false);
    writeBytes(folder + "/hashed.bin", cut);
    writeBytes(folder + "/indexed.bin", manifestInput(builder, true));
    cut.resize(cut.size() - 20);
    writeBytes(folder + "/cut.bin", cut);
    writeBytes(folder + "/header_alone.bin", ByteBuilder().u16(2).u16(0x0500).bytes());
}

void writePropertyLists(const std::string& folder) {
    writeText(folder + "/info.plist",
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
              "<key>Display Name</key><string>Phone &amp; co</string><key>Last Backup Date</key>"
              "<date>2013-03-05T18:30:00Z</date><key>list</key><array><integer>1</integer><real>2.5</real><true/>"
              "<data>AAECAw==</data></array></dict></plist>");
    writeText(folder + "/no_dictionary.plist", "<plist version=\"1.0\"><string>alone</string></plist>");
    writeText(folder + "/unclosed.plist", "<plist version=\"1.0\"><dict><key>a</key>");
    // A dictionary of one entry: "a" to "b". The trailer gives offset size, reference size, counts and the table's
    // place.
    ByteBuilder binary;
    binary.text("bplist00").bytes({0xD1, 1, 2, 0x51, 'a', 0x51, 'b'}).bytes({8, 11, 13});
    binary.fill(6).u8(1).u8(1).u64(3).u64(0).u64(15);
    writeBytes(folder + "/binary.plist", binary.bytes());
}

/// A movie header of either version, in a box.
ByteBuilder movieHeader(bool longNumbers) {
    ByteBuilder header;
    header.u32(longNumbers ? 120 : 108).text("mvhd").u32(longNumbers ? 1U << 24U : 0);
    if (longNumbers) {
        header.u64(1).u64(2).u32(600).u64(9000);
    } else {
        header.u32(1).u32(2).u32(600).u32(9000);
    }
    header.fill(80);
    return header;
}

void writeMovieHeaders(const std::string& folder) {
    const ByteBuilder shortHeader = movieHeader(false);
    const ByteBuilder longHeader = movieHeader(true);
    ByteBuilder first;
    first.u32(12)
        .text("ftyp")
        .text("qt  ")
        .u32(116)
        .text("moov")
        .bytes(shortHeader.bytes())
        .u32(10)
        .text("mdat")
        .u16(7);
    writeBytes(folder + "/before_the_media.mov", first.bytes());
    ByteBuilder last;
    last.u32(1).text("mdat").u64(20).u32(7).u32(0).text("moov").u32(8).text("free").bytes(longHeader.bytes());
    writeBytes(folder + "/behind_the_media.mov", last.bytes());
    ByteBuilder outside;
    outside.u32(1).text("free").u64(~std::uint64_t{0}).u32(116).text("moov").bytes(shortHeader.bytes());
    writeBytes(folder + "/oversized_box.mov", outside.bytes());
    ByteBuilder cut;
    cut.u32(28).text("moov").u32(20).text("mvhd").fill(12);
    writeBytes(folder + "/cut_header.mov", cut.bytes());
}

/// A stored entry; the random bytes of its header are zeros.
ZipBuilderEntry encryptedEntry(std::string_view content, const std::string& password) {
    ZipBuilderEntry entry{.name = "encrypted", .flags = 1, .checksum = zipChecksum(content)};
    entry.claimedSize = static_cast<std::uint32_t>(content.size());
    std::vector<std::uint8_t> bytes(ZipCipher::kHeaderSize);
    bytes.back() = static_cast<std::uint8_t>(entry.checksum >> 24);
    bytes.insert(bytes.end(), content.begin(), content.end());
    ZipCipher(password).encrypt(bytes);
    entry.storedBytes.assign(bytes.begin(), bytes.end());
    return entry;
}

void writeZips(const std::string& folder) {
    const std::string text(5000, 'x');
    writeText(folder + "/stored.zip", ZipBuilder().addFile("a", "text").addFile("folder/", "").bytes());
    writeText(folder + "/deflated.zip",
              ZipBuilder().add({.name = "word\\document.xml", .storedBytes = deflated(text), .method = 8}).bytes());
    writeText(folder + "/broken_off.zip",
              ZipBuilder().add({.name = "a/../b", .storedBytes = deflated(text).substr(0, 9), .method = 8}).bytes());
    writeText(folder + "/leaving.zip", ZipBuilder().addFile("../evil", "x").bytes());
    writeText(folder + "/through_link.zip", ZipBuilder().addFile("link/evil", "x").bytes());
    writeText(folder + "/without_entries.zip", "before" + ZipBuilder().bytes());
    writeText(folder + "/encrypted.zip", ZipBuilder().add(encryptedEntry("secret", "password")).bytes());
}

/// A store of one picture and an empty slot. `choice` tells the fuzz target which store it is.
std::vector<std::uint8_t> thumbnailStoreInput(unsigned choice, int width, int height) {
    const std::array<ThumbnailSlot, 2> slots{quadrants(width, height), std::nullopt};
    return ByteBuilder().u8(choice).bytes(thumbnailStore(width, height, slots)).bytes();
}

void writeThumbnailStores(const std::string& folder) {
    writeBytes(folder + "/3303.bin", thumbnailStoreInput(0, 24, 22));
    writeBytes(folder + "/3309.bin", thumbnailStoreInput(1, 64, 64));
    writeBytes(folder + "/3319.bin", thumbnailStoreInput(2, 160, 157));
    writeBytes(folder + "/4031.bin", thumbnailStoreInput(3, 120, 120));
    writeBytes(folder + "/unknown.bin", ByteBuilder().u8(4).fill(100, 1).bytes());
    std::vector<std::uint8_t> cut = thumbnailStoreInput(0, 24, 22);
    cut.resize(cut.size() - 30);
    writeBytes(folder + "/cut.bin", cut);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_seeds CORPUS\n";
        return 2;
    }
    const std::string corpus = argv[1];
    try {
        writeDatabases(corpus + "/fuzz_database");
        writeSchemaTexts(corpus + "/fuzz_schema_text");
        writeManifests(corpus + "/fuzz_manifest");
        writePropertyLists(corpus + "/fuzz_plist");
        writeMovieHeaders(corpus + "/fuzz_movie_header");
        writeZips(corpus + "/fuzz_zip");
        writeThumbnailStores(corpus + "/fuzz_thumbnail_store");
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "make_seeds: " << error.what() << '\n';
        return 1;
    }
}
