#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using testing::HasSubstr;
using testing::Not;

class Document : public testing::Test {
protected:
    ToolResult run(const std::string& rows, const std::vector<std::string>& options = {"--type", "html"}) const {
        writeText(folder_.path("rows.json"), rows);
        std::vector<std::string> arguments{"document", folder_.path("rows.json"), "--output", output()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runTool(arguments);
    }

    std::string output() const { return folder_.path("out/table"); }

    std::string text(const std::string& path) const {
        const std::vector<std::uint8_t> bytes = readBytes(path);
        return {bytes.begin(), bytes.end()};
    }

    TemporaryFolder folder_;
};

TEST_F(Document, ArrayOfObjectsBecomesOneFile) {
    const ToolResult result = run(R"([{"name": "你好 & co"}, {"name": "second"}])");
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.output, output() + ".html\n1 file written\n");
    EXPECT_THAT(text(output() + ".html"), HasSubstr("你好 &amp; co"));
    EXPECT_THAT(text(output() + ".html"), HasSubstr("second"));
}

TEST_F(Document, ExistingFileIsKept) {
    writeText(output() + ".html", "there before");
    EXPECT_EQ(run(R"([{"name": "new"}])").output, output() + "(0).html\n1 file written\n");
    EXPECT_EQ(text(output() + ".html"), "there before");
}

TEST_F(Document, ObjectOfArraysBecomesAFileATable) {
    const ToolResult result = run(R"({"b": [{"x": "1"}], "a": [{"x": "2"}]})", {"--type", "html", "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.json()["files"],
              nlohmann::json({output() + "/b_ExportFile.html", output() + "/a_ExportFile.html"}));
    EXPECT_TRUE(std::filesystem::exists(output() + "/b_ExportFile.html"));
}

TEST_F(Document, CellsThatAreNeitherTextNorArrayAreEmpty) {
    const std::string rows = R"([{"a": "text", "b": null, "c": 17.25, "d": true, "e": {"k": "hidden"}, "f": 4711}])";
    ASSERT_THAT(run(rows), SucceedsSilently());
    const std::string page = text(output() + ".html");
    for (const char* absent : {"17.25", "true", "hidden", "4711"}) EXPECT_THAT(page, Not(HasSubstr(absent)));
    EXPECT_THAT(page, HasSubstr("text"));
    EXPECT_THAT(page, HasSubstr(">b<"));
}

TEST_F(Document, EveryTextOfAnArrayIsWritten) {
    ASSERT_THAT(run(R"([{"phones": ["111", {"k": "v"}, ["nested"], null, "222"]}])"), SucceedsSilently());
    const std::string page = text(output() + ".html");
    EXPECT_THAT(page, HasSubstr("111"));
    EXPECT_THAT(page, HasSubstr("222"));
    EXPECT_THAT(page, Not(HasSubstr("nested")));
}

TEST_F(Document, NoRowsNoFile) {
    const ToolResult result = run("[]");
    EXPECT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.output, "0 files written\n");
    EXPECT_FALSE(std::filesystem::exists(folder_.path("out")));
}

TEST_F(Document, FileThatCannotBeWrittenIsAFailure) {
    writeText(folder_.path("out"), "a file where a folder is needed");
    EXPECT_THAT(run(R"([{"a": "b"}])"), FailsWithOneSentenceNaming(folder_.path("out")));
}

class NameThatLeavesTheFolder : public Document, public testing::WithParamInterface<const char*> {};

TEST_P(NameThatLeavesTheFolder, IsAFailureAndNothingIsWritten) {
    const std::string name = GetParam();
    const ToolResult result = run(R"({"first": [{"a": "b"}], ")" + name + R"(": [{"a": "b"}]})");
    EXPECT_THAT(result, FailsWithOneSentenceNaming("'" + folder_.path("rows.json") + "' names a table '" + name + "'"));
    EXPECT_EQ(folderContent(folder_.path()).size(), 1U);  // the rows alone
}

INSTANTIATE_TEST_SUITE_P(Document, NameThatLeavesTheFolder,
                         testing::Values("../evil", "/", "/tmp/evil", "a/b", "a/", ".", ".."));

TEST_F(Document, DotsInANameAreNoHarm) {
    const ToolResult result = run(R"({"...": [{"a": "b"}], "..a": [{"a": "b"}], "": [{"a": "b"}]})");
    ASSERT_THAT(result, SucceedsSilently());
    for (const char* name : {"...", "..a", ""}) {
        EXPECT_TRUE(std::filesystem::exists(output() + "/" + name + "_ExportFile.html")) << name;
    }
}

TEST_F(Document, FolderThatTakesNoFilesIsAFailure) {
    writeText(folder_.path("rows.json"), R"([{"a": "b"}])");
    EXPECT_THAT(runTool({"document", folder_.path("rows.json"), "--output", "/proc/self/document", "--type", "html"}),
                FailsWithOneSentenceNaming("/proc/self"));
}

class WrongJson : public Document, public testing::WithParamInterface<const char*> {};

TEST_P(WrongJson, IsNamed) {
    EXPECT_THAT(run(GetParam()), FailsWithOneSentenceNaming(folder_.path("rows.json")));
}

INSTANTIATE_TEST_SUITE_P(Document, WrongJson,
                         testing::Values("", "[", "{\"a\": [{}], }", "text", "\"text\"", "17", "null", "[1]", "[[]]",
                                         "{\"a\": 1}", "{\"a\": {}}", "{\"a\": [\"b\"]}", "[{\"a\": 1e999}]",
                                         "[{\"a\": \"\xFF\"}]", "[{\"a\": \"\\ud800\"}]"));

TEST_F(Document, DeepNestingIsNoProblem) {
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_THAT(run("[{\"a\": " + deep + "}]"), SucceedsSilently());
}

}  // namespace
}  // namespace ZkMobileBackup
