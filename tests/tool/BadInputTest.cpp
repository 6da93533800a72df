#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using testing::HasSubstr;

/// The arguments of a command that reads one file.
std::vector<std::string> argumentsFor(const std::string& command, const std::string& file) {
    if (command == "document") return {command, file, "--output", "/never written", "--type", "html"};
    return {command, file};
}

class FileCommand : public testing::TestWithParam<const char*> {
protected:
    ToolResult run(const std::string& file) const { return runTool(argumentsFor(GetParam(), file)); }

    TemporaryFolder folder_;
};

TEST_P(FileCommand, NamesAMissingFile) {
    const std::string path = folder_.path("notes.sqlite");
    const ToolResult result = run(path);
    EXPECT_THAT(result, FailsWithOneSentenceNaming(path));
    EXPECT_THAT(result.errors, HasSubstr("No such file or directory"));
}

TEST_P(FileCommand, NamesADirectory) {
    const ToolResult result = run(folder_.path());
    EXPECT_THAT(result, FailsWithOneSentenceNaming(folder_.path()));
    EXPECT_THAT(result.errors, HasSubstr("is a directory"));
}

TEST_P(FileCommand, NamesAFileThatCannotBeReached) {
    writeText(folder_.path("file"), "text");
    EXPECT_THAT(run(folder_.path("file/notes.sqlite")), FailsWithOneSentenceNaming("Not a directory"));
    std::filesystem::create_symlink("loop", folder_.path("loop"));
    EXPECT_THAT(run(folder_.path("loop")), FailsWithOneSentenceNaming("Too many levels of symbolic links"));
}

TEST_P(FileCommand, NamesAFileThatMayNotBeRead) {
    if (geteuid() == 0) GTEST_SKIP() << "root may read every file";
    const std::string path = folder_.path("notes.sqlite");
    writeText(path, "text");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    EXPECT_THAT(run(path), FailsWithOneSentenceNaming("Permission denied"));
}

TEST_P(FileCommand, NamesAFileWhoseReadingFails) {
    // Opens like any file, but its first byte cannot be read.
    EXPECT_THAT(run("/proc/self/mem"), FailsWithOneSentenceNaming("'/proc/self/mem': Input/output error"));
}

TEST_P(FileCommand, DoesNotWaitForAPipe) {
    const std::string path = folder_.path("notes.sqlite");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_THAT(run(path), FailsWithOneSentenceNaming(path));
}

INSTANTIATE_TEST_SUITE_P(BadInput, FileCommand, testing::Values("tables", "result", "document"));

TEST(BadInput, FileThatIsNoDatabaseGivesAWarningAndStatus0) {
    const TemporaryFolder folder;
    for (const std::string content : {"", "plain text", "SQLite format 3"}) {
        writeText(folder.path("file"), content);
        const ToolResult result = runTool({"tables", folder.path("file"), "--json"});
        EXPECT_EQ(result.status, 0) << content;
        EXPECT_THAT(result.errors, HasSubstr("Warning: '" + folder.path("file") + "'")) << content;
        EXPECT_TRUE(result.json().is_object()) << result.output;
    }
}

TEST(BadInput, DatabaseCutAnywhereIsReadAsFarAsItGoes) {
    DatabaseBuilder builder({.pageSize = 512});
    builder.exec("CREATE TABLE message (id INTEGER PRIMARY KEY, text TEXT)");
    for (int i = 0; i < 40; ++i) builder.insert("message", {nullptr, "text number " + std::to_string(i)});
    const std::vector<std::uint8_t> bytes = builder.bytes();
    const TemporaryFolder folder;
    for (std::size_t length = 16; length < bytes.size(); length += 101) {
        writeBytes(folder.path("cut"), std::span(bytes).first(length));
        const ToolResult result = runTool({"tables", folder.path("cut"), "--json"});
        EXPECT_THAT(result, SucceedsSilently()) << length;
        EXPECT_TRUE(result.json().is_object()) << length;
    }
}

class BackupCommand : public testing::TestWithParam<std::vector<std::string>> {
protected:
    ToolResult run(const std::string& backup) const {
        std::vector<std::string> arguments = GetParam();
        arguments.insert(arguments.begin() + 1, backup);
        return runTool(arguments);
    }

    TemporaryFolder folder_;
};

TEST_P(BackupCommand, NamesAMissingFolder) {
    EXPECT_THAT(run(folder_.path("missing")), FailsWithOneSentenceNaming(folder_.path("missing")));
}

TEST_P(BackupCommand, NamesAFileWhereAFolderIsExpected) {
    writeText(folder_.path("file"), "text");
    EXPECT_THAT(run(folder_.path("file")), FailsWithOneSentenceNaming(folder_.path("file")));
}

TEST_P(BackupCommand, NamesAMissingManifest) {
    EXPECT_THAT(run(folder_.path()), FailsWithOneSentenceNaming(folder_.path("Manifest.mbdb")));
}

TEST_P(BackupCommand, NamesAManifestThatCannotBeRead) {
    std::filesystem::create_directory(folder_.path("Manifest.mbdb"));
    EXPECT_THAT(run(folder_.path()), FailsWithOneSentenceNaming(folder_.path("Manifest.mbdb")));
}

TEST_P(BackupCommand, NamesAnIndexThatCannotBeRead) {
    writeText(folder_.path("Manifest.mbdb"), "mbdb  ");
    std::filesystem::create_directory(folder_.path("Manifest.mbdx"));
    EXPECT_THAT(run(folder_.path()), FailsWithOneSentenceNaming(folder_.path("Manifest.mbdx")));
}

INSTANTIATE_TEST_SUITE_P(BadInput, BackupCommand,
                         testing::Values(std::vector<std::string>{"manifest"}, std::vector<std::string>{"scan"},
                                         std::vector<std::string>{"records", "--domain", "Note"},
                                         std::vector<std::string>{"export", "--output", "/dev/null/never", "--type",
                                                                  "html"}));

TEST(BadInput, FileThatIsNoManifestGivesAWarning) {
    const TemporaryFolder folder;
    writeText(folder.path("Manifest.mbdb"), "something else");
    const ToolResult result = runTool({"manifest", folder.path(), "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.json(), nlohmann::json::array());
    EXPECT_THAT(result.errors, HasSubstr("Warning: '" + folder.path("Manifest.mbdb") + "'"));
}

}  // namespace
}  // namespace ZkMobileBackup
