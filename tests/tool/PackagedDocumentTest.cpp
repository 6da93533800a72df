#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/PackagedDocument.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

/// A document of the type that is the test's parameter.
class PackagedDocument : public testing::TestWithParam<const char*> {
protected:
    PackagedDocument() { writeText(folder_.path("rows.json"), R"([{"name": "你好 & co"}, {"name": "second"}])"); }

    std::vector<std::string> command(const std::string& output) const {
        return {"document", folder_.path("rows.json"), "--output", output, "--type", GetParam()};
    }
    std::vector<std::string> command() const { return command(folder_.path("out/table")); }

    std::string document(const std::string& name = "table") const {
        return folder_.path("out/" + name + "." + GetParam());
    }

    /// The search path with a program in front that is called in place of "zip".
    Environment withZip(const std::string& script) const {
        const std::string zip = folder_.path("bin/zip");
        writeText(zip, "#!/bin/sh\n" + script + "\n");
        fs::permissions(zip, fs::perms::owner_all);
        return {{"PATH", folder_.path("bin") + ":" + std::getenv("PATH")}};
    }

    TemporaryFolder folder_;
};

TEST_P(PackagedDocument, HoldsTheTexts) {
    const ToolResult result = runTool(command());
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.output, document() + "\n1 file written\n");
    EXPECT_TRUE(anyPartHolds(document(), "你好 &amp; co"));
    EXPECT_TRUE(anyPartHolds(document(), "second"));
}

TEST_P(PackagedDocument, NeverReplacesAnother) {
    writeText(document(), "there before");
    ASSERT_THAT(runTool(command()), SucceedsSilently());
    EXPECT_TRUE(anyPartHolds(document("table(0)"), "second"));
    EXPECT_EQ(folderContent(folder_.path("out")).size(), 2U);
}

TEST_P(PackagedDocument, LeavesNothingBehindInTheUsersFolders) {
    ASSERT_THAT(runToolWith({{"XDG_DATA_HOME", folder_.path("data")}}, command()), SucceedsSilently());
    for (const auto& [name, content] : folderContent(folder_.path("data"))) EXPECT_THAT(name, HasSubstr(".lock"));
}

TEST_P(PackagedDocument, OutputFolderThatTakesNoFilesIsAFailure) {
    const ToolResult result = runTool(command("/proc/self/table"));
    EXPECT_THAT(result, FailsWithOneSentenceNaming(std::string("'/proc/self/table.") + GetParam() + "'"));
    EXPECT_THAT(result.errors, HasSubstr("No such file or directory"));
    EXPECT_EQ(result.output, "0 files written\n");
}

TEST_P(PackagedDocument, HomeThatTakesNoFilesIsAFailure) {
    const Environment environment{{"XDG_DATA_HOME", ""}, {"HOME", "/proc/self/home"}};
    EXPECT_THAT(runToolWith(environment, command()), FailsWithOneSentenceNaming("/proc/self/home"));
}

TEST_P(PackagedDocument, NoHomeAtAllIsAFailure) {
    if (geteuid() != 0) GTEST_SKIP() << "only the super-user may become somebody unknown";
    const ToolResult result = runToolAsNobodyKnown({{"XDG_DATA_HOME", ""}, {"HOME", ""}}, command());
    EXPECT_THAT(result, FailsWithOneSentenceNaming("neither HOME nor a password entry"));
    EXPECT_EQ(result.output, "0 files written\n");
}

/// An installation somewhere else: the library's file in a folder of its own.
class InstalledDocument : public PackagedDocument {
protected:
    InstalledDocument() {
        fs::create_directories(libraryFolder());
        fs::copy_file(ZKMB_LIBRARY, libraryFolder() + "/" + fs::path(ZKMB_LIBRARY).filename().string());
    }
    std::string libraryFolder() const { return folder_.path("moved/" ZKMB_LIBRARY_FOLDER); }
    ToolResult run() const { return runToolWith({{"LD_LIBRARY_PATH", libraryFolder()}}, command()); }
};

TEST_P(InstalledDocument, MissingTemplateIsAFailure) {
    EXPECT_THAT(run(), FailsWithOneSentenceNaming(std::string("/test.") + GetParam() + "': it is missing"));
}

TEST_P(InstalledDocument, TemplateIsFoundWhereTheLibraryWasMovedTo) {
    fs::create_directories(folder_.path("moved/" ZKMB_DATA_FOLDER));
    fs::copy(ZKMB_BUILT_RESOURCES, folder_.path("moved/" ZKMB_DATA_FOLDER "/zkmobilebackup"));
    ASSERT_THAT(run(), SucceedsSilently());
    EXPECT_TRUE(anyPartHolds(document(), "second"));
}

INSTANTIATE_TEST_SUITE_P(Document, InstalledDocument, testing::ValuesIn(kPackagedTypes));

INSTANTIATE_TEST_SUITE_P(Document, PackagedDocument, testing::ValuesIn(kPackagedTypes));

/// Those whose script looks for the program "zip" where all programs are looked for.
class ScriptedDocument : public PackagedDocument {};

TEST_P(ScriptedDocument, MissingZipProgramIsAFailure) {
    const ToolResult result = runToolWith({{"PATH", folder_.path()}}, command());
    EXPECT_THAT(result, FailsWithOneSentenceNaming("'" + document() + "'"));
    EXPECT_THAT(result.errors, HasSubstr("a program that it starts is missing"));
    EXPECT_TRUE(folderContent(folder_.path("out")).empty());
}

TEST_P(ScriptedDocument, FailureOfTheZipProgramIsAFailure) {
    const ToolResult result = runToolWith(withZip("exit 9"), command());
    EXPECT_THAT(result, FailsWithOneSentenceNaming("'" + document() + "'"));
    EXPECT_THAT(result.errors, HasSubstr("failed with status 9"));
}

TEST_P(ScriptedDocument, CtrlCWhilePackingEndsInOrder) {
    // As at a terminal, where Ctrl-C reaches every program that runs.
    const ToolResult result = runToolWith(withZip("kill -INT $PPID $$"), command());
    EXPECT_THAT(result, FailsWithOneSentenceNaming("Interrupted"));
    EXPECT_EQ(result.output, "0 files written\n");
    EXPECT_TRUE(folderContent(folder_.path("out")).empty());
}

TEST_P(ScriptedDocument, CtrlCThatTheZipProgramSurvivesNamesTheFile) {
    const ToolResult result = runToolWith(withZip("kill -INT $PPID\nexec /usr/bin/zip \"$@\""), command());
    EXPECT_THAT(result, FailsWithOneSentenceNaming("Interrupted"));
    EXPECT_EQ(result.output, document() + "\n1 file written\n");
    EXPECT_TRUE(anyPartHolds(document(), "second"));
}

INSTANTIATE_TEST_SUITE_P(Document, ScriptedDocument, testing::Values("docx", "numbers", "pages"));

}  // namespace
}  // namespace ZkMobileBackup
