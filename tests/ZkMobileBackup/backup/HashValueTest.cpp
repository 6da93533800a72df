#include <gtest/gtest.h>

#include "ZkMobileBackup/backup/HashValue.h"
#include "ZkMobileBackup/backup/Sha1.h"
#include "tests/ZkMobileBackup/backup/Sha1Failures.h"

namespace ZkMobileBackup {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(HashValue, FortyUpperCaseDigitsOfTheTextsBytes) {
    EXPECT_EQ(HashValue::getHashValue("abc"), "A9993E364706816ABA3E25717850C26C9CD0D89D");
}

TEST(HashValue, EmptyTextIsHashedToo) {
    EXPECT_EQ(HashValue::getHashValue(""), "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
}

TEST(HashValue, ZeroBytesCount) {
    EXPECT_EQ(HashValue::getHashValue(std::string_view("\0", 1)), "5BA93C9DB0CFF93F52B521D7420E43F6EDA2784F");
}

TEST(HashValue, TextOutsideAsciiIsHashedAsUtf8) {
    EXPECT_EQ(HashValue::getHashValue("ü"), "94A759FD37735430753C7B6B80684306D80EA16E");
}

TEST(HashValue, FailedInputIsReportedOnStandardErrorAndGivesNothing) {
    const Sha1Failures failures(Sha1Failures::Step::kInput, shaStateError);
    CaptureStderr();
    EXPECT_EQ(HashValue::getHashValue("abc"), std::nullopt);
    EXPECT_EQ(GetCapturedStderr(), "SHA1Input Error 3.\n");
}

TEST(HashValue, FailedResetGivesNothingInSilence) {
    const Sha1Failures failures(Sha1Failures::Step::kReset, shaNull);
    CaptureStderr();
    EXPECT_EQ(HashValue::getHashValue("abc"), std::nullopt);
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(HashValue, FailedResultGivesNothingInSilence) {
    const Sha1Failures failures(Sha1Failures::Step::kResult, shaStateError);
    CaptureStderr();
    EXPECT_EQ(HashValue::getHashValue("abc"), std::nullopt);
    EXPECT_EQ(GetCapturedStderr(), "");
}

}  // namespace
}  // namespace ZkMobileBackup
