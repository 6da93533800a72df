#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "ZkMobileBackup/backup/HashValue.h"
#include "ZkMobileBackup/backup/Sha1.h"
#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"
#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"
#include "base/Log.h"
#include "tests/ZkMobileBackup/backup/Sha1Failures.h"
#include "tests/support/DictionaryKeys.h"
#include "tests/support/Files.h"
#include "tests/support/ManifestBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

using Bytes = std::span<const std::uint8_t>;

const std::string kName = "31bb7ba8914766d4ba40d6dfb6113c8b614be442";
const std::string kOtherName = "0123456789abcdef0123456789abcdef01234567";

constexpr std::size_t kHeaderLength = 6;
/// A record whose texts are empty and that has no properties.
constexpr std::size_t kShortestRecord = 50;

/// Collects what the library logs and writes to standard error.
class ManifestTest : public testing::Test {
protected:
    ManifestTest() {
        setLogSink([this](std::string_view line) { log_.emplace_back(line); });
        testing::internal::CaptureStderr();
    }
    ~ManifestTest() override {
        testing::internal::GetCapturedStderr();
        setLogSink({});
    }

    void writeManifest(Bytes bytes) const { writeBytes(manifestPath(), bytes); }
    void writeIndex(Bytes bytes) const { writeBytes(indexPath(), bytes); }

    /// Reads a manifest without an index.
    Manifest records(Bytes bytes) const {
        writeManifest(bytes);
        return parserMbdb(manifestPath()).value();
    }
    /// Reads the only record of a manifest without an index.
    Dictionary record(const ManifestRecord& record) const {
        ManifestBuilder builder;
        builder.add(record);
        return records(builder.bytes()).at(kHeaderLength);
    }
    ManifestIndex index(Bytes bytes) const {
        writeIndex(bytes);
        return parserMbdx(indexPath()).value();
    }
    std::optional<Manifest> fileList() const {
        return ZkMbdbFileParser::fileListFromMbdb(
            *ZkDeviceBackupSnapshot::initWithUDID({}, {}, {}, 0, {}, folder_.path()));
    }

    static std::string standardError() {
        std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }

    std::string manifestPath() const { return folder_.path("Manifest.mbdb"); }
    std::string indexPath() const { return folder_.path("Manifest.mbdx"); }

    TemporaryFolder folder_;
    std::vector<std::string> log_;
};

std::vector<std::int64_t> offsetsOf(const Manifest& manifest) {
    std::vector<std::int64_t> offsets;
    for (const auto& [offset, record] : manifest) offsets.push_back(offset);
    return offsets;
}

std::string textOf(const Dictionary& record, std::string_view key) {
    const std::string* text = record.text(key);
    return text != nullptr ? *text : "(no text)";
}

std::int64_t numberOf(const Dictionary& record, std::string_view key) {
    const std::int64_t* number = record.find(key)->integer();
    EXPECT_NE(number, nullptr) << key;
    return number != nullptr ? *number : 0;
}

using ParserMbdb = ManifestTest;
using ParserMbdx = ManifestTest;
using FileListFromMbdb = ManifestTest;

TEST_F(ParserMbdb, RecordHasEveryKeyInFileOrder) {
    EXPECT_THAT(keysOf(record({.domain = "D", .path = "P"})),
                ElementsAre("start_offset", "domain", "filename", "linktarget", "datahash", "unknown1", "mode",
                            "unknown2", "unknown3", "userid", "groupid", "mtime", "atime", "ctime", "filelen", "flag",
                            "numprops", "properties", "fileID"));
}

TEST_F(ParserMbdb, EveryFieldIsRead) {
    const Dictionary read = record({.domain = "HomeDomain",
                                    .path = "Library/SMS/sms.db",
                                    .linkTarget = "target",
                                    .dataHash = "hash",
                                    .unknown1 = "key",
                                    .mode = 0xFFFF,
                                    .unknown2 = 2,
                                    .unknown3 = 3,
                                    .userId = 4,
                                    .groupId = 5,
                                    .modified = 6,
                                    .accessed = 7,
                                    .changed = 8,
                                    .length = 9,
                                    .flag = 0xFF,
                                    .properties = {{"a", "b"}}});
    const Dictionary expected = {{"start_offset", 6},
                                 {"domain", "HomeDomain"},
                                 {"filename", "Library/SMS/sms.db"},
                                 {"linktarget", "target"},
                                 {"datahash", "hash"},
                                 {"unknown1", "key"},
                                 {"mode", 65535},
                                 {"unknown2", 2},
                                 {"unknown3", 3},
                                 {"userid", 4},
                                 {"groupid", 5},
                                 {"mtime", 6},
                                 {"atime", 7},
                                 {"ctime", 8},
                                 {"filelen", 9},
                                 {"flag", 255},
                                 {"numprops", 1},
                                 {"properties", Dictionary{{"a", "b"}}},
                                 {"fileID", "3D0D7E5FB2CE288813306E4D4636395E047A3D28"}};
    EXPECT_EQ(read, expected);
}

TEST_F(ParserMbdb, RecordsAreEnumeratedByAscendingStartOffset) {
    ManifestBuilder builder;
    std::vector<std::int64_t> offsets;
    for (const char* path : {"z", "longer than the others", "a"}) offsets.push_back(builder.add({.path = path}));
    const Manifest manifest = records(builder.bytes());
    EXPECT_EQ(offsetsOf(manifest), offsets);
    for (const auto& [offset, record] : manifest) EXPECT_EQ(numberOf(record, "start_offset"), offset);
}

TEST_F(ParserMbdb, FourByteFieldsOfTwoToThe31AndMoreAreNegative) {
    const Dictionary read = record({.unknown2 = 0x80000000, .unknown3 = 0xFFFFFFFF, .modified = 0xFFFFFFFE});
    EXPECT_EQ(numberOf(read, "unknown2"), INT32_MIN);
    EXPECT_EQ(numberOf(read, "unknown3"), -1);
    EXPECT_EQ(numberOf(read, "mtime"), -2);
}

TEST_F(ParserMbdb, FileLengthLosesItsUpperHalfDeliberately) {
    EXPECT_EQ(numberOf(record({.length = 0x0000000100000005}), "filelen"), 5);
    EXPECT_EQ(numberOf(record({.length = 0x00000000FFFFFFFF}), "filelen"), -1);
}

TEST_F(ParserMbdb, PropertiesAreKeptInOrder) {
    const Dictionary read = record({.properties = {{"b", "1"}, {"a", "2"}}});
    EXPECT_EQ(*read.find("properties")->dictionary(), (Dictionary{{"b", "1"}, {"a", "2"}}));
}

TEST_F(ParserMbdb, LaterPropertyOfOneNameWinsAndKeepsThePlace) {
    const Dictionary read = record({.properties = {{"a", "1"}, {"b", "2"}, {"a", "3"}}});
    EXPECT_EQ(*read.find("properties")->dictionary(), (Dictionary{{"a", "3"}, {"b", "2"}}));
    EXPECT_EQ(numberOf(read, "numprops"), 3);
}

TEST_F(ParserMbdb, RecordMayHave255Properties) {
    ManifestRecord many{.domain = "D"};
    for (int i = 0; i < 255; ++i) many.properties.emplace_back("name" + std::to_string(i), std::to_string(i));
    ManifestBuilder builder;
    builder.add(many);
    const std::uint32_t next = builder.add({.domain = "next"});
    const Manifest manifest = records(builder.bytes());
    const Dictionary& properties = *manifest.at(kHeaderLength).find("properties")->dictionary();
    EXPECT_EQ(properties.size(), 255U);
    EXPECT_EQ(textOf(properties, "name254"), "254");
    EXPECT_EQ(textOf(manifest.at(next), "domain"), "next");
}

TEST_F(ParserMbdb, EmptyTextOfEitherFormTakesTwoBytes) {
    ManifestBuilder builder;
    builder.add({});
    std::vector<std::uint8_t> bytes = builder.bytes();
    bytes[kHeaderLength] = bytes[kHeaderLength + 1] = 0;  // the other form: length 0
    const Manifest manifest = records(bytes);
    EXPECT_EQ(offsetsOf(manifest), std::vector<std::int64_t>{kHeaderLength});
    EXPECT_EQ(textOf(manifest.at(kHeaderLength), "domain"), "");
    EXPECT_EQ(textOf(manifest.at(kHeaderLength), "filename"), "");
    EXPECT_EQ(numberOf(manifest.at(kHeaderLength), "userid"), 501);
}

TEST_F(ParserMbdb, NameIsTheHashOfDomainHyphenAndPath) {
    const Dictionary read = record({.domain = "HomeDomain", .path = "Library/SMS/sms.db", .linkTarget = "not hashed"});
    EXPECT_EQ(textOf(read, "fileID"), HashValue::getHashValue("HomeDomain-Library/SMS/sms.db"));
    EXPECT_EQ(textOf(read, "fileID"), "3D0D7E5FB2CE288813306E4D4636395E047A3D28");
}

TEST_F(ParserMbdb, PathOfInvalidUtf8IsNullInAngleBracketsAndHashedAsSuch) {
    const Dictionary read = record({.domain = "D", .path = "\xFF\xFE"});
    EXPECT_EQ(textOf(read, "filename"), "<null>");
    EXPECT_EQ(textOf(read, "fileID"), HashValue::getHashValue("D-<null>"));
}

TEST_F(ParserMbdb, FailedHashLeavesTheRecordWithoutAName) {
    const Sha1Failures failures(Sha1Failures::Step::kResult, shaStateError);
    const Dictionary read = record({.domain = "D", .path = "P"});
    EXPECT_FALSE(read.contains("fileID"));
    EXPECT_EQ(textOf(read, "filename"), "P");
}

TEST_F(ParserMbdb, IndexBesideTheManifestLeavesNamesUnset) {
    writeText(indexPath(), "");
    EXPECT_FALSE(record({.domain = "D"}).contains("fileID"));
}

TEST_F(ParserMbdb, DanglingLinkCountsAsAnIndex) {
    std::filesystem::create_symlink("nowhere", indexPath());
    EXPECT_FALSE(record({.domain = "D"}).contains("fileID"));
}

TEST_F(ParserMbdb, MissingFileIsNothingAndLogged) {
    EXPECT_EQ(parserMbdb(manifestPath()), std::nullopt);
    EXPECT_THAT(log_, ElementsAre("No MBDB file found at '" + manifestPath() + "'"));
    EXPECT_EQ(standardError(), "");
}

TEST_F(ParserMbdb, FolderInPlaceOfTheFileIsNothing) {
    std::filesystem::create_directory(manifestPath());
    EXPECT_EQ(parserMbdb(manifestPath()), std::nullopt);
}

TEST_F(ParserMbdb, PipeInPlaceOfTheFileIsNothingAndNotWaitedFor) {
    ASSERT_EQ(mkfifo(manifestPath().c_str(), 0600), 0);
    EXPECT_EQ(parserMbdb(manifestPath()), std::nullopt);
}

TEST_F(ParserMbdb, WrongMagicIsAnEmptyManifestAndATextWithoutLineEndOnStandardError) {
    ManifestBuilder builder;
    builder.add({.domain = "D"});
    std::vector<std::uint8_t> bytes = builder.bytes();
    bytes[3] = 'x';
    EXPECT_THAT(records(bytes), IsEmpty());
    EXPECT_EQ(standardError(), "Bad header found for mbdb file");
    EXPECT_THAT(log_, IsEmpty());
}

TEST_F(ParserMbdb, FileShorterThanItsMagicHasAWrongOne) {
    for (const char* text : {"", "m", "mbd"}) {
        EXPECT_THAT(records(bytesOf(text)), IsEmpty());
        EXPECT_EQ(standardError(), "Bad header found for mbdb file") << text;
    }
}

TEST_F(ParserMbdb, NothingButTheHeaderIsAnEmptyManifest) {
    for (const std::size_t length : {4U, 5U, 6U}) {
        EXPECT_THAT(records(bytesOf("mbdb\5\0").first(length)), IsEmpty()) << length;
        EXPECT_EQ(standardError(), "");
    }
}

TEST_F(ParserMbdb, VersionIsNotRead) {
    ManifestBuilder builder;
    builder.add({.domain = "D"});
    std::vector<std::uint8_t> bytes = builder.bytes();
    bytes[4] = bytes[5] = 0xFF;
    EXPECT_EQ(records(bytes).size(), 1U);
}

TEST_F(ParserMbdb, RecordCutAnywhereIsKeptWithZerosForWhatIsMissing) {
    ManifestBuilder builder;
    builder.add({.domain = "whole"});
    const std::uint32_t start = builder.add({.domain = "cut", .path = "path", .flag = 7, .properties = {{"a", "b"}}});
    for (std::size_t length = start + 1; length < builder.bytes().size(); ++length) {
        const Manifest manifest = records(Bytes(builder.bytes()).first(length));
        ASSERT_EQ(manifest.size(), 2U) << length;
        EXPECT_EQ(textOf(manifest.at(kHeaderLength), "domain"), "whole");
        EXPECT_EQ(keysOf(manifest.at(start)).size(), 19U);
    }
}

TEST_F(ParserMbdb, RecordCutBehindItsPathHasTheHashOfThatPath) {
    ManifestBuilder builder;
    builder.add({.domain = "D", .path = "P"});
    const Manifest manifest = records(Bytes(builder.bytes()).first(kHeaderLength + 6));
    EXPECT_EQ(textOf(manifest.at(kHeaderLength), "fileID"), HashValue::getHashValue("D-P"));
    EXPECT_EQ(numberOf(manifest.at(kHeaderLength), "mode"), 0);
}

TEST_F(ParserMbdb, SingleByteBehindTheRecordsIsARecord) {
    ManifestBuilder builder;
    builder.add({.domain = "D"});
    std::vector<std::uint8_t> bytes = builder.bytes();
    bytes.push_back(0);
    EXPECT_EQ(records(bytes).size(), 2U);
}

TEST_F(ParserMbdb, LengthsPastTheEndEndTheReading) {
    std::vector<std::uint8_t> bytes = {'m', 'b', 'd', 'b', 5, 0, 0xFF, 0xFE, 'a', 'b', 'c'};
    const Manifest manifest = records(bytes);
    ASSERT_EQ(manifest.size(), 1U);
    EXPECT_EQ(textOf(manifest.at(kHeaderLength), "domain"), "abc");
    EXPECT_EQ(textOf(manifest.at(kHeaderLength), "filename"), "");
}

TEST_F(ParserMbdb, ZerosAreRecordsWithoutTexts) {
    std::vector<std::uint8_t> bytes = {'m', 'b', 'd', 'b', 5, 0};
    bytes.resize(kHeaderLength + 3 * kShortestRecord);
    EXPECT_EQ(offsetsOf(records(bytes)), (std::vector<std::int64_t>{6, 56, 106}));
}

TEST_F(ParserMbdx, EntryGivesTheLowerCaseNameOfTheRecordSixBytesFurther) {
    ManifestBuilder builder;
    builder.addToIndex("31BB7BA8914766D4BA40D6DFB6113C8B614BE442", 6 + 1000);
    EXPECT_THAT(index(builder.indexBytes()), UnorderedElementsAre(Pair(1006, kName)));
}

TEST_F(ParserMbdx, EntriesFollowEachOtherEvery24BytesFromOffset6) {
    std::vector<std::uint8_t> bytes = {'m', 'b', 'd', 'x', 0, 0};
    bytes.resize(6 + 3 * 24);
    for (std::size_t i = 0; i < 3; ++i) bytes[6 + 24 * i + 23] = bytes[6 + 24 * i] = static_cast<std::uint8_t>(i + 1);
    const std::string zeros(38, '0');
    EXPECT_THAT(index(bytes),
                UnorderedElementsAre(Pair(7, "01" + zeros), Pair(8, "02" + zeros), Pair(9, "03" + zeros)));
}

TEST_F(ParserMbdx, OffsetIsUnsigned) {
    ManifestBuilder builder;
    builder.addToIndex(kName, 5);  // five less six wraps to the largest offset
    EXPECT_THAT(index(builder.indexBytes()), UnorderedElementsAre(Pair(std::int64_t{0xFFFFFFFF} + 6, kName)));
}

TEST_F(ParserMbdx, LaterEntryForOneRecordWins) {
    ManifestBuilder builder;
    builder.addToIndex(kName, 6).addToIndex(kOtherName, 6);
    EXPECT_THAT(index(builder.indexBytes()), UnorderedElementsAre(Pair(6, kOtherName)));
}

TEST_F(ParserMbdx, EntryCutByTheEndIsKeptWithZerosForWhatIsMissing) {
    ManifestBuilder builder;
    builder.addToIndex(kName, 6 + 0x01020304);
    const Bytes bytes(builder.indexBytes());
    EXPECT_THAT(index(bytes.first(7)), UnorderedElementsAre(Pair(6, "31" + std::string(38, '0'))));
    EXPECT_THAT(index(bytes.first(6 + 21)), UnorderedElementsAre(Pair(0x01000006, kName)));
}

TEST_F(ParserMbdx, HeaderAloneIsAnEmptyIndex) {
    EXPECT_THAT(index(ManifestBuilder().indexBytes()), IsEmpty());
    EXPECT_EQ(standardError(), "");
}

TEST_F(ParserMbdx, WrongMagicIsAnEmptyIndexAndATextOnStandardError) {
    EXPECT_THAT(index(bytesOf("mbdb\5\0and some more")), IsEmpty());
    EXPECT_EQ(standardError(), "Bad header found for mbdx file");
}

TEST_F(ParserMbdx, MissingFileIsNothingAndLogged) {
    EXPECT_EQ(parserMbdx(indexPath()), std::nullopt);
    EXPECT_THAT(log_, ElementsAre("No MBDX file found at '" + indexPath() + "'"));
}

TEST_F(FileListFromMbdb, WithoutAnIndexNamesAreHashed) {
    ManifestBuilder builder;
    builder.add({.domain = "D", .path = "P"});
    writeManifest(builder.bytes());
    EXPECT_EQ(textOf(fileList()->at(kHeaderLength), "fileID"), HashValue::getHashValue("D-P"));
}

TEST_F(FileListFromMbdb, IndexGivesTheNames) {
    ManifestBuilder builder;
    builder.addIndexed({.domain = "D", .path = "P"}, kName);
    const std::uint32_t second = builder.addIndexed({.domain = "D", .path = "Q"}, kOtherName);
    writeManifest(builder.bytes());
    writeIndex(builder.indexBytes());
    const Manifest manifest = fileList().value();
    EXPECT_EQ(textOf(manifest.at(kHeaderLength), "fileID"), kName);
    EXPECT_EQ(textOf(manifest.at(second), "fileID"), kOtherName);
}

TEST_F(FileListFromMbdb, NameFromTheIndexIsTheLastKey) {
    ManifestBuilder builder;
    builder.addIndexed({.domain = "D"}, kName);
    writeManifest(builder.bytes());
    writeIndex(builder.indexBytes());
    EXPECT_EQ(keysOf(fileList()->at(kHeaderLength)).back(), "fileID");
}

TEST_F(FileListFromMbdb, RecordThatTheIndexDoesNotKnowIsKeptAndMarked) {
    ManifestBuilder builder;
    builder.addIndexed({.domain = "D", .path = "P"}, kName);
    const std::uint32_t unknown = builder.add({.domain = "D", .path = "Q"});
    writeManifest(builder.bytes());
    writeIndex(builder.indexBytes());
    const Manifest manifest = fileList().value();
    ASSERT_EQ(manifest.size(), 2U);
    EXPECT_EQ(textOf(manifest.at(unknown), "fileID"), "<nofileID>");
}

TEST_F(FileListFromMbdb, IndexOfWrongMagicKnowsNoRecord) {
    ManifestBuilder builder;
    builder.add({.domain = "D", .path = "P"});
    writeManifest(builder.bytes());
    writeIndex(bytesOf("no index at all"));
    EXPECT_EQ(textOf(fileList()->at(kHeaderLength), "fileID"), "<nofileID>");
    EXPECT_EQ(standardError(), "Bad header found for mbdx file");
}

TEST_F(FileListFromMbdb, UnreadableIndexGivesNothing) {
    ManifestBuilder builder;
    builder.add({.domain = "D"});
    writeManifest(builder.bytes());
    std::filesystem::create_directory(indexPath());
    EXPECT_EQ(fileList(), std::nullopt);
    EXPECT_THAT(log_, ElementsAre(HasSubstr("No MBDX file found at")));
}

TEST_F(FileListFromMbdb, MissingManifestGivesNothingWithAndWithoutAnIndex) {
    EXPECT_EQ(fileList(), std::nullopt);
    writeIndex(ManifestBuilder().indexBytes());
    EXPECT_EQ(fileList(), std::nullopt);
    EXPECT_THAT(log_, ElementsAre(HasSubstr("No MBDB file found at"), HasSubstr("No MBDB file found at")));
}

TEST_F(FileListFromMbdb, WrongMagicGivesAManifestWithoutRecords) {
    writeManifest(bytesOf("something else"));
    const auto manifest = fileList();
    ASSERT_TRUE(manifest.has_value());
    EXPECT_THAT(*manifest, IsEmpty());
}

TEST_F(FileListFromMbdb, NothingOfTheBackupIsChanged) {
    ManifestBuilder builder;
    builder.addIndexed({.domain = "D"}, kName);
    writeManifest(builder.bytes());
    writeIndex(builder.indexBytes());
    const auto before = folderContent(folder_.path());
    ASSERT_TRUE(fileList().has_value());
    EXPECT_EQ(folderContent(folder_.path()), before);
}

}  // namespace
}  // namespace ZkMobileBackup
