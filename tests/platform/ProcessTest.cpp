#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

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

TEST_F(RunProgram, IsDoneAlsoWhereTheHostIgnoresTheEndsOfItsChildren) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(runProgram({"/bin/true"}), "");
    std::signal(SIGCHLD, before);
}

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

TEST_F(RunProgram, ScriptWithoutInterpreterIsRunByTheShell) {
    const std::string script = folder_.path("-a script's.sh");
    writeText(script, "printf '%s|' \"$#\" \"$1\" \"$2\" >file\nexit 3\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    EXPECT_EQ(runProgram({script, "$HOME", "a b"}, folder_.path()), "'" + script + "' failed with status 3.");
    const std::string written = "2|$HOME|a b|";
    EXPECT_EQ(readBytes(folder_.path("file")), std::vector<std::uint8_t>(written.begin(), written.end()));
}

TEST_F(RunProgram, NeedsNoEnvironment) {
    const auto runWithoutEnvironment = [] {
        clearenv();
        return runProgram({"/bin/true"}).empty() ? 0 : 1;
    };
    EXPECT_EXIT(std::exit(runWithoutEnvironment()), testing::ExitedWithCode(0), "");
}

TEST_F(RunProgram, OptionsOfTheUserForZipAreKeptFromPrograms) {
    for (const char* name : {"ZIPOPT", "ZIP", "ZIPPED"}) setenv(name, "value", 1);
    EXPECT_EQ(run("test -z \"${ZIPOPT+set}${ZIP+set}\""), "");
    EXPECT_EQ(run("test \"$ZIPPED\" = value && test -n \"$PATH\""), "");
    for (const char* name : {"ZIPOPT", "ZIP", "ZIPPED"}) unsetenv(name);
}

}  // namespace
}  // namespace ZkMobileBackup
