#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/SampleBackup.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

TEST(UntouchedBackup, EveryFileStaysAsItIsWhateverTheToolDoes) {
    const TemporaryFolder folder;
    const std::string backup = folder.path("backups/sample");
    writeSampleBackup(backup);
    writeBytes(folder.path("sms.db"), sampleMessages());
    const auto before = folderContent(backup);
    std::vector<std::vector<std::string>> runs = {
        {"list", "--root", folder.path("backups")},
        {"manifest", backup},
        {"scan", backup},
        {"records", backup, "--domain", "Note"},
        {"records", backup, "--domain", "Message"},
        {"records", backup, "--domain", "Contacts"},
        {"export", backup, "--output", folder.path("out"), "--type", "html"},
        {"export", backup, "--output", backup, "--type", "html"},
        {"export", backup, "--output", backup + "/new", "--type", "html"},
        {"export", backup, "--output", folder.path("out"), "--type", "docx"},
        {"export", backup, "--output", folder.path("out"), "--type", "xlsx"},
        {"export", backup, "--output", folder.path("out"), "--type", "numbers"},
        {"export", backup, "--output", folder.path("out"), "--type", "pages"},
    };
    for (const auto& [name, content] : before) {
        runs.push_back({"tables", backup + "/" + name});
        runs.push_back({"result", backup + "/" + name});
        runs.push_back({"result", folder.path("sms.db"), "--contacts", backup + "/" + name});
        runs.push_back({"document", backup + "/" + name, "--output", folder.path("out/rows"), "--type", "html"});
    }
    for (std::vector<std::string> arguments : runs) {
        runTool(arguments);
        arguments.push_back("--json");
        runTool(arguments);
    }
    EXPECT_EQ(folderContent(backup), before);
}

}  // namespace
}  // namespace ZkMobileBackup
