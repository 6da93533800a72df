#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/CopyOnWrite.h"

namespace ZkMobileBackup {
namespace {

TEST(CopyOnWrite, DefaultMadeHandleReadsAsADefaultMadeValue) {
    const CopyOnWrite<std::string> handle;
    EXPECT_EQ(*handle, "");
}

TEST(CopyOnWrite, DefaultMadeHandleCanBeEdited) {
    CopyOnWrite<std::string> handle;
    handle.edit() = "x";
    EXPECT_EQ(*handle, "x");
    EXPECT_EQ(*CopyOnWrite<std::string>(), "");
}

TEST(CopyOnWrite, CopiesShareOneValue) {
    const CopyOnWrite<std::string> handle("x");
    const CopyOnWrite<std::string> copy = handle;
    EXPECT_EQ(&copy.get(), &handle.get());
}

TEST(CopyOnWrite, EditingACopyLeavesTheOtherAlone) {
    CopyOnWrite<std::string> handle("x");
    CopyOnWrite<std::string> copy = handle;
    copy.edit() += "y";
    EXPECT_EQ(*handle, "x");
    EXPECT_EQ(*copy, "xy");
    handle.edit() += "z";
    EXPECT_EQ(*copy, "xy");
}

TEST(CopyOnWrite, OnlyOwnerEditsInPlace) {
    CopyOnWrite<std::string> handle("x");
    const std::string* value = &handle.get();
    { const CopyOnWrite<std::string> gone = handle; }
    handle.edit() += "y";
    EXPECT_EQ(&handle.get(), value);
}

TEST(CopyOnWrite, MovedFromHandleReadsAsADefaultMadeValue) {
    CopyOnWrite<std::string> handle("x");
    const CopyOnWrite<std::string> taken = std::move(handle);
    EXPECT_EQ(*taken, "x");
    EXPECT_EQ(*handle, "");
}

TEST(CopyOnWrite, AssignmentToItselfKeepsTheValue) {
    CopyOnWrite<std::string> handle("x");
    const CopyOnWrite<std::string>& same = handle;
    handle = same;
    EXPECT_EQ(*handle, "x");
}

TEST(CopyOnWrite, CopiesMayBeEditedOnDifferentThreads) {
    constexpr int kThreads = 4;
    const CopyOnWrite<std::string> original("x");
    std::vector<CopyOnWrite<std::string>> copies(kThreads, original);
    std::vector<std::thread> threads;
    for (auto& copy : copies) {
        threads.emplace_back([&copy] {
            for (int i = 0; i < 1000; ++i) {
                const CopyOnWrite<std::string> shared = copy;
                copy.edit() += 'y';
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(*original, "x");
    for (const auto& copy : copies) EXPECT_EQ(*copy, "x" + std::string(1000, 'y'));
}

}  // namespace
}  // namespace ZkMobileBackup
