#include <gtest/gtest.h>
#include <string>

#include "export/xlsx_text.h"

namespace ZkMobileBackup {
namespace {

TEST(EscapedCellText, OtherTextsStayAsTheyAre) {
    for (const std::string text : {"", "a", "_", "_x", "_x004", "_x0041", "_x004G_", "_X0041_", "x0041_", "_x00041_"}) {
        EXPECT_EQ(escapedCellText(text), text);
    }
}

TEST(EscapedCellText, WhatLooksLikeACharacterIsEscaped) {
    EXPECT_EQ(escapedCellText("_x0041_"), "_x005F_x0041_");
    EXPECT_EQ(escapedCellText("a_x00aF_b _x000D_"), "a_x005F_x00aF_b _x005F_x000D_");
}

TEST(EscapedCellText, EscapesThemselvesAreEscaped) {
    EXPECT_EQ(escapedCellText("_x005F_x0041_"), "_x005F_x005F_x005F_x0041_");
}

TEST(EscapedCellText, MarksThatShareALineAreBothEscaped) {
    EXPECT_EQ(escapedCellText("_x0041_x0042_"), "_x005F_x0041_x005F_x0042_");
}

}  // namespace
}  // namespace ZkMobileBackup
