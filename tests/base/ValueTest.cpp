#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <vector>

#include "base/Image.h"
#include "base/Value.h"

namespace ZkMobileBackup {
namespace {

class PlainImage : public Image {
public:
    Size size() const override { return {4, 3}; }
    std::optional<Pixels> pixels() const override { return std::nullopt; }
};

SharedBytes bytesOf(std::vector<std::uint8_t> bytes) {
    return std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
}

std::shared_ptr<const Image> picture() {
    return std::make_shared<const PlainImage>();
}

/// One value of every kind.
std::vector<Value> everyKind() {
    return {
        Value(),           Value("text"),       Value(5),         Value(1.5),           Value(Date{7}),
        Value(Size{2, 3}), Value(bytesOf({1})), Value(picture()), Value(Array{1, "a"}), Value(Dictionary{{"a", 1}})};
}

int kindsAnswered(const Value& value) {
    return (value.isNull() ? 1 : 0) + (value.text() ? 1 : 0) + (value.integer() ? 1 : 0) + (value.floating() ? 1 : 0) +
           (value.date() ? 1 : 0) + (value.size() ? 1 : 0) + (value.bytes() ? 1 : 0) + (value.image() ? 1 : 0) +
           (value.array() ? 1 : 0) + (value.dictionary() ? 1 : 0);
}

TEST(Value, IsOfExactlyOneKind) {
    for (const Value& value : everyKind()) EXPECT_EQ(kindsAnswered(value), 1);
}

TEST(Value, GivesBackWhatItWasMadeOf) {
    EXPECT_TRUE(Value().isNull());
    EXPECT_EQ(*Value("text").text(), "text");
    EXPECT_EQ(*Value(std::int64_t{-5}).integer(), -5);
    EXPECT_EQ(*Value(0xFFFFFFFFU).integer(), 0xFFFFFFFF);
    EXPECT_EQ(*Value(1.5).floating(), 1.5);
    EXPECT_EQ(*Value(Date{7}).date(), Date{7});
    EXPECT_EQ(*Value(Size{2, 3}).size(), (Size{2, 3}));
    EXPECT_THAT(**Value(bytesOf({1, 2})).bytes(), testing::ElementsAre(1, 2));
    EXPECT_EQ((*Value(picture()).image())->width(), 4);
    EXPECT_EQ(*Value(Array{1, "a"}).array(), (Array{1, "a"}));
    EXPECT_EQ(*Value(Dictionary{{"a", 1}}).dictionary(), (Dictionary{{"a", 1}}));
}

TEST(Value, EqualsItsCopyAndNoOtherKind) {
    const std::vector<Value> values = everyKind();
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            const Value copy = values[j];
            EXPECT_EQ(values[i] == copy, i == j) << i << ' ' << j;
        }
    }
}

TEST(Value, WholeAndFloatingNumbersAreDifferentKinds) {
    EXPECT_FALSE(Value(1) == Value(1.0));
}

TEST(Value, NumberOfEitherKindReadsAsADouble) {
    EXPECT_EQ(Value(3).numberOr0(), 3.0);
    EXPECT_EQ(Value(1.5).numberOr0(), 1.5);
}

TEST(Value, NumberOfAnythingElseIs0) {
    EXPECT_EQ(Value("3").numberOr0(), 0.0);
    EXPECT_EQ(Value(Date{3}).numberOr0(), 0.0);
    EXPECT_EQ(Value().numberOr0(), 0.0);
}

}  // namespace
}  // namespace ZkMobileBackup
