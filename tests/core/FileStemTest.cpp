#include "package/ProjectPackage.h"
#include "package/Utf8Text.h"

#include <gtest/gtest.h>

#include <string>

using recorder::ProjectPackage::displayName;
using recorder::ProjectPackage::fileStem;

namespace {

std::string repeated(const std::string& piece, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) out += piece;
    return out;
}

bool isWholeUtf8(const std::string& text) {
    for (char32_t c : recorder::Utf8Text::decode(text))
        if (c == 0xFFFD) return false;
    return true;
}

} // namespace

TEST(FileStem, ColonsBecomeHyphensAndSlashesBecomeColonsThatShowAsSlashes) {
    EXPECT_EQ(fileStem("A/B: C"), "A:B- C");
    EXPECT_EQ(displayName("A:B- C"), "A/B- C");
    EXPECT_EQ(fileStem("a//b::c"), "a::b--c");
}

TEST(FileStem, LeadingDotsAndBlanksGoAndNothingLeftIsUntitled) {
    EXPECT_EQ(fileStem("..."), "Untitled");
    EXPECT_EQ(fileStem(" ... x"), "x");
    EXPECT_EQ(fileStem("..hidden"), "hidden");
    EXPECT_EQ(fileStem("  Demo  "), "Demo");
    EXPECT_EQ(fileStem("Demo..."), "Demo...");
    EXPECT_EQ(fileStem(""), "Untitled");
    EXPECT_EQ(fileStem(" \t "), "Untitled");
}

TEST(FileStem, EachControlCharacterBecomesOneBlank) {
    EXPECT_EQ(fileStem("A\tB\nC"), "A B C");
    EXPECT_EQ(fileStem("A\r\nB"), "A  B");
    EXPECT_EQ(fileStem("A\x7f" "B"), "A B");
    EXPECT_EQ(fileStem("A\u200bB"), "A B");
    EXPECT_EQ(fileStem("\nDemo\n"), "Demo");
}

TEST(FileStem, IsCutAtTwoHundredBytes) {
    EXPECT_EQ(fileStem(repeated("a", 300)), repeated("a", 200));
    EXPECT_EQ(fileStem(repeated("a", 200)), repeated("a", 200));
}

TEST(FileStem, TwoByteLettersAreCutWholeAtOneHundred) {
    EXPECT_EQ(fileStem(repeated("é", 150)), repeated("é", 100));
    std::string odd = "a" + repeated("é", 150);
    EXPECT_EQ(fileStem(odd), "a" + repeated("é", 99));
}

TEST(FileStem, EmojiAndCombinedLettersAreNeverCutInHalf) {
    const std::string pad = repeated("a", 198);
    EXPECT_EQ(fileStem(pad + "👍"), pad);
    EXPECT_EQ(fileStem(pad + "👍🏽"), pad);
    EXPECT_EQ(fileStem(pad + "🇩🇪"), pad);
    EXPECT_EQ(fileStem(repeated("a", 196) + "1\ufe0f\u20e3"), repeated("a", 196));
    EXPECT_EQ(fileStem(repeated("a", 199) + "e\u0301"), repeated("a", 199));
    for (int n = 190; n < 200; ++n) {
        std::string stem = fileStem(repeated("a", n) + repeated("🎬", 10));
        EXPECT_LE(stem.size(), 200u);
        EXPECT_TRUE(isWholeUtf8(stem)) << n;
    }
}

TEST(FileStem, DisplayNameTurnsEveryColonIntoASlash) {
    EXPECT_EQ(displayName("a:b:c"), "a/b/c");
    EXPECT_EQ(displayName("plain"), "plain");
}
