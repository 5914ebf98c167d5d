#include "model/RGBAColor.h"

#include <gtest/gtest.h>

using namespace recorder;

TEST(RGBAColor, SixDigitsWithBlanksAroundReadAsOpaqueBytesOver255) {
    auto colour = RGBAColor::fromHex(" #D4FC79 ");
    ASSERT_TRUE(colour);
    EXPECT_EQ(*colour, (RGBAColor{212 / 255.0, 252 / 255.0, 121 / 255.0, 1}));
}

TEST(RGBAColor, EightDigitsCarryAlphaAndEitherCaseAndNoHashAreAccepted) {
    EXPECT_EQ(RGBAColor::fromHex("#D4FC7980")->a, 128 / 255.0);
    EXPECT_EQ(RGBAColor::fromHex("d4fc79"), RGBAColor::fromHex("#D4FC79"));
}

TEST(RGBAColor, AnyOtherTextGivesNoColour) {
    for (const char* text : {"#12345", "#GGGGGG", "", "#", "##D4FC79", "#D4FC7", "#D4FC798", "#D4FC79800",
                             "#D4 FC79", "rgb(1,2,3)", "#-1FC79"})
        EXPECT_FALSE(RGBAColor::fromHex(text)) << text;
}

TEST(RGBAColor, TextIsRoundedClampedUpperCaseAndLeavesAlphaOut) {
    EXPECT_EQ((RGBAColor{212 / 255.0, 252 / 255.0, 121 / 255.0, 0.5}.hex()), "#D4FC79");
    EXPECT_EQ((RGBAColor{-0.5, 1.7, 0.5, 1}.hex()), "#00FF80");
    EXPECT_EQ((RGBAColor{0.002, 0.998, 0, 1}.hex()), "#01FE00");
}
