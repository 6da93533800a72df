#pragma once

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "base/Log.h"
#include "base/Resources.h"
#include "tests/export/ExportTesting.h"
#include "tests/export/ZipTesting.h"

namespace ZkMobileBackup {

/// The parts of a package by name, folders left out.
inline std::map<std::string, std::string> partsOf(const std::string& package) {
    const TemporaryFolder scratch;
    const Unpacked unpacked = unpack(package, scratch.path());
    EXPECT_TRUE(unpacked.result) << package;
    return unpacked.files;
}

/// Folders of their own for documents and for application data, and everything that is logged. Resources are those of
/// the build unless a test sets others.
class PackageTest : public testing::Test {
protected:
    PackageTest() {
        setenv("XDG_DATA_HOME", data.path().c_str(), 1);
        setLogSink([this](std::string_view line) { log.emplace_back(line); });
    }
    ~PackageTest() override {
        setLogSink({});
        setResourceFolder("");
        unsetenv("XDG_DATA_HOME");
    }

    std::string stagePath(const std::string& name) const { return data.path("ZkMobileBackup/" + name); }

    TemporaryFolder data;
    ExportFolder folder;
    RecordingWriterDelegate delegate;
    std::vector<std::string> log;
};

}  // namespace ZkMobileBackup
