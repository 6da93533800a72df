#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/SampleBackup.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;

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
        {"records", backup, "--domain", "Photo"},
        {"records", backup, "--domain", "Movie"},
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

/// A backup in a folder of the name that exports have below their output folder.
class OutputInTheBackup : public testing::Test {
protected:
    OutputInTheBackup() {
        writeSampleBackup(backup_);
        writeText(backup_ + "/inner/file", "of the backup");
        before_ = folderContent(backup_);
    }

    /// Expects an export to be refused because of a folder.
    void expectRefused(const std::string& output, const std::string& offending) const {
        const ToolResult result = runTool({"export", backup_, "--output", output, "--type", "html"});
        EXPECT_THAT(result, FailsWithOneSentenceNaming("'" + offending + "' lies in the backup"));
        EXPECT_EQ(result.output, "");
        EXPECT_TRUE(folderContent(backup_) == before_) << output;
    }
    std::string link(const std::string& name, const std::string& target) const {
        const std::string path = folder_.path(name);
        fs::create_directories(fs::path(path).parent_path());
        fs::create_directory_symlink(target, path);
        return path;
    }

    const TemporaryFolder folder_;
    const std::string backup_ = folder_.path("Velmora Retrievo");
    std::map<std::string, std::vector<std::uint8_t>> before_;
};

TEST_F(OutputInTheBackup, IsRefusedWhereTheBackupIsTheFolderOfAllDomains) {
    expectRefused(folder_.path(), backup_);
    expectRefused(folder_.path() + "/", folder_.path() + "//Velmora Retrievo");
}

TEST_F(OutputInTheBackup, IsRefusedThroughALinkToIt) {
    for (const std::string& target : {backup_, backup_ + "/inner"}) {
        const std::string name = "to " + std::string(fs::path(target).filename());
        const std::string output = link("output of " + name, target);
        expectRefused(output, output);
        const std::string product = link(name + "/Velmora Retrievo", target);
        expectRefused(folder_.path(name), product);
    }
}

TEST_F(OutputInTheBackup, IsRefusedThroughALinkAtTheFolderOfADomain) {
    for (const std::string& target : {backup_, backup_ + "/inner"}) {
        for (const std::string domain : {"Photo", "Note", "Message"}) {
            const std::string output = domain + " to " + std::string(fs::path(target).filename());
            expectRefused(folder_.path(output), link(output + "/Velmora Retrievo/" + domain, target));
        }
    }
}

TEST_F(OutputInTheBackup, IsNoMatterOfDomainsThatAreNotExported) {
    link("out/Velmora Retrievo/Photo", backup_);
    const ToolResult result =
        runTool({"export", backup_, "--output", folder_.path("out"), "--type", "html", "--domain", "Note"});
    EXPECT_THAT(result, SucceedsSilently());
    EXPECT_TRUE(folderContent(backup_) == before_);
}

TEST_F(OutputInTheBackup, IsNotMadeThroughALinkThatLeadsNowhere) {
    for (const std::string name : {"Velmora Retrievo", "Velmora Retrievo/Photo"}) {
        const std::string output = "out of " + std::string(fs::path(name).filename());
        link(output + "/" + name, backup_ + "/missing");
        for (const char* domain : {"Photo", "Movie"}) {
            runTool({"export", backup_, "--output", folder_.path(output), "--type", "html", "--domain", domain});
        }
    }
    EXPECT_TRUE(folderContent(backup_) == before_);
    EXPECT_FALSE(fs::exists(backup_ + "/missing"));
}

}  // namespace
}  // namespace ZkMobileBackup
