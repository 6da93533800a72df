#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/export/ZipTesting.h"
#include "tests/support/CommandRun.h"
#include "tests/support/ZipBuilder.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kPassword = "open sesame";

/// A text that deflates a little, of any length.
std::string mixedText(std::size_t length) {
    std::mt19937 random(4711);
    std::string text;
    while (text.size() < length) text += static_cast<char>(random() % 2 == 0 ? random() & 0xFF : 'a');
    return text;
}

void setTime(const std::string& path, std::time_t time) {
    const timespec times[] = {{time, 0}, {time, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

std::time_t timeOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mtime : 0;
}

std::time_t localTime(int year, int month, int day, int hour, int minute, int second) {
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    return std::mktime(&fields);
}

/// Runs Python with `z` being the archive, and returns what it prints without the line end.
std::string python(const std::string& archive, const std::string& code) {
    std::string output =
        runCommand("python3 -c \"import zipfile; z = zipfile.ZipFile('" + archive + "'); " + code + "\" 2>&1").output;
    if (output.ends_with('\n')) output.pop_back();
    return output;
}

class ZipTest : public testing::Test {
protected:
    std::string zipPath() const { return folder_.path("archive.zip"); }
    std::string destination() const { return folder_.path("out"); }
    std::string inDestination(const std::string& name) const { return destination() + "/" + name; }

    /// A file outside the destination to be packed.
    std::string source(std::string_view content, const std::string& name = "source") const {
        writeText(folder_.path(name), content);
        return folder_.path(name);
    }

    /// An archive of ours with one file.
    void packFile(const std::string& path, const std::string& name, const std::string& password = {}) const {
        const auto archive = ZipArchive::init();
        ASSERT_TRUE(archive->CreateZipFile2(zipPath(), password));
        ASSERT_TRUE(archive->addFileToZip(path, name));
        ASSERT_TRUE(archive->CloseZipFile2());
    }
    void pack(const std::string& name, std::string_view content, const std::string& password = {}) const {
        packFile(source(content), name, password);
    }

    Unpacked unpackArchive(const std::string& password = {}) const {
        return unpack(zipPath(), destination(), password);
    }
    Unpacked unpackBuilt(const ZipBuilder& builder) const {
        return unpackBytes(folder_, builder.bytes(), destination());
    }

    /// What Info-ZIP's unzip says about the archive's integrity.
    CommandRun unzipTest(const std::string& options = {}) const {
        return runCommand("unzip -t " + options + " '" + zipPath() + "' 2>&1");
    }

    const ExportFolder folder_{};
};

// ---- Archives that are written ----

class ZipWriting : public ZipTest {};

TEST_F(ZipWriting, StartsWithNothingOpen) {
    const auto archive = ZipArchive::init();
    EXPECT_EQ(archive->delegate(), nullptr);
    EXPECT_FALSE(archive->addFileToZip(source("x"), "x"));
    EXPECT_FALSE(archive->CloseZipFile2());
    EXPECT_TRUE(archive->UnzipCloseFile());
}

TEST_F(ZipWriting, CannotBeCreatedWhereNoFileCanBeWritten) {
    const auto archive = ZipArchive::init();
    EXPECT_FALSE(archive->CreateZipFile2(folder_.path("missing/archive.zip")));
    EXPECT_FALSE(archive->addFileToZip(source("x"), "x"));
    EXPECT_FALSE(archive->CloseZipFile2());
}

TEST_F(ZipWriting, OtherProgramsReadWhatWasAdded) {
    const std::string large = mixedText(1'000'000);
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    EXPECT_TRUE(archive->addFileToZip(source("some text"), "word/document.xml"));
    EXPECT_TRUE(archive->addFileToZip(source(large, "large"), "large.bin"));
    EXPECT_TRUE(archive->addFileToZip(source("", "empty"), "empty"));
    EXPECT_TRUE(archive->CloseZipFile2());

    const CommandRun test = unzipTest();
    EXPECT_EQ(test.status, 0) << test.output;
    EXPECT_EQ(python(zipPath(), "print(z.testzip(), z.namelist(), z.read('word/document.xml'), z.read('empty'))"),
              "None ['word/document.xml', 'large.bin', 'empty'] b'some text' b''");
    EXPECT_EQ(python(zipPath(), "print(z.read('large.bin') == open('" + folder_.path("large") + "', 'rb').read())"),
              "True");
}

TEST_F(ZipWriting, EntriesAreDeflatedWithoutExtraFieldsAndComments) {
    pack("a", std::string(1000, 'a'));
    EXPECT_EQ(python(zipPath(),
                     "i = z.infolist()[0]; print(i.compress_type, i.compress_size < 100, i.extra, i.comment, "
                     "z.comment)"),
              "8 True b'' b'' b''");
}

TEST_F(ZipWriting, NameIsUtf8ThoughNotMarkedSo) {
    pack("\xE9\xA1\x8C/\xC3\xA9.txt", "x");
    EXPECT_EQ(python(zipPath(),
                     "i = z.infolist()[0]; print(i.flag_bits, "
                     "ascii(i.filename.encode('cp437').decode('utf-8')))"),
              "0 '\\u984c/\\xe9.txt'");
}

TEST_F(ZipWriting, EntryCarriesTheModificationTime) {
    const std::string file = source("x");
    setTime(file, localTime(2013, 12, 31, 23, 58, 6));
    packFile(file, "x");
    EXPECT_EQ(python(zipPath(), "print(z.infolist()[0].date_time)"), "(2013, 12, 31, 23, 58, 6)");
}

TEST_F(ZipWriting, FileThatCannotBeReadIsNotAdded) {
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    EXPECT_FALSE(archive->addFileToZip(folder_.path("missing"), "missing"));
    EXPECT_FALSE(archive->addFileToZip(folder_.path(), "folder"));
    EXPECT_TRUE(archive->addFileToZip(source("x"), "x"));
    EXPECT_TRUE(archive->CloseZipFile2());
    EXPECT_EQ(python(zipPath(), "print(z.namelist())"), "['x']");
}

TEST_F(ZipWriting, NameThatNoEntryCanHoldIsNotAdded) {
    for (const char* password : {"", kPassword}) {
        const auto archive = ZipArchive::init();
        ASSERT_TRUE(archive->CreateZipFile2(zipPath(), password));
        EXPECT_FALSE(archive->addFileToZip(source("x"), std::string(70'000, 'n')));
        EXPECT_TRUE(archive->addFileToZip(source("x"), "x"));
        EXPECT_TRUE(archive->CloseZipFile2());
        EXPECT_EQ(python(zipPath(), "print(z.namelist())"), "['x']");
    }
}

TEST_F(ZipWriting, ArchiveThatStandsThereIsReplaced) {
    pack("a long name of an entry", mixedText(5000));
    pack("b", "x");
    EXPECT_EQ(python(zipPath(), "print(z.namelist())"), "['b']");
}

TEST_F(ZipWriting, ClosesWhatIsOpenWithTheObject) {
    auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    ASSERT_TRUE(archive->addFileToZip(source("x"), "x"));
    archive.reset();
    EXPECT_EQ(unzipTest().status, 0);
}

TEST_F(ZipWriting, CreatingAnotherFinishesTheOneBefore) {
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    ASSERT_TRUE(archive->addFileToZip(source("x"), "x"));
    ASSERT_TRUE(archive->CreateZipFile2(folder_.path("other.zip")));
    EXPECT_EQ(unzipTest().status, 0);
    EXPECT_TRUE(archive->CloseZipFile2());
}

TEST_F(ZipWriting, CreatingTheSameAgainStartsAnew) {
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    ASSERT_TRUE(archive->addFileToZip(source(mixedText(50'000)), "x"));
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    ASSERT_TRUE(archive->addFileToZip(source("y"), "y"));
    ASSERT_TRUE(archive->CloseZipFile2());
    EXPECT_EQ(unzipTest().status, 0);
    EXPECT_LT(fs::file_size(zipPath()), 200U);
}

TEST_F(ZipWriting, CloseTellsThatTheDiskIsFull) {
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2("/dev/full"));
    archive->addFileToZip(source(mixedText(100)), "x");
    EXPECT_FALSE(archive->CloseZipFile2());
}

TEST_F(ZipWriting, ArchiveWithoutEntriesIsOneForOtherPrograms) {
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    EXPECT_TRUE(archive->CloseZipFile2());
    EXPECT_EQ(python(zipPath(), "print(z.namelist())"), "[]");
}

// ---- Encryption ----

class ZipEncryption : public ZipTest {
protected:
    /// Whether an archive is in plain view.
    bool firstEntryIsEncrypted() const { return python(zipPath(), "print(z.infolist()[0].flag_bits)") == "1"; }
};

TEST_F(ZipEncryption, OtherProgramsReadWithThePassword) {
    const std::string content = "secret " + mixedText(100'000);
    pack("notes/secret.txt", content, kPassword);

    const CommandRun test = unzipTest(std::string("-P '") + kPassword + "'");
    EXPECT_EQ(test.status, 0) << test.output;
    EXPECT_EQ(python(zipPath(), std::string("print(z.read('notes/secret.txt', pwd=b'") + kPassword + "') == open('" +
                                    folder_.path("source") + "', 'rb').read())"),
              "True");
    EXPECT_TRUE(firstEntryIsEncrypted());
}

TEST_F(ZipEncryption, OtherProgramsReadNothingWithoutThePassword) {
    pack("secret.txt", "secret", kPassword);
    EXPECT_NE(unzipTest("-P wrong").status, 0);
    EXPECT_THAT(python(zipPath(), "print(z.read('secret.txt'))"), HasSubstr("encrypted"));
}

TEST_F(ZipEncryption, IsReadBack) {
    for (const std::size_t length : {0U, 1U, 4095U, 4096U, 4097U, 300'000U}) {
        const std::string content = mixedText(length);
        pack("secret", content, kPassword);
        const Unpacked unpacked = unpackArchive(kPassword);
        EXPECT_TRUE(unpacked.result) << length;
        EXPECT_THAT(unpacked.messages, IsEmpty()) << length;
        EXPECT_THAT(unpacked.files, ElementsAre(Pair("secret", content))) << length;
    }
}

TEST_F(ZipEncryption, ModificationTimeIsKept) {
    const std::string file = source("x");
    const std::time_t time = localTime(2001, 2, 3, 4, 5, 6);
    setTime(file, time);
    packFile(file, "x", kPassword);
    EXPECT_TRUE(unpackArchive(kPassword).result);
    EXPECT_EQ(timeOf(inDestination("x")), time);
}

TEST_F(ZipEncryption, ArchiveOfTheZipProgramIsRead) {
    writeText(folder_.path("in/a.txt"), "first");
    writeText(folder_.path("in/sub/b.txt"), mixedText(20'000));
    ASSERT_EQ(runCommand("cd '" + folder_.path("in") + "' && zip -q -r -P pass ../archive.zip . 2>&1").status, 0);
    const Unpacked unpacked = unpackArchive("pass");
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
    EXPECT_EQ(unpacked.files, filesBelow(folder_.path("in")));
}

TEST_F(ZipEncryption, WrongOrMissingPasswordEndsBeforeAnythingIsOverwritten) {
    pack("secret", "secret", kPassword);
    writeText(inDestination("secret"), "there before");
    for (const char* password : {"wrong", ""}) {
        const Unpacked unpacked = unpackArchive(password);
        EXPECT_FALSE(unpacked.result) << password;
        EXPECT_THAT(unpacked.messages, ElementsAre("Error occurs")) << password;
        EXPECT_THAT(unpacked.files, ElementsAre(Pair("secret", "there before"))) << password;
    }
}

TEST_F(ZipEncryption, PlainEntriesNeedNoPassword) {
    ASSERT_EQ(runCommand("cd '" + folder_.path() +
                         "' && echo plain > plain && echo hidden > hidden && "
                         "zip -q archive.zip plain && zip -q -P pass archive.zip hidden 2>&1")
                  .status,
              0);
    const Unpacked unpacked = unpackArchive("pass");
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("hidden", "hidden\n"), Pair("plain", "plain\n")));
}

TEST_F(ZipEncryption, FoldersNeedNoPassword) {
    const Unpacked unpacked = unpackBuilt(ZipBuilder().add({.name = "folder/", .flags = 1}));
    EXPECT_TRUE(unpacked.result);
    EXPECT_TRUE(fs::is_directory(inDestination("folder")));
}

TEST_F(ZipEncryption, PasswordOfOtherCharactersThanAsciiNeverLeavesAPlainEntry) {
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(zipPath(), "p\xC3\xA4ss"));
    EXPECT_FALSE(archive->addFileToZip(source("secret"), "secret"));
    EXPECT_TRUE(archive->CloseZipFile2());
    EXPECT_EQ(python(zipPath(), "print(z.namelist())"), "[]");

    pack("secret", "secret", kPassword);
    EXPECT_THAT(unpackArchive("p\xC3\xA4ss").messages, ElementsAre("Error occurs"));
}

TEST_F(ZipEncryption, EntryTooShortForItsHeaderIsNotOpened) {
    const ZipBuilder builder = ZipBuilder().add({.name = "a", .storedBytes = "short", .flags = 1});
    const Unpacked unpacked = unpackBytes(folder_, builder.bytes(), destination(), kPassword);
    EXPECT_FALSE(unpacked.result);
    EXPECT_THAT(unpacked.messages, ElementsAre("Error occurs"));
}

TEST_F(ZipEncryption, PasswordIsForgottenWhenAnArchiveIsClosed) {
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(folder_.path("first.zip"), kPassword));
    ASSERT_TRUE(archive->CloseZipFile2());
    ASSERT_TRUE(archive->CreateZipFile2(zipPath()));
    ASSERT_TRUE(archive->addFileToZip(source("x"), "x"));
    ASSERT_TRUE(archive->CloseZipFile2());
    EXPECT_FALSE(firstEntryIsEncrypted());
}

TEST_F(ZipEncryption, PasswordIsForgottenAlsoWhenNothingWasOpen) {
    for (const bool closesReading : {false, true}) {
        const auto archive = ZipArchive::init();
        ASSERT_TRUE(archive->CreateZipFile2(zipPath(), kPassword));
        ASSERT_TRUE(archive->UnzipCloseFile());
        ASSERT_TRUE(archive->addFileToZip(source("x"), "x"));
        ASSERT_TRUE(archive->CloseZipFile2());
        EXPECT_FALSE(firstEntryIsEncrypted());

        pack("x", "x", kPassword);
        ASSERT_TRUE(archive->UnzipOpenFile(zipPath(), kPassword));
        EXPECT_EQ(closesReading ? archive->UnzipCloseFile() : archive->CloseZipFile2(), closesReading);
        archive->UnzipOpenFile(zipPath());
        EXPECT_FALSE(archive->UnzipFileTo(destination(), true));
    }
}

TEST_F(ZipEncryption, PasswordStaysUntilAnArchiveIsClosed) {
    pack("x", "x", kPassword);
    const auto archive = ZipArchive::init();
    EXPECT_FALSE(archive->UnzipOpenFile(folder_.path("missing.zip"), kPassword));
    ASSERT_TRUE(archive->UnzipOpenFile(zipPath()));
    EXPECT_TRUE(archive->UnzipFileTo(destination(), true));
}

// ---- Archives that are read ----

class ZipReading : public ZipTest {};

TEST_F(ZipReading, OpensArchivesAlone) {
    const auto archive = ZipArchive::init();
    EXPECT_FALSE(archive->UnzipOpenFile(folder_.path("missing.zip")));
    EXPECT_FALSE(archive->UnzipOpenFile(folder_.path()));
    EXPECT_FALSE(archive->UnzipOpenFile(source("no archive")));
    pack("x", "x");
    EXPECT_TRUE(archive->UnzipOpenFile(zipPath()));
    EXPECT_TRUE(archive->UnzipCloseFile());
    EXPECT_TRUE(archive->UnzipCloseFile());
}

TEST_F(ZipReading, UnpacksAnArchiveOfTheZipProgram) {
    writeText(folder_.path("in/a.txt"), "first");
    writeText(folder_.path("in/sub/deep/b.bin"), mixedText(100'000));
    writeText(folder_.path("in/\xE9\xA1\x8C/empty"), "");
    fs::create_directories(folder_.path("in/no files"));
    ASSERT_EQ(runCommand("cd '" + folder_.path("in") + "' && zip -q -r ../archive.zip . 2>&1").status, 0);
    const Unpacked unpacked = unpackArchive();
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
    EXPECT_EQ(unpacked.files, filesBelow(folder_.path("in")));
    EXPECT_TRUE(fs::is_directory(inDestination("no files")));
}

TEST_F(ZipReading, UnpacksAnArchiveOfPython) {
    ASSERT_EQ(runCommand("python3 -c \"import zipfile; z = zipfile.ZipFile('" + zipPath() +
                         "', 'w'); "
                         "z.writestr('stored', b'as it is'); z.writestr('sub/', b''); "
                         "z.writestr('sub/deflated', b'x' * 9000, zipfile.ZIP_DEFLATED); z.close()\"")
                  .status,
              0);
    const Unpacked unpacked = unpackArchive();
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("stored", "as it is"), Pair("sub/deflated", std::string(9000, 'x'))));
}

TEST_F(ZipReading, ReadsBackWhatItWrote) {
    for (const std::size_t length : {0U, 1U, 4095U, 4096U, 4097U, 300'000U}) {
        const std::string content = mixedText(length);
        pack("\xF0\x9F\x93\xB1/file", content);
        const Unpacked unpacked = unpackArchive();
        EXPECT_TRUE(unpacked.result) << length;
        EXPECT_THAT(unpacked.messages, IsEmpty()) << length;
        EXPECT_THAT(unpacked.files, ElementsAre(Pair("\xF0\x9F\x93\xB1/file", content))) << length;
    }
}

TEST_F(ZipReading, UnpacksAgainAfterTheLastEntry) {
    pack("x", "x");
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->UnzipOpenFile(zipPath()));
    EXPECT_TRUE(archive->UnzipFileTo(destination(), true));
    EXPECT_TRUE(archive->UnzipFileTo(folder_.path("again"), true));
    EXPECT_THAT(filesBelow(folder_.path("again")), ElementsAre(Pair("x", "x")));
}

TEST_F(ZipReading, BackslashesSeparateFolders) {
    const Unpacked unpacked =
        unpackBuilt(ZipBuilder().addFile("word\\document.xml", "text").addFile("a/b\\c", "mixed"));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("a/b/c", "mixed"), Pair("word/document.xml", "text")));
}

TEST_F(ZipReading, NameThatEndsInASeparatorIsAFolder) {
    const Unpacked unpacked = unpackBuilt(ZipBuilder().addFile("slash/deep/", "").addFile("back\\slash\\", "ignored"));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
    EXPECT_THAT(unpacked.files, IsEmpty());
    EXPECT_TRUE(fs::is_directory(inDestination("slash/deep")));
    EXPECT_TRUE(fs::is_directory(inDestination("back/slash")));
}

TEST_F(ZipReading, FolderEntryLeavesAFileInItsPlaceAlone) {
    writeText(inDestination("name"), "there before");
    const Unpacked unpacked = unpackBuilt(ZipBuilder().addFile("name/", "content"));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("name", "there before")));
}

TEST_F(ZipReading, ModificationTimesAreRestored) {
    const std::string file = source("x", "in.txt");
    const std::time_t time = localTime(1999, 8, 7, 6, 5, 4);
    setTime(file, time);
    ASSERT_EQ(runCommand("cd '" + folder_.path() + "' && zip -q -X archive.zip in.txt").status, 0);
    ASSERT_TRUE(unpackArchive().result);
    EXPECT_EQ(timeOf(inDestination("in.txt")), time);
}

TEST_F(ZipReading, ModificationTimesAreSummerTimeInSummer) {
    const char* before = std::getenv("TZ");
    const std::string zone = before != nullptr ? before : "";
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    const std::string file = source("x");
    for (const int month : {1, 7}) {
        const std::time_t time = localTime(2020, month, 2, 3, 4, 6);
        setTime(file, time);
        packFile(file, "x");
        ASSERT_TRUE(unpackArchive().result);
        EXPECT_EQ(timeOf(inDestination("x")), time) << month;
    }
    before != nullptr ? ::setenv("TZ", zone.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
}

TEST_F(ZipReading, DatesBeyondTheCalendarRollOver) {
    // Month 0, day 0, midnight.
    EXPECT_TRUE(unpackBuilt(ZipBuilder().add({.name = "a", .storedBytes = "x", .dosDate = 0})).result);
    EXPECT_EQ(timeOf(inDestination("a")), localTime(1979, 11, 30, 0, 0, 0));
    // Year 127, month 15, day 31, 31:63:62.
    EXPECT_TRUE(unpackBuilt(ZipBuilder().add({.name = "b", .storedBytes = "x", .dosDate = 0xFFFFFFFF})).result);
    EXPECT_EQ(timeOf(inDestination("b")), localTime(2107, 15, 31, 31, 63, 62));
}

TEST_F(ZipReading, TimeThatCannotBeSetGoesToTheLogAlone) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs a file of somebody else";
    writeText(inDestination("x"), "there before");
    ASSERT_EQ(::chmod(inDestination("x").c_str(), 0666), 0);
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0777), 0);
    writeText(folder_.path("hand-made.zip"), ZipBuilder().addFile("x", "new").bytes());
    const LogLines log;
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(::seteuid(kNobody), 0);
    const Unpacked unpacked = unpack(folder_.path("hand-made.zip"), destination());
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("x", "new")));
    EXPECT_THAT(log.lines(), ElementsAre("Failed to set attributes"));
}

TEST_F(ZipReading, NoEntriesReportTwice) {
    for (const char* before : {"", "bytes before an archive"}) {
        const Unpacked unpacked = unpackBytes(folder_, before + ZipBuilder().bytes(), destination());
        EXPECT_FALSE(unpacked.result);
        EXPECT_THAT(unpacked.messages, ElementsAre("Failed", "Error occurs"));
        EXPECT_FALSE(fs::exists(destination()));
    }
}

TEST_F(ZipReading, NoOpenArchiveReportsTwice) {
    const ObservedZip zip;
    EXPECT_FALSE(zip.archive->UnzipFileTo(destination(), true));
    EXPECT_THAT(zip.delegate->messages, ElementsAre("Failed", "Error occurs"));
}

// ---- Files that exist ----

class ZipOverwriting : public ZipTest {
protected:
    void SetUp() override {
        writeText(inDestination("a"), "old");
        writeText(zipPath(), ZipBuilder().addFile("a", "new").addFile("b", "new").addFile("folder/", "").bytes());
        fs::create_directories(inDestination("folder"));
    }

    bool unpackTo(ZipArchive& archive, bool overWrite) const {
        return archive.UnzipOpenFile(zipPath()) && archive.UnzipFileTo(destination(), overWrite);
    }
};

TEST_F(ZipOverwriting, NobodyIsAskedWithTheFlag) {
    const ObservedZip zip;
    zip.delegate->answer = false;
    EXPECT_TRUE(unpackTo(*zip.archive, true));
    EXPECT_THAT(zip.delegate->asked, IsEmpty());
    EXPECT_EQ(fileText(inDestination("a")), "new");
}

TEST_F(ZipOverwriting, WithoutAFlagAndADelegateFilesAreReplacedToo) {
    EXPECT_TRUE(unpackTo(*ZipArchive::init(), false));
    EXPECT_EQ(fileText(inDestination("a")), "new");
}

TEST_F(ZipOverwriting, DelegateThatDoesNotAnswerLetsFilesBeReplaced) {
    const auto archive = ZipArchive::init();
    archive->setDelegate(std::make_shared<ZipArchiveDelegate>());
    EXPECT_TRUE(unpackTo(*archive, false));
    EXPECT_EQ(fileText(inDestination("a")), "new");
}

TEST_F(ZipOverwriting, DelegateIsAskedForFilesThatExistAlone) {
    const ObservedZip zip;
    EXPECT_TRUE(unpackTo(*zip.archive, false));
    EXPECT_THAT(zip.delegate->asked, ElementsAre(inDestination("a")));
    EXPECT_EQ(fileText(inDestination("a")), "new");
}

TEST_F(ZipOverwriting, FileIsKeptWhenTheDelegateSaysNo) {
    const ObservedZip zip;
    zip.delegate->answer = false;
    EXPECT_TRUE(unpackTo(*zip.archive, false));
    EXPECT_THAT(zip.delegate->messages, IsEmpty());
    EXPECT_THAT(filesBelow(destination()), ElementsAre(Pair("a", "old"), Pair("b", "new")));
}

TEST_F(ZipOverwriting, DelegateIsAskedForAFolderInThePlaceOfAFileToo) {
    fs::create_directories(inDestination("b"));
    const ObservedZip zip;
    zip.delegate->answer = false;
    EXPECT_TRUE(unpackTo(*zip.archive, false));
    EXPECT_THAT(zip.delegate->asked, ElementsAre(inDestination("a"), inDestination("b")));
}

TEST_F(ZipOverwriting, LongerFileIsCutToItsNewContent) {
    writeText(inDestination("a"), "a content that is longer than the new one");
    EXPECT_TRUE(unpackTo(*ZipArchive::init(), true));
    EXPECT_EQ(fileText(inDestination("a")), "new");
}

// ---- Damage ----

class ZipDamage : public ZipTest {};

TEST_F(ZipDamage, ContentThatBreaksOffIsReportedAndKept) {
    const std::string content = mixedText(20'000);
    const std::string half = deflated(content).substr(0, 10'000);
    const Unpacked unpacked =
        unpackBuilt(ZipBuilder().add({.name = "broken", .storedBytes = half, .method = 8}).addFile("behind", "whole"));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, ElementsAre("Failed to reading zip file"));
    const std::string& kept = unpacked.files.at("broken");
    EXPECT_GT(kept.size(), 4096U);
    EXPECT_EQ(kept, content.substr(0, kept.size()));
    EXPECT_EQ(kept.size() % 4096, 0U);
    EXPECT_EQ(unpacked.files.at("behind"), "whole");
    EXPECT_EQ(timeOf(inDestination("broken")), localTime(2025, 5, 1, 12, 0, 0));
}

TEST_F(ZipDamage, ContentThatIsNoDeflateStreamIsReported) {
    const Unpacked unpacked = unpackBuilt(ZipBuilder().add({.name = "a", .storedBytes = "\xFF\xFF\xFF", .method = 8}));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, ElementsAre("Failed to reading zip file"));
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("a", "")));
}

TEST_F(ZipDamage, NothingAtAllIsAnEmptyFileWhateverTheMethod) {
    const Unpacked unpacked = unpackBuilt(ZipBuilder().add({.name = "a", .method = 8}));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("a", "")));
}

TEST_F(ZipDamage, WrongChecksumIsNotMinded) {
    const Unpacked unpacked = unpackBuilt(ZipBuilder().add({.name = "a", .storedBytes = "text", .checksum = 1}));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("a", "text")));
}

TEST_F(ZipDamage, FailureOfUnpackingTellsWhatTheResultDoesNot) {
    const LogLines quiet;
    const auto failureOf = [this](const ZipBuilder& builder) {
        writeText(folder_.path("some.zip"), builder.bytes());
        const auto archive = ZipArchive::init();
        archive->UnzipOpenFile(folder_.path("some.zip"));
        archive->UnzipFileTo(destination(), true);
        return archive->unzipFailure();
    };
    const std::string content = mixedText(20'000);
    ZipBuilder whole;
    whole.addFile("folder/", "").addFile("s", content);
    whole.add({.name = "d", .storedBytes = deflated(content), .method = 8, .checksum = zipChecksum(content)});
    EXPECT_EQ(failureOf(whole), "");
    for (const ZipBuilderEntry& entry :
         {ZipBuilderEntry{.name = "a", .storedBytes = "text", .checksum = 1},
          ZipBuilderEntry{.name = "a", .storedBytes = deflated(content).substr(0, 10'000), .method = 8},
          ZipBuilderEntry{.name = "../a", .storedBytes = "text", .checksum = zipChecksum("text")},
          ZipBuilderEntry{.name = "a", .storedBytes = "text", .method = 99}}) {
        EXPECT_EQ(failureOf(ZipBuilder().add(entry)), "it is damaged.") << entry.name << entry.method;
    }
    EXPECT_EQ(failureOf(ZipBuilder().addFile("s/b", "x")),
              "Cannot write '" + inDestination("s/b") + "': Not a directory.");
}

TEST_F(ZipDamage, FailureOfUnpackingIsThatOfTheLastTime) {
    writeText(folder_.path("some.zip"), ZipBuilder().addFile("a", "x").bytes());
    const auto archive = ZipArchive::init();
    EXPECT_FALSE(archive->UnzipFileTo(destination(), true));
    EXPECT_EQ(archive->unzipFailure(), "it is damaged.");
    ASSERT_TRUE(archive->UnzipOpenFile(folder_.path("some.zip")));
    EXPECT_TRUE(archive->UnzipFileTo(destination(), true));
    EXPECT_EQ(archive->unzipFailure(), "");
}

TEST_F(ZipDamage, EncryptedContentIsCheckedAsItReads) {
    pack("secret", mixedText(9000), kPassword);
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->UnzipOpenFile(zipPath(), kPassword));
    EXPECT_TRUE(archive->UnzipFileTo(destination(), true));
    EXPECT_EQ(archive->unzipFailure(), "");
}

TEST_F(ZipDamage, SizeIsWhatTheStreamYieldsNotWhatTheEntryClaims) {
    const std::string content = mixedText(9000);
    for (const std::uint32_t claimed : {0U, 1U, 4097U, 0x7FFFFFFFU, 0xFFFFFFFEU}) {
        const Unpacked unpacked =
            unpackBuilt(ZipBuilder()
                            .add({.name = "d", .storedBytes = deflated(content), .method = 8, .claimedSize = claimed})
                            .add({.name = "s", .storedBytes = content, .claimedSize = claimed}));
        EXPECT_TRUE(unpacked.result) << claimed;
        EXPECT_THAT(unpacked.messages, IsEmpty()) << claimed;
        EXPECT_THAT(unpacked.files, ElementsAre(Pair("d", content), Pair("s", content))) << claimed;
    }
}

TEST_F(ZipDamage, BytesBehindTheStreamAreLeftOut) {
    const Unpacked unpacked =
        unpackBuilt(ZipBuilder().add({.name = "a", .storedBytes = deflated("text") + "more", .method = 8}));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("a", "text")));
}

TEST_F(ZipDamage, UnknownMethodCannotBeOpened) {
    for (const unsigned method : {1U, 12U, 99U}) {
        const Unpacked unpacked = unpackBuilt(ZipBuilder()
                                                  .addFile("before", "x")
                                                  .add({.name = "a", .storedBytes = "text", .method = method})
                                                  .addFile("behind", "x"));
        EXPECT_FALSE(unpacked.result) << method;
        EXPECT_THAT(unpacked.messages, ElementsAre("Error occurs")) << method;
        EXPECT_THAT(unpacked.files, ElementsAre(Pair("before", "x"))) << method;
    }
}

TEST_F(ZipDamage, NameThatIsCutFailsToGiveItsInfo) {
    const Unpacked unpacked = unpackBuilt(
        ZipBuilder().add({.name = "name", .storedBytes = "text", .claimedNameLength = std::uint16_t{60'000}}));
    EXPECT_FALSE(unpacked.result);
    EXPECT_THAT(unpacked.messages, ElementsAre("Error occurs while getting file info"));
}

TEST_F(ZipDamage, EntryThatTheDirectoryLostIsAnError) {
    const ZipBuilder builder = ZipBuilder().addFile("a", "x").addFile("b", "x");
    std::string bytes = builder.bytes();
    bytes[builder.lastRecord()] = 'Q';
    const Unpacked unpacked = unpackBytes(folder_, bytes, destination());
    EXPECT_FALSE(unpacked.result);
    EXPECT_THAT(unpacked.messages, ElementsAre("Error occurs"));
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("a", "x")));
}

TEST_F(ZipDamage, AsManyEntriesAsTheCountCanStateAreUnpacked) {
    ZipBuilder builder;
    while (builder.entryCount() < 0xFFFF) builder.addFile("f/", "");
    const Unpacked unpacked = unpackBuilt(builder);
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.messages, IsEmpty());
}

// The directory stands at the end; without its last bytes, which are zeros, it can still be read.
TEST_F(ZipDamage, ArchiveCutAtAnyLengthIsReadWholeOrNotAtAll) {
    ZipBuilder builder;
    builder.addFile("word\\a", "some text").addFile("folder/", "");
    builder.add({.name = "d", .storedBytes = deflated("some text"), .method = 8});
    pack("secret", "secret", kPassword);
    for (const std::string& bytes : {builder.bytes(), fileText(zipPath())}) {
        const Unpacked whole = unpackBytes(folder_, bytes, folder_.path("whole"), kPassword);
        ASSERT_TRUE(whole.result);
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            const Unpacked cut = unpackBytes(folder_, bytes.substr(0, length), destination(), kPassword);
            EXPECT_EQ(cut.messages.empty(), cut.result) << length;
            EXPECT_EQ(cut.files, cut.result ? whole.files : decltype(cut.files){}) << length;
            fs::remove_all(destination());
        }
        fs::remove_all(folder_.path("whole"));
    }
}

TEST_F(ZipDamage, AnyChangedByteEndsInAKnownWay) {
    ZipBuilder builder;
    builder.addFile("word\\a", "some text").addFile("folder/", "");
    builder.add({.name = "d", .storedBytes = deflated("some text"), .method = 8});
    const std::string whole = builder.bytes();
    const LogLines quiet;
    for (std::size_t position = 0; position < whole.size(); ++position) {
        std::string bytes = whole;
        bytes[position] = static_cast<char>(~bytes[position]);
        const Unpacked unpacked = unpackBytes(folder_, bytes, destination());
        EXPECT_TRUE(unpacked.result || !unpacked.messages.empty()) << position;
        for (const std::string& message : unpacked.messages) {
            EXPECT_THAT(message, testing::AnyOf("Failed", "Error occurs", "Error occurs while getting file info",
                                                "Failed to reading zip file"));
        }
        fs::remove_all(destination());
    }
    EXPECT_THAT(folder_.names(), ElementsAre("hand-made.zip"));
}

// ---- Files that cannot be written ----

class ZipObstacles : public ZipTest {
protected:
    /// Unpacks "a/b" and "behind" and expects that the first is skipped, with a line in the log.
    void expectSkipped(const std::string& reason) const {
        const LogLines log;
        const Unpacked unpacked = unpackBuilt(ZipBuilder().addFile("a/b", "x").addFile("behind", "x"));
        EXPECT_TRUE(unpacked.result);
        EXPECT_THAT(unpacked.messages, IsEmpty());
        EXPECT_EQ(fileText(inDestination("behind")), "x");
        EXPECT_THAT(log.lines(), ElementsAre("Cannot write '" + inDestination("a/b") + "': " + reason + "."));
    }
};

TEST_F(ZipObstacles, FolderInThePlaceOfAFile) {
    fs::create_directories(inDestination("a/b"));
    expectSkipped("Is a directory");
}

TEST_F(ZipObstacles, FileInThePlaceOfAFolder) {
    writeText(inDestination("a"), "there before");
    expectSkipped("Not a directory");
    EXPECT_EQ(fileText(inDestination("a")), "there before");
}

TEST_F(ZipObstacles, PipeThatNobodyReads) {
    fs::create_directories(inDestination("a"));
    ASSERT_EQ(::mkfifo(inDestination("a/b").c_str(), 0666), 0);
    const LogLines log;
    EXPECT_TRUE(unpackBytes(folder_, ZipBuilder().addFile("a/b", "x").bytes(), destination()).result);
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("No such device or address")));
}

TEST_F(ZipObstacles, DestinationThatCannotBeMade) {
    writeText(destination(), "a file");
    const LogLines log;
    const Unpacked unpacked = unpackBuilt(ZipBuilder().addFile("a", "x").addFile("folder/", ""));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(log.lines(), ElementsAre("Cannot write '" + inDestination("a") + "': Not a directory."));
}

TEST_F(ZipObstacles, FullDisk) {
    std::signal(SIGXFSZ, SIG_IGN);
    writeText(folder_.path("hand-made.zip"),
              ZipBuilder().addFile("a", std::string(50'000, 'x')).addFile("behind", "x").bytes());
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{10'000, before.rlim_max};
    const LogLines log;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const Unpacked unpacked = unpack(folder_.path("hand-made.zip"), destination());
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_DFL);
    EXPECT_TRUE(unpacked.result);
    EXPECT_EQ(unpacked.files.at("behind"), "x");
    EXPECT_THAT(log.lines(), ElementsAre("Cannot write '" + inDestination("a") + "': File too large."));
}

// ---- Entries that would get out of the destination ----

class ZipEscape : public ZipTest {
protected:
    /// Unpacks an entry of this name between two harmless ones and expects that it ends the work.
    void expectRefused(const std::string& name) const {
        const Unpacked unpacked =
            unpackBuilt(ZipBuilder().addFile("before", "x").addFile(name, "evil").addFile("behind", "x"));
        EXPECT_FALSE(unpacked.result) << name;
        EXPECT_THAT(unpacked.messages, ElementsAre("Error occurs")) << name;
        EXPECT_TRUE(fs::exists(inDestination("before"))) << name;
        EXPECT_FALSE(fs::exists(inDestination("behind"))) << name;
    }
};

TEST_F(ZipEscape, NameThatLeadsOutIsRefused) {
    for (const char* name : {"../evil", "a/../../evil", "..\\evil", "a\\..\\..\\evil", "/../evil", "../out/evil",
                             "../evil/", "..", "../", "./..//../evil"}) {
        expectRefused(name);
    }
    EXPECT_THAT(folder_.names(), ElementsAre("hand-made.zip", "out"));
    EXPECT_THAT(filesBelow(destination()), ElementsAre(Pair("before", "x")));
}

TEST_F(ZipEscape, FileInThePlaceOfTheDestinationIsRefused) {
    for (const char* name : {"", ".", "a/.."}) expectRefused(name);
    const Unpacked unpacked = unpackBytes(folder_, ZipBuilder().addFile(".", "x").bytes(), folder_.path("new"));
    EXPECT_FALSE(unpacked.result);
    EXPECT_FALSE(fs::exists(folder_.path("new")));
}

TEST_F(ZipEscape, NameThatStaysInsideIsUnpacked) {
    const Unpacked unpacked = unpackBuilt(ZipBuilder()
                                              .addFile("/etc/a", "x")
                                              .addFile("b/../c", "x")
                                              .addFile("./d//e", "x")
                                              .addFile("./", "")
                                              .addFile("..f", "x"));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("..f", "x"), Pair("c", "x"), Pair("d/e", "x"), Pair("etc/a", "x")));
}

TEST_F(ZipEscape, LinkToAFileIsNotWrittenThrough) {
    const std::string outside = source("untouched", "outside");
    fs::create_directories(destination());
    fs::create_symlink(outside, inDestination("link"));
    expectRefused("link");
    EXPECT_EQ(fileText(outside), "untouched");
}

TEST_F(ZipEscape, LinkThatLeadsNowhereIsNotWrittenThrough) {
    fs::create_directories(destination());
    fs::create_symlink(folder_.path("nowhere"), inDestination("link"));
    expectRefused("link");
    expectRefused("link/file");
    EXPECT_FALSE(fs::exists(folder_.path("nowhere")));
}

TEST_F(ZipEscape, LinkToAFolderIsNotWrittenThrough) {
    fs::create_directories(folder_.path("elsewhere"));
    fs::create_directories(inDestination("a"));
    fs::create_directory_symlink(folder_.path("elsewhere"), inDestination("a/link"));
    for (const char* name : {"a/link/evil", "a\\link\\evil", "a/link/b/evil", "a/link/b/", "a/link/"}) {
        expectRefused(name);
    }
    EXPECT_THAT(filesBelow(folder_.path("elsewhere")), IsEmpty());
    EXPECT_TRUE(fs::is_empty(folder_.path("elsewhere")));
}

TEST_F(ZipEscape, LinkIsRefusedBeforeTheDelegateIsAsked) {
    fs::create_directories(destination());
    fs::create_symlink(source("untouched", "outside"), inDestination("link"));
    writeText(zipPath(), ZipBuilder().addFile("link", "evil").bytes());
    const ObservedZip zip;
    ASSERT_TRUE(zip.archive->UnzipOpenFile(zipPath()));
    EXPECT_FALSE(zip.archive->UnzipFileTo(destination(), false));
    EXPECT_THAT(zip.delegate->asked, IsEmpty());
}

TEST_F(ZipEscape, DestinationItselfMayBeReachedThroughALink) {
    fs::create_directories(folder_.path("real"));
    fs::create_directory_symlink(folder_.path("real"), destination());
    EXPECT_TRUE(unpackBuilt(ZipBuilder().addFile("a/b", "x")).result);
    EXPECT_EQ(fileText(folder_.path("real/a/b")), "x");
}

TEST_F(ZipEscape, NameThatIsNoTextIsRefused) {
    expectRefused("caf\xE9");
}

TEST_F(ZipEscape, NameEndsAtItsFirstNul) {
    const Unpacked unpacked = unpackBuilt(ZipBuilder().addFile(std::string("a\0/../../evil", 13), "x"));
    EXPECT_TRUE(unpacked.result);
    EXPECT_THAT(unpacked.files, ElementsAre(Pair("a", "x")));
}

// ---- The delegate and the rest ----

TEST(ZipArchiveDelegateTest, IsKeptAlive) {
    const auto archive = ZipArchive::init();
    auto delegate = std::make_shared<RecordingZipDelegate>();
    const std::weak_ptr<RecordingZipDelegate> observer = delegate;
    archive->setDelegate(std::move(delegate));
    EXPECT_FALSE(observer.expired());
    EXPECT_EQ(archive->delegate(), observer.lock());
    archive->setDelegate(nullptr);
    EXPECT_TRUE(observer.expired());
}

TEST(ZipArchiveDelegateTest, HearsMessages) {
    const ObservedZip zip;
    zip.archive->OutputErrorMessage("text");
    EXPECT_THAT(zip.delegate->messages, ElementsAre("text"));
}

TEST(ZipArchiveDelegateTest, DecidesOnOverwriting) {
    const ObservedZip zip;
    zip.delegate->answer = false;
    EXPECT_FALSE(zip.archive->OverWrite("/some/path"));
    EXPECT_THAT(zip.delegate->asked, ElementsAre("/some/path"));
    zip.delegate->answer = true;
    EXPECT_TRUE(zip.archive->OverWrite("/some/path"));
}

TEST(ZipArchiveDelegateTest, NeedNotBeThere) {
    const auto archive = ZipArchive::init();
    archive->OutputErrorMessage("nobody hears it");
    EXPECT_TRUE(archive->OverWrite("/some/path"));
}

TEST(ZipArchiveDate, BeginsWithTheYear1980) {
    EXPECT_EQ(ZipArchive::init()->Date1980().secondsSince1970, static_cast<double>(localTime(1980, 1, 1, 0, 0, 0)));
}

}  // namespace
}  // namespace ZkMobileBackup
