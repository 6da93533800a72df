#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

using testing::HasSubstr;

std::string sourceText(const std::string& path) {
    const std::vector<std::uint8_t> bytes = readBytes(std::string(ZKMB_SOURCE_DIR "/") + path);
    return {bytes.begin(), bytes.end()};
}

TEST(Example, WritesTheNotesOfABackup) {
    SmallBackup backup;
    backup.add("Library/Notes/notes.sqlite", sampleNotes());
    const TemporaryFolder output;
    const ToolResult result = runExample({backup.path(), output.path()});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_EQ(result.output, output.path("Velmora Retrievo/Note.html") + "\n");
    EXPECT_EQ(folderContent(output.path()).size(), 1U);
}

TEST(Example, StandsInTheReadmeAsItIsBuilt) {
    EXPECT_THAT(sourceText("README.md"), HasSubstr("```cpp\n" + sourceText("examples/recover_notes.cpp") + "```\n"));
}

}  // namespace
}  // namespace ZkMobileBackup
