// What the packaged formats share: turns on the stage folder, template, packing, names, and runs that end too early.

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "base/MainQueue.h"
#include "base/Termination.h"
#include "export/DlxExporter.h"
#include "export/DocxCreator.h"
#include "export/NumbersCreator.h"
#include "export/PackageFormat.h"
#include "export/PagesCreator.h"
#include "export/WriteNumberFiles.h"
#include "export/WritePagesFiles.h"
#include "export/WriteXlsxFile.h"
#include "export/XlsxCreater.h"
#include "tests/export/PackageTesting.h"
#include "tests/support/CommandRun.h"
#include "tests/support/ZipBuilder.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

constexpr const char* kDocxStage = "DocStage";

Rows markedRows(const std::string& mark, std::size_t count = 1) {
    return Rows(std::vector<Dictionary>(count, Dictionary{{"A", mark}, {"B", mark}}));
}

std::string quoted(const std::string& text) {
    std::string escaped;
    for (const char c : text) escaped += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return "'" + escaped + "'";
}

/// The command line of an export in a process of its own.
std::string exportCommand(const std::string& format, const std::string& savePath, const std::string& mark,
                          std::size_t rows = 1) {
    return fmt::format("{} {} {} {} {}", quoted(ZKMB_EXPORT_DOCUMENT), format, quoted(savePath), mark, rows);
}

/// Every part of a package, one behind the other.
std::string allParts(const std::string& package) {
    std::string text;
    for (const auto& [name, content] : partsOf(package)) text += content;
    return text;
}

/// How often a text occurs.
std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t found = text.find(part); found != std::string::npos; found = text.find(part, found + 1)) ++count;
    return count;
}

class PackagedRunTest : public PackageTest {
protected:
    std::shared_ptr<DocxCreator> docxCreator(Rows rows) {
        auto creator = DocxCreator::initWithDictionary(std::move(rows), folder.path("Notes"));
        creator->setFileCreatorDelegate(&delegate);
        return creator;
    }
    /// Resources that a host may change: those of the build.
    void copyResources(const std::string& target) {
        fs::copy(resourceFolder(), target, fs::copy_options::recursive);
        setResourceFolder(target);
    }
    /// Puts a script of the host's in place of the one that packs DOCX documents.
    void setScript(const std::string& commands) {
        if (!fs::exists(folder.path("resources"))) copyResources(folder.path("resources"));
        const std::string path = folder.path("resources/zipBuildWord.sh");
        writeText(path, "#!/bin/sh\n" + commands);
        fs::permissions(path, fs::perms::owner_all);
    }
    /// Waits until the exporter's jobs are over: they hold it no longer then.
    static void finish(const std::shared_ptr<DlxExporter>& exporter) {
        while (exporter.use_count() > 1) {
            MainQueue::runUntilIdle();
            std::this_thread::yield();
        }
        MainQueue::setExecutor({});
    }
    bool stageExists() const { return fs::exists(stagePath(kDocxStage)); }
};

TEST_F(PackagedRunTest, StageFoldersLieUnderApplicationSupport) {
    EXPECT_EQ(stageFolder(kDocxPackage), stagePath("DocStage"));
    EXPECT_EQ(stageFolder(kXlsxPackage), stagePath("XlsStage"));
    EXPECT_EQ(stageFolder(kNumbersPackage), stagePath("NumStage"));
    EXPECT_EQ(stageFolder(kPagesPackage), stagePath("PgsStage"));
    EXPECT_EQ(docxCreator(Rows())->applicationSupportFolder(), stagePath("DocStage"));
}

TEST_F(PackagedRunTest, CreatedStageFolderIsEmptyAndRemovedWithAllItHolds) {
    const auto creator = docxCreator(Rows());
    writeText(stagePath("DocStage/left/behind"), "x");
    creator->createSupportFolder();
    EXPECT_TRUE(fs::is_empty(stagePath(kDocxStage)));
    writeText(stagePath("DocStage/again/there"), "x");
    creator->removeHtmlFile();
    EXPECT_FALSE(stageExists());
}

TEST_F(PackagedRunTest, NothingButTheDocumentIsLeft) {
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "");
    EXPECT_THAT(folder.names(), ElementsAre("Notes.docx"));
    EXPECT_EQ(creator->writtenPath(), folder.path("Notes.docx"));
    EXPECT_FALSE(stageExists());
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(PackagedRunTest, WriterNeverReportsCompletionItself) {
    docxCreator(markedRows("mark"))->startConvert();
    EXPECT_THAT(delegate.completions, IsEmpty());
    EXPECT_EQ(delegate.starts, 0);
}

TEST_F(PackagedRunTest, MilestonesFallIntoTheFilesSliceOfTheBatch) {
    const auto creator = docxCreator(markedRows("mark"));
    creator->setIndex(1);
    creator->setCount(4);
    creator->startConvert();
    EXPECT_DOUBLE_EQ(delegate.progress.front(), 0.2 / 4 + 0.25);
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 0.5);
}

TEST_F(PackagedRunTest, FolderLeftBehindDoesNoHarm) {
    writeText(stagePath("DocStage/left/behind.txt"), "x");
    writeText(stagePath("DocStage/word/document.xml"), "broken");
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    const auto parts = partsOf(creator->writtenPath());
    EXPECT_FALSE(parts.contains("left/behind.txt"));
    EXPECT_THAT(parts.at("word/document.xml"), HasSubstr(">mark<"));
}

TEST_F(PackagedRunTest, LinkInPlaceOfTheStageFolderIsNotFollowed) {
    const TemporaryFolder elsewhere;
    writeText(elsewhere.path("kept"), "x");
    fs::create_directories(stagePath(""));
    fs::create_directory_symlink(elsewhere.path(), stagePath(kDocxStage));
    docxCreator(markedRows("mark"))->startConvert();
    EXPECT_EQ(folderContent(elsewhere.path()).size(), 1U);
    EXPECT_THAT(folder.names(), ElementsAre("Notes.docx"));
}

TEST_F(PackagedRunTest, StopBeforePackingLeavesTheStageFolderAndNoDocument) {
    const auto creator = docxCreator(markedRows("mark"));
    creator->setIsStop(true);
    creator->startConvert();
    EXPECT_EQ(delegate.completions, std::vector<bool>{false});
    EXPECT_EQ(creator->writtenPath(), "");
    EXPECT_EQ(creator->failure(), "");
    EXPECT_TRUE(stageExists());
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_LT(delegate.progress.back(), 1.0);
}

TEST_F(PackagedRunTest, DocumentAfterAStoppedOneIsRight) {
    const auto stopped = docxCreator(markedRows("first"));
    delegate.onProgress = [&](double) { stopped->setIsStop(true); };
    stopped->startConvert();
    delegate.onProgress = {};
    const auto creator = docxCreator(markedRows("second"));
    creator->startConvert();
    const std::string parts = allParts(creator->writtenPath());
    EXPECT_THAT(parts, HasSubstr(">second<"));
    EXPECT_EQ(occurrences(parts, ">first<"), 0U);
}

TEST_F(PackagedRunTest, StoppedExportReportsFalseThenTrue) {
    MainQueue::setExecutor([](const std::function<void()>& call) { call(); });
    const auto exporter = DlxExporter::init();
    RecordingExporterDelegate events;
    events.onProgress = [&](double) { exporter->stopRecoveryBackupData(); };
    exporter->setExporterDelegate(&events);
    exporter->recoveryBackupData(markedRows("mark"), DlxExportType::kDocx, folder.path("Notes"));
    finish(exporter);
    EXPECT_THAT(events.events(), ElementsAre("start", "complete false", "complete true"));
    EXPECT_THAT(exporter->writtenPaths(), IsEmpty());
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(PackagedRunTest, KilledRunDoesNoHarmToTheNext) {
    setScript("kill -9 $PPID\n");
    runCommand(exportCommand("docx", folder.path("Killed"), "killed") + " " + quoted(resourceFolder()) + " 2>&1");
    ASSERT_TRUE(stageExists());
    ASSERT_FALSE(fs::exists(folder.path("Killed.docx")));
    setResourceFolder("");
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "");
    const std::string parts = allParts(folder.path("Notes.docx"));
    EXPECT_THAT(parts, HasSubstr(">mark<"));
    EXPECT_EQ(occurrences(parts, "killed"), 0U);
}

TEST_F(PackagedRunTest, ExistingFileIsNeverReplaced) {
    folder.addFile("Notes.docx");
    folder.addFile("Notes(0).docx");
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), folder.path("Notes(1).docx"));
    EXPECT_EQ(fileText(folder.path("Notes.docx")), "there before");
    EXPECT_EQ(fileText(folder.path("Notes(0).docx")), "there before");
}

TEST_F(PackagedRunTest, FileThatAppearsWhilePackingIsNotReplaced) {
    setScript(fmt::format("echo taken > {}\necho package > \"$2\"\n", quoted(folder.path("Notes.docx"))));
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), folder.path("Notes(0).docx"));
    EXPECT_EQ(fileText(folder.path("Notes.docx")), "taken\n");
    EXPECT_EQ(fileText(folder.path("Notes(0).docx")), "package\n");
}

TEST_F(PackagedRunTest, RelativePathIsThatOfTheCaller) {
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const auto creator = DocxCreator::initWithDictionary(markedRows("mark"), "Notes");
    creator->startConvert();
    fs::current_path(before);
    EXPECT_EQ(creator->failure(), "");
    EXPECT_THAT(folder.names(), ElementsAre("Notes.docx"));
}

TEST_F(PackagedRunTest, ScriptOfTheHostGetsStageFolderAndOutputFile) {
    setScript("printf '%s|' \"$#\" \"$1\" \"${2##*.}\" > \"$2\"; ls \"$1\" >> \"$2\"\n");
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "");
    EXPECT_THAT(fileText(folder.path("Notes.docx")),
                testing::StartsWith(fmt::format("2|{}|docx|[Content_Types].xml\n", stagePath(kDocxStage))));
}

TEST_F(PackagedRunTest, PackageOfAScriptThatFailsIsKeptAndTheFailureNoted) {
    setScript("echo package > \"$2\"; exit 3\n");
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(fileText(folder.path("Notes.docx")), "package\n");
    EXPECT_THAT(creator->failure(), HasSubstr("status 3"));
    EXPECT_EQ(creator->writtenPath(), folder.path("Notes.docx"));
}

TEST_F(PackagedRunTest, ScriptThatMakesNothingLeavesNoDocument) {
    setScript("exit 0\n");
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), "");
    EXPECT_THAT(creator->failure(), HasSubstr(folder.path("Notes.docx")));
    EXPECT_THAT(log, ElementsAre(creator->failure()));
    EXPECT_FALSE(stageExists());
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 1.0);
}

TEST_F(PackagedRunTest, MissingScriptIsNamed) {
    copyResources(folder.path("resources"));
    fs::remove(folder.path("resources/zipBuildWord.sh"));
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_THAT(creator->failure(), HasSubstr(folder.path("resources/zipBuildWord.sh")));
    EXPECT_THAT(log, Contains(creator->failure()));
    EXPECT_THAT(folder.names(), ElementsAre("resources"));
    EXPECT_FALSE(stageExists());
}

TEST_F(PackagedRunTest, MissingTemplateIsNamedAndTheFolderPackedAsItIs) {
    copyResources(folder.path("resources"));
    fs::remove(folder.path("resources/test.docx"));
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_THAT(creator->failure(), HasSubstr(folder.path("resources/test.docx")));
    EXPECT_THAT(log, Contains(creator->failure()));
    EXPECT_THAT(partsOf(folder.path("Notes.docx")), IsEmpty());
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 1.0);
}

TEST_F(PackagedRunTest, DamagedTemplateIsNamedWhereverTheDamageIs) {
    copyResources(folder.path("resources"));
    const std::string path = folder.path("resources/test.docx");
    const std::string whole = fileText(path);
    const std::size_t content = whole.find("word/styles.xml") + 300;
    for (const std::size_t position : {content, whole.rfind("PK\1\2"), whole.size() - 22}) {
        std::string damaged = whole;
        damaged[position] = static_cast<char>(~damaged[position]);
        writeText(path, damaged);
        const auto creator = docxCreator(markedRows("mark"));
        creator->startConvert();
        EXPECT_EQ(creator->failure(), "Cannot unpack the template '" + path + "': it is damaged.") << position;
        EXPECT_DOUBLE_EQ(delegate.progress.back(), 1.0);
    }
}

TEST_F(PackagedRunTest, TemplateWithAWrongChecksumIsUsedAndNamed) {
    copyResources(folder.path("resources"));
    const std::string path = folder.path("resources/test.docx");
    const auto types = partsOf(path).at("[Content_Types].xml");
    const auto document = partsOf(path).at("word/document.xml");
    writeText(path, ZipBuilder()
                        .add({.name = "[Content_Types].xml", .storedBytes = types, .checksum = 1})
                        .addFile("word/document.xml", document)
                        .bytes());
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "Cannot unpack the template '" + path + "': it is damaged.");
    EXPECT_THAT(allParts(creator->writtenPath()), HasSubstr(">mark<"));
}

TEST_F(PackagedRunTest, PartOfTheTemplateThatCannotBeWrittenIsNamed) {
    copyResources(folder.path("resources"));
    const std::string path = folder.path("resources/test.docx");
    writeText(path, ZipBuilder().addFile("a/b", "x").addFile("a", "x").bytes());
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->failure(), fmt::format("Cannot unpack the template '{}': Cannot write '{}': Is a directory.",
                                              path, stagePath("DocStage/a")));
}

TEST_F(PackagedRunTest, LockThatCannotBeTakenIsNamedAndNoDocumentMade) {
    const std::string lock = stagePath("DocStage.lock");
    fs::create_directories(lock);
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "Cannot lock '" + lock + "': Is a directory.");
    EXPECT_EQ(creator->writtenPath(), "");
    EXPECT_FALSE(fs::exists(folder.path("Notes.docx")));
}

TEST_F(PackagedRunTest, ScriptOfTheHostNeedNotNameItsInterpreter) {
    setScript("");
    writeText(folder.path("resources/zipBuildWord.sh"), "echo package > \"$2\"\n");
    const auto creator = docxCreator(markedRows("mark"));
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "");
    EXPECT_EQ(fileText(folder.path("Notes.docx")), "package\n");
}

TEST_F(PackagedRunTest, FailureReachesTheExporter) {
    setResourceFolder(folder.path("nowhere"));
    const auto exporter = DlxExporter::init();
    exporter->recoveryBackupData(markedRows("mark"), DlxExportType::kDocx, folder.path("Notes"));
    finish(exporter);
    EXPECT_THAT(exporter->firstFailure(), HasSubstr(folder.path("nowhere/test.docx")));
    EXPECT_THAT(exporter->writtenPaths(), IsEmpty());
}

TEST_F(PackagedRunTest, OutputFolderThatCannotBeWrittenToIsNamed) {
    folder.addFile("file");
    const auto creator = DocxCreator::initWithDictionary(markedRows("mark"), folder.path("file/Notes"));
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), "");
    EXPECT_THAT(log, Contains(HasSubstr(folder.path("file/Notes.docx"))));
    EXPECT_NE(creator->failure(), "");
    EXPECT_FALSE(stageExists());
    EXPECT_EQ(fileText(folder.path("file")), "there before");
}

TEST_F(PackagedRunTest, ReadOnlyOutputFolderIsNamed) {
    if (geteuid() == 0) GTEST_SKIP() << "The superuser may write everywhere.";
    fs::create_directory(folder.path("out"));
    fs::permissions(folder.path("out"), fs::perms::owner_read | fs::perms::owner_exec);
    const auto creator = DocxCreator::initWithDictionary(markedRows("mark"), folder.path("out/Notes"));
    creator->startConvert();
    fs::permissions(folder.path("out"), fs::perms::owner_all);
    EXPECT_THAT(log, Contains(HasSubstr(folder.path("out/Notes.docx"))));
    EXPECT_TRUE(fs::is_empty(folder.path("out")));
}

TEST_F(PackagedRunTest, PathsMayHoldWhatAShellObeys) {
    const std::string name = "a b'c\"d$HOME `touch x`;\n*?\\";
    const std::string support = data.path(name);
    setenv("XDG_DATA_HOME", support.c_str(), 1);
    const std::string resources = folder.path("r " + name);
    copyResources(resources);
    const std::string output = folder.path("o " + name);
    fs::create_directory(output);
    const auto creator = DocxCreator::initWithDictionary(markedRows("mark"), output + "/" + name);
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "");
    EXPECT_EQ(creator->writtenPath(), output + "/" + name + ".docx");
    EXPECT_THAT(allParts(output + "/" + name + ".docx"), HasSubstr(">mark<"));
    EXPECT_EQ(folder.names().size(), 2U);
}

TEST_F(PackagedRunTest, OutputNameMayBeginWithADash) {
    const auto creator = DocxCreator::initWithDictionary(markedRows("mark"), folder.path("-rf"));
    creator->startConvert();
    EXPECT_THAT(folder.names(), ElementsAre("-rf.docx"));
}

constexpr uid_t kUnknownUser = 54321;

TEST_F(PackagedRunTest, UserWithoutHomeAsksTheHostToEndAndGetsNoDocument) {
    const std::string asUnknownUser =
        fmt::format("setpriv --reuid {} --clear-groups env -u HOME -u XDG_DATA_HOME ", kUnknownUser);
    fs::permissions(folder.path(), fs::perms::all);
    if (runCommand(asUnknownUser + "test -x " + quoted(ZKMB_EXPORT_DOCUMENT) + " 2>&1").status != 0) {
        GTEST_SKIP() << "Needs the superuser, and a build folder that others may enter.";
    }
    const CommandRun run = runCommand(asUnknownUser + exportCommand("docx", folder.path("Notes"), "mark") + " 2>&1");
    EXPECT_THAT(run.output, HasSubstr("asked to end\n"));
    EXPECT_THAT(run.output, HasSubstr("failure There is no folder for application data"));
    EXPECT_NE(run.status, 0);
    EXPECT_THAT(folder.names(), IsEmpty());
}

/// What the parts of a package are made by, called on its own by a user without a home.
int makePartsWithoutHome(const std::string& workingFolder) {
    unsetenv("HOME");
    unsetenv("XDG_DATA_HOME");
    if (::chdir(workingFolder.c_str()) != 0 || ::setuid(kUnknownUser) != 0) return 2;
    int requests = 0;
    setTerminationHandler([&requests] { ++requests; });
    const Rows rows = markedRows("mark");
    DocxCreator::initWithDictionary(rows, "Notes")->initDocxFile();
    XlsxCreater::initWithDictionary(rows, "Notes")->initXlsxFile();
    NumbersCreator::initWithDictionary(rows, "Notes")->initNumsFile();
    PagesCreator::initWithDictionary(rows, "Notes")->initPagesFile();
    const bool wereAllNoticed = requests == 4;
    DocxCreator::initWithDictionary(rows, "Notes")->writeWordFiles();
    WriteXlsxFile::init()->writeXlsx(rows);
    WriteNumberFiles::init()->writeNumbers(rows);
    WritePagesFiles::init()->writePages(rows);
    return wereAllNoticed ? 0 : 1;
}

TEST_F(PackagedRunTest, UserWithoutHomeKeepsTheWorkingFolderAsItIs) {
    if (geteuid() != 0) GTEST_SKIP() << "Needs the superuser.";
    for (const char* file : {"word/document.xml", "[Content_Types].xml", "xl/worksheets/sheet2.xml", "index.xml"}) {
        writeText(folder.path(file), "<ls:document><w:body><kept/></w:body></ls:document>");
    }
    for (const auto& entry : fs::recursive_directory_iterator(folder.path())) fs::permissions(entry, fs::perms::all);
    fs::permissions(folder.path(), fs::perms::all);
    const auto before = folderContent(folder.path());
    EXPECT_EXIT(std::exit(makePartsWithoutHome(folder.path())), testing::ExitedWithCode(0), "");
    EXPECT_EQ(folderContent(folder.path()), before);
    EXPECT_THAT(folder.names(), ElementsAre("[Content_Types].xml", "index.xml", "word", "xl"));
}

/// Each packaged format.
class EveryPackageTest : public PackageTest, public testing::WithParamInterface<const char*> {
protected:
    static std::shared_ptr<FileCreator> makeWriter(Rows rows, const std::string& path) {
        const auto exporter = DlxExporter::init();
        const std::string format = GetParam();
        if (format == "docx") return exporter->docxExporterWithData(std::move(rows), path);
        if (format == "xlsx") return exporter->xlsxExporterWithData(std::move(rows), path);
        if (format == "numbers") return exporter->numbersExporterWithData(std::move(rows), path);
        return exporter->pagesExporterWithData(std::move(rows), path);
    }
    CommandRun runExport(const std::string& before, std::size_t rows = 1) const {
        return runCommand(before + exportCommand(GetParam(), folder.path("Notes"), "mark", rows) + " 2>&1");
    }
    /// Of this format.
    std::string stageFolder() const {
        const std::map<std::string, std::string> folders = {
            {"docx", "DocStage"}, {"xlsx", "XlsStage"}, {"numbers", "NumStage"}, {"pages", "PgsStage"}};
        return stagePath(folders.at(GetParam()));
    }
    std::string documentName(const std::string& stem) const { return stem + "." + GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(Formats, EveryPackageTest, testing::Values("docx", "xlsx", "numbers", "pages"),
                         [](const auto& format) { return std::string(format.param); });

/// The document holds its own mark as often as every other document holds its, and no other mark.
void expectOnlyMark(const std::string& path, const std::string& mark) {
    const std::string parts = allParts(path);
    EXPECT_GT(occurrences(parts, mark), 0U) << path;
    EXPECT_EQ(occurrences(parts, "mark"), occurrences(parts, mark)) << path;
}

TEST_P(EveryPackageTest, FullDiskIsReportedAndLeavesNothingBesideTheDocument) {
    // A limit on the size of files stands for the disk; programs are told of it as of a full one.
    const CommandRun run = runExport("ulimit -f 8; trap '' XFSZ; ", 2000);
    EXPECT_NE(run.status, 0);
    EXPECT_THAT(run.output, HasSubstr("failure Cannot "));
    EXPECT_THAT(run.output, HasSubstr("File too large"));
    for (const std::string& name : folder.names()) EXPECT_EQ(name, documentName("Notes"));
    EXPECT_FALSE(fs::exists(stageFolder()));
}

TEST_P(EveryPackageTest, OptionsOfTheUserForZipDoNotReachThePackage) {
    ASSERT_EQ(runExport("ZIPOPT=-j ZIP=-j ").status, 0);
    const auto parts = partsOf(folder.path(documentName("Notes")));
    ASSERT_EQ(runExport("").status, 0);
    EXPECT_EQ(parts, partsOf(folder.path(documentName("Notes(0)"))));
}

TEST_P(EveryPackageTest, StageFolderIsClosedToOtherUsersAndStaysWhenStoppedBeforePacking) {
    const mode_t mask = umask(0);
    const auto writer = makeWriter(markedRows("mark"), folder.path("Notes"));
    writer->setIsStop(true);
    writer->startConvert();
    umask(mask);
    EXPECT_EQ(fs::status(stageFolder()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(stagePath("")).permissions(), fs::perms::owner_all);
    EXPECT_FALSE(fs::is_empty(stageFolder()));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_P(EveryPackageTest, LeftoversThatCannotBeRemovedBecomeNoPartOfADocument) {
    const std::string locked = stageFolder() + "/locked";
    writeText(locked + "/left", "x");
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    for (const std::string& path : {data.path(), stagePath(""), folder.path()}) fs::permissions(path, fs::perms::all);
    const bool isSuperuser = geteuid() == 0;  // who may remove everything
    const std::string user = isSuperuser ? fmt::format("setpriv --reuid {} --clear-groups ", kUnknownUser) : "";
    if (runCommand(user + "test -x " + quoted(ZKMB_EXPORT_DOCUMENT) + " 2>&1").status != 0) {
        GTEST_SKIP() << "Needs a build folder that others may enter.";
    }
    const CommandRun run = runExport(user);
    EXPECT_NE(run.status, 0);
    EXPECT_THAT(run.output, HasSubstr("failure Cannot remove '" + stageFolder() + "': "));
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_TRUE(fs::exists(locked + "/left"));
    fs::permissions(locked, fs::perms::owner_all);
}

TEST_P(EveryPackageTest, EightProcessesGetTheirOwnDocuments) {
    std::string commands;
    for (int process = 0; process < 8; ++process) {
        commands += exportCommand(GetParam(), folder.path("own" + std::to_string(process)),
                                  fmt::format("mark{}x", process), 40) +
                    " 2>&1 &\n";
    }
    const CommandRun run = runCommand(commands + "wait");
    EXPECT_THAT(run.output, testing::Not(HasSubstr("failure"))) << run.output;
    for (int process = 0; process < 8; ++process) {
        expectOnlyMark(folder.path(documentName("own" + std::to_string(process))), fmt::format("mark{}x", process));
    }
}

TEST_P(EveryPackageTest, EightProcessesThatWantOneNameEachGetOne) {
    std::string commands;
    for (int process = 0; process < 8; ++process) {
        commands += exportCommand(GetParam(), folder.path("same"), fmt::format("mark{}x", process)) + " 2>&1 &\n";
    }
    runCommand(commands + "wait");
    std::vector<std::string> expected = {documentName("same")};
    for (int number = 0; number < 7; ++number) expected.push_back(documentName(fmt::format("same({})", number)));
    EXPECT_THAT(folder.names(), testing::UnorderedElementsAreArray(expected));
}

TEST_P(EveryPackageTest, TwoThreadsGetTheirOwnDocuments) {
    constexpr int kDocuments = 3;
    const auto exportAll = [this](const std::string& mark) {
        for (int i = 0; i < kDocuments; ++i) {
            makeWriter(markedRows(mark, 40), folder.path(mark + std::to_string(i)))->startConvert();
        }
    };
    std::thread other([&] { exportAll("markA"); });
    exportAll("markB");
    other.join();
    for (const char* mark : {"markA", "markB"}) {
        for (int i = 0; i < kDocuments; ++i) {
            expectOnlyMark(folder.path(documentName(mark + std::to_string(i))), mark);
        }
    }
    EXPECT_THAT(log, IsEmpty());
}

}  // namespace
}  // namespace ZkMobileBackup
