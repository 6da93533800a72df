#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>

#include "platform/FileDescriptor.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

class WriteContentOf : public testing::Test {
protected:
    WriteContentOf() { writeText(folder_.path("source"), "0123456789"); }

    FileDescriptor source() const { return FileDescriptor(::open(folder_.path("source").c_str(), O_RDONLY)); }
    FileDescriptor target(int how = 0) const {
        return FileDescriptor(::open(folder_.path("target").c_str(), O_WRONLY | O_CREAT | how, kReadableByAll));
    }
    std::string written() const {
        const auto bytes = readBytes(folder_.path("target"));
        return {bytes.begin(), bytes.end()};
    }

    TemporaryFolder folder_;
    std::uint64_t position_ = 2;
};

TEST_F(WriteContentOf, GoesToTheEnd) {
    EXPECT_TRUE(target().writeContentOf(source(), position_));
    EXPECT_EQ(position_, 10U);
    EXPECT_EQ(written(), "23456789");
}

TEST_F(WriteContentOf, TakesNoMoreThanIsAskedFor) {
    EXPECT_TRUE(target().writeContentOf(source(), position_, 3));
    EXPECT_EQ(position_, 5U);
    EXPECT_EQ(written(), "234");
}

TEST_F(WriteContentOf, BeyondTheEndIsNothing) {
    position_ = 11;
    EXPECT_TRUE(target().writeContentOf(source(), position_));
    EXPECT_EQ(position_, 11U);
    EXPECT_EQ(written(), "");
}

TEST_F(WriteContentOf, ContentOfManyPiecesIsWrittenFromAnyPosition) {
    std::string content;
    for (int i = 0; i < 50'000; ++i) content += std::to_string(i);
    writeText(folder_.path("source"), content);
    ASSERT_TRUE(target(O_APPEND).writeContentOf(source(), position_, 150'000));
    EXPECT_EQ(position_, 150'002U);
    EXPECT_EQ(written(), content.substr(2, 150'000));
    EXPECT_TRUE(target(O_APPEND).writeContentOf(source(), position_));
    EXPECT_EQ(written(), content.substr(2));
}

TEST_F(WriteContentOf, ClosedFilesAreAFailure) {
    EXPECT_FALSE(target().writeContentOf(FileDescriptor(), position_));
    EXPECT_FALSE(FileDescriptor().writeContentOf(source(), position_));
    EXPECT_EQ(position_, 2U);
}

}  // namespace
}  // namespace ZkMobileBackup
