#include "overlay/EmojiRuns.h"
#include "overlay/FontLookup.h"
#include "overlay/TextRaster.h"

#include "model/TextPreset.h"

#include "OverlayFixtures.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QPainter>

using namespace recorder;
using namespace recorder::test;

namespace {

const std::string sample = "Ship it \xF0\x9F\x9A\x80\xF0\x9F\x8D\x8E"; // rocket, red apple

class TextRaster_ : public ::testing::Test {
protected:
    void SetUp() override { ensureGui(); }
};

QImage presetRaster(const TextPreset& preset, const std::string& text = sample) {
    return TextRaster::make(text, preset.textColor, preset.style);
}

bool emojiRed(QColor c) { return c.alpha() > 200 && c.red() > 170 && c.green() < 90 && c.blue() < 90; }
bool white(QColor c) { return c.alpha() > 240 && c.red() > 240 && c.green() > 240 && c.blue() > 240; }
bool darkInk(QColor c) { return c.alpha() > 200 && c.red() < 60 && c.green() < 60 && c.blue() < 60; }

// Over a mid grey, so white and black text both show.
void keep(const QImage& raster, const std::string& name) {
    QImage shown(raster.size(), QImage::Format_ARGB32_Premultiplied);
    shown.fill(QColor(90, 120, 150));
    QPainter(&shown).drawImage(0, 0, raster);
    keepPicture(shown, "text-" + name);
}

} // namespace

TEST(TextPreset, SixPresetsInOrderWithTheirLooks) {
    const auto& all = TextPreset::all();
    ASSERT_EQ(all.size(), 6u);
    std::vector<std::string> ids;
    for (const auto& p : all) ids.push_back(p.id);
    EXPECT_EQ(ids, (std::vector<std::string>{"plain", "label", "pill", "beast", "boxed", "marker"}));
    const TextPreset& beast = *TextPreset::find("beast");
    EXPECT_EQ(beast.style.fontName, "Impact");
    EXPECT_FALSE(beast.style.bold);
    EXPECT_TRUE(beast.style.uppercase);
    EXPECT_DOUBLE_EQ(beast.style.strokeWidth, 0.09);
    EXPECT_TRUE(beast.style.shadow);
    const TextPreset& pill = *TextPreset::find("pill");
    EXPECT_TRUE(pill.style.boxEnabled);
    EXPECT_DOUBLE_EQ(pill.style.boxOpacity, 0.85);
    EXPECT_DOUBLE_EQ(pill.style.cornerRadius, 0.5);
    EXPECT_DOUBLE_EQ(pill.style.padding, 0.55);
    EXPECT_EQ(TextPreset::find("marker")->style.boxColor, (RGBAColor{1, 0.86, 0.1, 1}));
    EXPECT_EQ(TextPreset::find("label")->textColor, (RGBAColor{0, 0, 0, 1}));
    EXPECT_FALSE(TextPreset::find("plain")->style.boxEnabled);
    EXPECT_EQ(TextPreset::find("nope"), nullptr);
}

TEST(EmojiRuns, FindsWholeSequencesAndLeavesTextSymbolsAlone) {
    using Runs = std::vector<std::pair<int, int>>;
    EXPECT_EQ(EmojiRuns::find(QString::fromUtf8("a\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD b")), (Runs{{1, 4}}))
        << "thumbs up with a skin tone";
    EXPECT_EQ(EmojiRuns::find(QString::fromUtf8("\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D"
                                                "\xF0\x9F\x91\xA7")),
              (Runs{{0, 8}}))
        << "a family joined by ZWJ";
    EXPECT_EQ(EmojiRuns::find(QString::fromUtf8("\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA")),
              (Runs{{0, 4}, {4, 4}}))
        << "two flags";
    EXPECT_TRUE(EmojiRuns::find(QString::fromUtf8("\xE2\x98\x85 plain star")).empty());
    EXPECT_EQ(EmojiRuns::find(QString::fromUtf8("\xE2\x98\x85\xEF\xB8\x8F")), (Runs{{0, 2}})) << "asked to be a picture";
    EXPECT_EQ(EmojiRuns::find(QString::fromUtf8("\xE2\x9C\x85")), (Runs{{0, 1}})) << "a picture by default";
}

TEST_F(TextRaster_, KeyIsTextColourAndStyle) {
    EXPECT_EQ(TextRaster::key("Hi", {1, 0.5, 0, 1}, std::nullopt), "Hi|1,0.5,0,1|-");
    TextStyle a = TextPreset::find("label")->style, b = a;
    b.padding = 0.5;
    EXPECT_NE(TextRaster::key("Hi", {1, 1, 1, 1}, a), TextRaster::key("Hi", {1, 1, 1, 1}, b));
    EXPECT_EQ(TextRaster::key("Hi", {1, 1, 1, 1}, a), TextRaster::key("Hi", {1, 1, 1, 1}, TextPreset::find("label")->style));
}

TEST_F(TextRaster_, MissingFontFallsBackToAHeavySans) {
    TextStyle style;
    style.fontName = "No Such Face";
    style.bold = false;
    QFontInfo info(FontLookup::font(style, 160));
    EXPECT_GE(info.weight(), int(QFont::Bold));
    EXPECT_EQ(info.pixelSize(), 160);
    QFontInfo plain(FontLookup::font(std::nullopt, 160));
    EXPECT_EQ(plain.family(), "DejaVu Sans");
    EXPECT_GE(plain.weight(), int(QFont::Bold));
}

TEST_F(TextRaster_, WithoutStyleTheTextHasATwelvePixelInset) {
    QImage raster = TextRaster::make("Hello", {1, 1, 1, 1}, std::nullopt);
    ASSERT_FALSE(raster.isNull());
    keep(raster, "no-style");
    EXPECT_EQ(countPixels(raster, QRect(0, 0, raster.width(), 11), [](QColor c) { return c.alpha() > 0; }), 0);
    EXPECT_EQ(countPixels(raster, QRect(0, 0, 11, raster.height()), [](QColor c) { return c.alpha() > 0; }), 0);
    EXPECT_GT(countPixels(raster, raster.rect(), white), 1000);
    EXPECT_GT(raster.height(), 160) << "one line at size 160";
    EXPECT_LT(raster.height(), 260);
    QImage empty = TextRaster::make("", {1, 1, 1, 1}, std::nullopt);
    EXPECT_EQ(empty.height(), raster.height()) << "an empty text measures as one blank";
    EXPECT_LT(empty.width(), 100);
}

TEST_F(TextRaster_, EveryPresetDrawsItsLookAndColourEmoji) {
    for (const TextPreset& preset : TextPreset::all()) {
        QImage raster = presetRaster(preset);
        ASSERT_FALSE(raster.isNull()) << preset.id;
        keep(raster, "preset-" + preset.id);
        EXPECT_GT(countPixels(raster, raster.rect(), emojiRed), 150) << preset.id << ": the apple is red";
    }
}

TEST_F(TextRaster_, BoxesAreFilledWithTheirColour) {
    // Inside the box but left of the text: px = 160·padding.
    QImage label = presetRaster(*TextPreset::find("label"));
    EXPECT_TRUE(white(label.pixelColor(30, label.height() / 2)));
    QImage pill = presetRaster(*TextPreset::find("pill"));
    QColor inPill = pill.pixelColor(60, pill.height() / 2);
    EXPECT_NEAR(inPill.alpha(), 217, 2) << "black at 0.85";
    EXPECT_LT(inPill.red(), 5);
    EXPECT_EQ(pill.pixelColor(1, 1).alpha(), 0) << "the pill's corner is round";
    QImage boxed = presetRaster(*TextPreset::find("boxed"));
    EXPECT_EQ(boxed.pixelColor(0, 0).alpha(), 255) << "square corners";
    QImage marker = presetRaster(*TextPreset::find("marker"));
    QColor yellow = marker.pixelColor(20, marker.height() / 2);
    EXPECT_EQ(yellow.red(), 255);
    EXPECT_NEAR(yellow.green(), 219, 1);
    EXPECT_NEAR(yellow.blue(), 26, 1);
    QImage plain = presetRaster(*TextPreset::find("plain"));
    EXPECT_EQ(plain.pixelColor(20, plain.height() / 2).alpha(), 0) << "no box";
}

TEST_F(TextRaster_, BeastHasAnOutlineAShadowAndCapitals) {
    const TextPreset& beast = *TextPreset::find("beast");
    QImage raster = presetRaster(beast);
    int fill = countPixels(raster, raster.rect(), white);
    int outline = countPixels(raster, raster.rect(), darkInk);
    EXPECT_GT(fill, 2000);
    EXPECT_GT(outline, fill / 3) << "a 14.4-pixel black edge around the letters";
    // The soft shadow: a wide band of partly transparent black that the
    // same look without a shadow doesn't have.
    auto soft = [](QColor c) { return c.alpha() > 10 && c.alpha() < 150 && c.red() < 60; };
    TextStyle flat = beast.style;
    flat.shadow = false;
    QImage unshadowed = TextRaster::make(sample, beast.textColor, flat);
    EXPECT_EQ(raster.width(), unshadowed.width() + 48) << "a 24-pixel margin for the shadow";
    EXPECT_GT(countPixels(raster, raster.rect(), soft), 3 * countPixels(unshadowed, unshadowed.rect(), soft) + 1000);
    EXPECT_EQ(TextRaster::make("ship it", beast.textColor, beast.style),
              TextRaster::make("SHIP IT", beast.textColor, beast.style));
}

// Outlines from addText would make Qt lose colour emoji at this size for
// good; a plain raster after an outlined one must still show them.
TEST_F(TextRaster_, EmojiSurviveAnOutlinedTextOfTheSameSize) {
    presetRaster(*TextPreset::find("beast"));
    QImage after = TextRaster::make(sample, {1, 1, 1, 1}, std::nullopt);
    EXPECT_GT(countPixels(after, after.rect(), emojiRed), 150);
}

TEST_F(TextRaster_, LinesAreCentred) {
    QImage raster = TextRaster::make("WWWWWWWW\nI", {1, 1, 1, 1}, std::nullopt);
    int lineHeight = (raster.height() - 24) / 2;
    QRect second(0, 12 + lineHeight, raster.width(), lineHeight);
    int left = raster.width(), right = 0;
    for (int y = second.top(); y <= second.bottom(); ++y)
        for (int x = 0; x < raster.width(); ++x)
            if (raster.pixelColor(x, y).alpha() > 128) left = std::min(left, x), right = std::max(right, x);
    EXPECT_NEAR((left + right) / 2.0, raster.width() / 2.0, 6);
}

TEST_F(TextRaster_, LongTextsAndAbsurdStylesStayBounded) {
    std::string longText;
    for (int i = 0; i < 10000; ++i) longText += (i % 7 == 6) ? ' ' : char('a' + i % 26);
    QImage raster = TextRaster::make(longText, {1, 1, 1, 1}, std::nullopt);
    EXPECT_LE(raster.width(), int(TextRaster::largestText) + 24);
    EXPECT_LE(raster.height(), int(TextRaster::largestText) + 24 + 1);
    TextStyle absurd = TextPreset::find("pill")->style;
    absurd.padding = 1e12;
    absurd.strokeWidth = 1e9;
    absurd.cornerRadius = std::nan("");
    absurd.boxOpacity = std::nan("");
    QImage styled = TextRaster::make("x", {std::nan(""), 1, 1, 1}, absurd);
    ASSERT_FALSE(styled.isNull());
    EXPECT_LT(styled.width(), 2000);
}
