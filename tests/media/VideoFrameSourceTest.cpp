#include "FrameNumbers.h"
#include "decode/MediaError.h"
#include "sources/VideoFrameSource.h"
#include "support/TempDir.h"
#include "support/TestMedia.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;

namespace {

class VideoFrameSourceTest : public ::testing::Test {
protected:
    TempDir dir;
};

} // namespace

TEST_F(VideoFrameSourceTest, ReadsItsLengthAndSize) {
    VideoFrameSource source(makeNumberedVideo(dir / "v.mp4", 60));
    EXPECT_NEAR(source.duration, 2.0, 1e-6);
    EXPECT_EQ(source.naturalWidth, 64);
    EXPECT_EQ(source.naturalHeight, 48);
    EXPECT_FALSE(source.hasAudio);
}

TEST_F(VideoFrameSourceTest, GivesTheFrameShownAtEachTimeInAnyOrder) {
    VideoFrameSource source(makeNumberedVideo(dir / "v.mp4", 60));
    for (double t : {0.5, 0.52, 1.9, 0.2, 1.0, 1.0 + 1 / 30.0 - 0.001, 0.0, 1.5})
        EXPECT_EQ(frameNumber(source.frame(t)), int(std::floor(t * 30 + 1e-9))) << "at " << t;
}

TEST_F(VideoFrameSourceTest, StepsForwardThroughEveryFrame) {
    VideoFrameSource source(makeNumberedVideo(dir / "v.mp4", 60));
    for (int n = 0; n < 60; ++n) EXPECT_EQ(frameNumber(source.frame(n / 30.0 + 0.004)), n);
}

TEST_F(VideoFrameSourceTest, PastTheEndGivesTheLastFrame) {
    VideoFrameSource source(makeNumberedVideo(dir / "v.mp4", 60));
    EXPECT_EQ(frameNumber(source.frame(10)), 59);
    EXPECT_EQ(frameNumber(source.frame(-3)), 0);
}

TEST_F(VideoFrameSourceTest, NearlyTheSameTimeComesFromTheCache) {
    VideoFrameSource source(makeNumberedVideo(dir / "v.mp4", 60));
    auto first = source.frame(0.5);
    auto again = source.frame(0.5 + 1 / 130.0);
    ASSERT_TRUE(first && again);
    EXPECT_EQ(first->data(), again->data());
}

TEST_F(VideoFrameSourceTest, ABlackFrameIsReplacedByTheLatestEarlierFrameThatIsNot) {
    VideoFrameSource source(makeNumberedVideo(dir / "v.mp4", 60, "between(N,20,35)"), true);
    EXPECT_EQ(frameNumber(source.frame(25 / 30.0)), 19);
}

TEST_F(VideoFrameSourceTest, MoreThanFifteenBlackFramesBackLeavesTheLastOneFetched) {
    VideoFrameSource source(makeNumberedVideo(dir / "v.mp4", 60, "between(N,20,35)"), true);
    EXPECT_EQ(frameNumber(source.frame(35 / 30.0)), -1);
}

TEST_F(VideoFrameSourceTest, ABlackFirstFrameStandsAndNothingIsSkippedWhenNotAsked) {
    VideoFrameSource skipping(makeNumberedVideo(dir / "v.mp4", 60, "lt(N,3)"), true);
    EXPECT_EQ(frameNumber(skipping.frame(0)), -1);
    VideoFrameSource plain(dir / "v.mp4");
    EXPECT_EQ(frameNumber(plain.frame(2 / 30.0)), -1);
}

TEST_F(VideoFrameSourceTest, CorruptDataInTheMiddleIsSteppedOver) {
    auto file = makeNumberedVideo(dir / "v.mp4", 60);
    auto bytes = readBytes(file);
    for (std::size_t i = bytes.size() * 3 / 10; i < bytes.size() * 4 / 10; i += 7) bytes[i] ^= 0x5A;
    writeBytes(file, bytes);
    VideoFrameSource source(file);
    int shown = 0;
    for (int n = 0; n < 60; ++n) shown += frameNumber(source.frame(n / 30.0)) >= 0;
    EXPECT_GT(shown, 20);
    EXPECT_EQ(frameNumber(source.frame(59 / 30.0)), 59);
}

TEST_F(VideoFrameSourceTest, StandsThePictureUprightAsTheFileAsks) {
    auto plain = makeMedia(dir / "plain.mp4", "-f lavfi -i color=c=black:s=64x48:r=30:d=0.2 -vf "
                                              "drawbox=x=0:y=0:w=16:h=16:c=white:t=fill -c:v libx264 -pix_fmt yuv420p");
    VideoFrameSource source(makeMedia(dir / "turned.mov", "-i '" + plain.string() + "' -c copy -metadata:s:v:0 rotate=90"));
    EXPECT_EQ(source.naturalWidth, 48);
    EXPECT_EQ(source.naturalHeight, 64);
    auto frame = source.frame(0);
    ASSERT_TRUE(frame);
    ASSERT_EQ(frame->width(), 48);
    EXPECT_GT(frame->row(61)[2 * 4 + 1], 200) << "the top-left square turns to the bottom left, as players show it";
    EXPECT_LT(frame->row(2)[2 * 4 + 1], 50);
}

TEST_F(VideoFrameSourceTest, AFileThatIsNotVideoIsRefusedWithASentence) {
    writeText(dir / "notes.mov", "not a movie");
    EXPECT_THROW(VideoFrameSource(dir / "notes.mov"), MediaError);
    EXPECT_THROW(VideoFrameSource(dir / "missing.mov"), MediaError);
}
