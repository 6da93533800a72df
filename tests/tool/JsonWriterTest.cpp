#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/Image.h"
#include "tool/json_writer.h"

namespace zkmb {
namespace {

using ZkMobileBackup::Array;
using ZkMobileBackup::Dictionary;
using ZkMobileBackup::Value;

class Picture : public ZkMobileBackup::Image {
public:
    ZkMobileBackup::Size size() const override { return {400, 300}; }
    std::optional<ZkMobileBackup::Pixels> pixels() const override { return std::nullopt; }
};

std::string written(const Value& value) {
    testing::internal::CaptureStdout();
    JsonWriter json;
    json.value(value);
    json.finish();
    return testing::internal::GetCapturedStdout();
}

TEST(Json, TextIsEscaped) {
    EXPECT_EQ(written("plain"), "\"plain\"\n");
    EXPECT_EQ(written("\"\\\n\x01 é 😀"), "\"\\\"\\\\\\n\\u0001 é 😀\"\n");
}

TEST(Json, BytesThatAreNoTextAreReplaced) {
    EXPECT_EQ(written("a\xFF"
                      "b"),
              "\"a\uFFFDb\"\n");
}

TEST(Json, NumbersAreNumbers) {
    EXPECT_EQ(written(std::int64_t{-9223372036854775807 - 1}), "-9223372036854775808\n");
    EXPECT_EQ(written(0.1), "0.1\n");
    EXPECT_EQ(written(std::numeric_limits<double>::infinity()), "null\n");
}

TEST(Json, DatesImagesAndSizesHaveTheirForms) {
    EXPECT_EQ(written(ZkMobileBackup::Date{0}), "\"1970-01-01T00:00:00Z\"\n");
    EXPECT_EQ(written(ZkMobileBackup::Date{1e300}), "null\n");
    EXPECT_EQ(nlohmann::json::parse(written(std::shared_ptr<const ZkMobileBackup::Image>(new Picture))),
              nlohmann::json({{"width", 400}, {"height", 300}}));
    EXPECT_EQ(written(ZkMobileBackup::Size{120, 90.5}), "{\"width\":120.0,\"height\":90.5}\n");
    EXPECT_EQ(written(Value()), "null\n");
}

TEST(Json, DictionariesKeepTheirOrder) {
    EXPECT_EQ(written(Dictionary{{"z", "1"}, {"a", Array{"x", Dictionary{{"k", 2}}}}}),
              "{\"z\":\"1\",\"a\":[\"x\",\n{\"k\":2}]}\n");
}

TEST(Json, LongDocumentIsWrittenWhole) {
    const std::string text(1000, 'x');
    const auto document = nlohmann::json::parse(written(Array(1000, text)));
    ASSERT_EQ(document.size(), 1000U);
    EXPECT_EQ(document.back(), text);
}

}  // namespace
}  // namespace zkmb
