#include <filesystem>
#include <gtest/gtest.h>

#include "base/Resources.h"

namespace ZkMobileBackup {
namespace {

TEST(Resources, ProgramInItsBuildFolderFindsWhatWasBuiltWithIt) {
    for (const char* name : {"test.docx", "test.xlsx", "test.numbers", "test.pages", "zipBuildWord.sh",
                             "zipBuildNumbers.sh", "zipBuildPages.sh"}) {
        EXPECT_TRUE(std::filesystem::is_regular_file(resourceFolder() + "/" + name)) << name;
    }
}

TEST(Resources, DefaultDoesNotDependOnTheWorkingFolder) {
    const std::string before = resourceFolder();
    const auto workingFolder = std::filesystem::current_path();
    std::filesystem::current_path("/");
    EXPECT_EQ(resourceFolder(), before);
    std::filesystem::current_path(workingFolder);
}

TEST(Resources, HostMaySetAnotherFolderAndGoBack) {
    const std::string byDefault = resourceFolder();
    setResourceFolder("/some/where");
    EXPECT_EQ(resourceFolder(), "/some/where");
    setResourceFolder("");
    EXPECT_EQ(resourceFolder(), byDefault);
}

}  // namespace
}  // namespace ZkMobileBackup
