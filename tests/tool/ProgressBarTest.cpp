#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/WatchedRun.h"

namespace ZkMobileBackup {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kEmptyBar = " [..............................]   0%";
constexpr const char* kClearedLine = "\r\x1B[K";

ToolResult runOnTerminal(const std::vector<std::string>& arguments) {
    return WatchedRun(WatchedRun::Errors::Terminal, arguments).finish();
}

TEST(ProgressBar, IsShownOnATerminalAndRemovedAtTheEnd) {
    const TemporaryFolder folder;
    writeBytes(folder.path("notes.sqlite"), sampleNotes());
    for (const char* command : {"tables", "result"}) {
        const ToolResult result = runOnTerminal({command, folder.path("notes.sqlite")});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.errors, HasSubstr(std::string("notes.sqlite") + kEmptyBar));
        EXPECT_THAT(result.errors, EndsWith(kClearedLine));
    }
}

TEST(ProgressBar, EveryStepOfAnExportHasOne) {
    SmallBackup backup;
    const TemporaryFolder folder;
    backup.add("notes.sqlite", sampleNotes());
    const ToolResult result =
        runOnTerminal({"export", backup.path(), "--output", folder.path("out"), "--type", "html"});
    EXPECT_EQ(result.status, 0);
    for (const char* step : {"Scanning", "Reading Note", "Writing Note"}) {
        EXPECT_THAT(result.errors, HasSubstr(std::string(step) + kEmptyBar));
    }
    EXPECT_THAT(result.errors, HasSubstr("Scanning [##############################] 100%"));
    EXPECT_THAT(result.errors, EndsWith(kClearedLine));
}

TEST(ProgressBar, DocumentHasOne) {
    const TemporaryFolder folder;
    writeText(folder.path("rows.json"), R"([{"a": "b"}])");
    EXPECT_THAT(
        runOnTerminal({"document", folder.path("rows.json"), "--output", folder.path("out"), "--type", "html"}).errors,
        HasSubstr(std::string("Writing") + kEmptyBar));
}

TEST(ProgressBar, QuietHidesIt) {
    SmallBackup backup;
    backup.add("notes.sqlite", sampleNotes());
    EXPECT_THAT(runOnTerminal({"scan", backup.path(), "--quiet"}), SucceedsSilently());
    EXPECT_THAT(runOnTerminal({"--quiet", "scan", backup.path()}).errors, IsEmpty());
}

}  // namespace
}  // namespace ZkMobileBackup
