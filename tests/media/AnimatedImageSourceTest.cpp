#include "decode/MediaError.h"
#include "sources/AnimatedImageSource.h"
#include "sources/StillImageSource.h"
#include "sources/TextImageSource.h"
#include "support/TempDir.h"
#include "support/TestMedia.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;

namespace {

// Four frames of a GIF made by ffmpeg, each with its delay (hundredths of a
// second) rewritten in the graphic control extensions.
std::filesystem::path gifWithDelays(const TempDir& dir, std::vector<int> delays) {
    auto file = makeMedia(dir / "a.gif", "-f lavfi -i color=c=red:s=16x16:r=10:d=0.4 -vf \"geq=r='60*N':g=0:b=0\"");
    auto bytes = readBytes(file);
    std::size_t frame = 0;
    for (std::size_t i = 0; i + 5 < bytes.size() && frame < delays.size(); ++i) {
        if (bytes[i] != 0x21 || bytes[i + 1] != 0xF9 || bytes[i + 2] != 0x04) continue;
        bytes[i + 4] = std::uint8_t(delays[frame] & 0xFF);
        bytes[i + 5] = std::uint8_t(delays[frame] >> 8);
        ++frame;
    }
    writeBytes(file, bytes);
    return file;
}

} // namespace

TEST(AnimatedImageSource, AGifDelayOfZeroReadsAsATenthOfASecond) {
    TempDir dir;
    AnimatedImageSource source(gifWithDelays(dir, {0, 0, 0, 0}));
    ASSERT_EQ(source.frames.size(), 4u);
    EXPECT_EQ(source.times, (std::vector<double>{0, 0.1, 0.2, 0.30000000000000004}));
    EXPECT_NEAR(source.duration, 0.4, 1e-12);
}

TEST(AnimatedImageSource, KeepsDelaysFromTwoHundredthsUpAndLiftsShorterOnes) {
    TempDir dir;
    AnimatedImageSource source(gifWithDelays(dir, {5, 1, 2, 30}));
    ASSERT_EQ(source.frames.size(), 4u);
    EXPECT_NEAR(source.times[1], 0.05, 1e-12);
    EXPECT_NEAR(source.times[2], 0.15, 1e-12);
    EXPECT_NEAR(source.times[3], 0.17, 1e-12);
    EXPECT_NEAR(source.duration, 0.47, 1e-12);
}

TEST(AnimatedImageSource, LoopsAndShowsTheLastFrameStartedAtOrBeforeTheTime) {
    TempDir dir;
    AnimatedImageSource source(gifWithDelays(dir, {0, 0, 0, 0}));
    EXPECT_EQ(source.frame(0.25)->data(), source.frames[2].data());
    EXPECT_EQ(source.frame(0.1)->data(), source.frames[1].data());
    EXPECT_EQ(source.frame(0.45)->data(), source.frames[0].data());
    EXPECT_EQ(source.frame(-0.05)->data(), source.frames[3].data());
}

TEST(AnimatedImageSource, ReadsAnimatedPngWithItsDelaysAndPremultipliedAlpha) {
    TempDir dir;
    auto file = makeMedia(dir / "a.png", "-f lavfi -i color=c=red:s=16x16:r=20:d=0.15 -vf format=rgba,colorchannelmixer=aa=0.5 -plays 0 -f apng");
    AnimatedImageSource source(file);
    ASSERT_EQ(source.frames.size(), 3u);
    EXPECT_NEAR(source.times[1], 0.05, 1e-9);
    const std::uint8_t* pixel = source.frames[0].row(8) + 8 * 4;
    EXPECT_EQ(pixel[0], 0);
    EXPECT_NEAR(pixel[2], 128, 1) << "red 255 at alpha 128, premultiplied";
    EXPECT_NEAR(pixel[3], 128, 1);
    EXPECT_FALSE(source.frames[0].isOpaque());
}

TEST(StillImageSource, GivesTheSamePictureAtEveryTime) {
    TempDir dir;
    auto file = makeMedia(dir / "still.jpg", "-f lavfi -i color=c=blue:s=40x30:d=0.1 -frames:v 1");
    StillImageSource source(file);
    EXPECT_EQ(source.image.width(), 40);
    EXPECT_TRUE(source.image.isOpaque());
    EXPECT_EQ(source.frame(0)->data(), source.frame(1e6)->data());
    EXPECT_GT(source.image.row(15)[20 * 4 + 0], 200) << "blue";
}

TEST(StillImageSource, RefusesAMissingOrDamagedFile) {
    TempDir dir;
    writeText(dir / "broken.png", "\x89PNG not really");
    EXPECT_THROW(StillImageSource(dir / "broken.png"), MediaError);
    EXPECT_THROW(StillImageSource(dir / "missing.png"), MediaError);
}

TEST(TextImageSource, HasNothingToShowUntilItsRasterIsMade) {
    TextImageSource source;
    EXPECT_FALSE(source.frame(0));
    source.image = FrameImage::allocate(4, 4, false);
    EXPECT_TRUE(source.frame(0));
}
