#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "platform/Process.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

class RunProgram : public testing::Test {
protected:
    std::string run(const std::string& script) const { return runProgram({"/bin/sh", "-c", script}, folder_.path()); }

    TemporaryFolder folder_;
};

TEST_F(RunProgram, WorksInTheFolderGiven) {
    EXPECT_EQ(run("echo text >file"), "");
    EXPECT_EQ(readBytes(folder_.path("file")).size(), 5U);
}

TEST_F(RunProgram, NoShellReadsTheArguments) {
    const std::string name = folder_.path("$(echo 'x') \"`id`\";\n*");
    EXPECT_EQ(runProgram({"/bin/mkdir", name}), "");
    EXPECT_TRUE(std::filesystem::is_directory(name));
}

TEST_F(RunProgram, HasNoInputAndItsOutputIsDropped) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(run("cat; echo shown; echo shown >&2"), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(RunProgram, FailureIsNamedWithTheProgram) {
    EXPECT_EQ(run("exit 9"), "'/bin/sh' failed with status 9.");
    EXPECT_EQ(run("kill -TERM $$"), "'/bin/sh' was ended by signal 15.");
    EXPECT_EQ(run("no-such-program"), "'/bin/sh' failed: a program that it starts is missing.");
    EXPECT_EQ(runProgram({"/no/such/program"}), "Cannot start '/no/such/program': No such file or directory.");
}

}  // namespace
}  // namespace ZkMobileBackup
