#include "FrameNumbers.h"
#include "sources/SequentialVideoReader.h"
#include "support/TempDir.h"
#include "support/TestMedia.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;
using namespace std::chrono_literals;

namespace {

class SequentialVideoReaderTest : public ::testing::Test {
protected:
    TempDir dir;
};

using Options = SequentialVideoReader::Options;

} // namespace

TEST_F(SequentialVideoReaderTest, GivesTheLatestFrameAtOrBeforeEachTime) {
    SequentialVideoReader reader(makeNumberedVideo(dir / "v.mp4", 60), {});
    for (int n = 0; n < 60; n += 3) EXPECT_EQ(frameNumber(reader.frame(n / 30.0 + 0.01)), n);
}

TEST_F(SequentialVideoReaderTest, NeverGoesBack) {
    SequentialVideoReader reader(makeNumberedVideo(dir / "v.mp4", 60), {});
    EXPECT_EQ(frameNumber(reader.frame(1.0)), 30);
    EXPECT_EQ(frameNumber(reader.frame(0.2)), 30);
}

TEST_F(SequentialVideoReaderTest, KeepsTheLastFrameAfterTheFileEnds) {
    SequentialVideoReader reader(makeNumberedVideo(dir / "v.mp4", 60), {});
    EXPECT_EQ(frameNumber(reader.frame(5)), 59);
    EXPECT_EQ(frameNumber(reader.frame(6)), 59);
}

TEST_F(SequentialVideoReaderTest, StartsAtTheFrameInForceAtItsStartTime) {
    SequentialVideoReader reader(makeNumberedVideo(dir / "v.mp4", 60), Options{1.01, false, false});
    EXPECT_EQ(frameNumber(reader.frame(0.5)), -2) << "nothing before the start";
    EXPECT_EQ(frameNumber(reader.frame(1.01)), 30);
    EXPECT_EQ(frameNumber(reader.frame(1.1)), 33);
}

TEST_F(SequentialVideoReaderTest, SkipsABlackFirstFrame) {
    auto file = makeNumberedVideo(dir / "v.mp4", 60, "eq(N,0)");
    SequentialVideoReader plain(file, Options{0, false, true});
    EXPECT_EQ(frameNumber(plain.frame(0)), -2) << "the first frame shown is the first real one, at its own time";
    EXPECT_EQ(frameNumber(plain.frame(1 / 30.0)), 1) << "a frame counts at its own time";

    SequentialVideoReader ahead(file, Options{0, true, true});
    ahead.start();
    ASSERT_TRUE(ahead.waitUntilReady(5s));
    EXPECT_EQ(frameNumber(ahead.frame(0)), 1) << "read-ahead shows the first frame it has";
}

TEST_F(SequentialVideoReaderTest, HidesFifteenBlackFramesInARowAndShowsTheSixteenth) {
    SequentialVideoReader reader(makeNumberedVideo(dir / "v.mp4", 60, "between(N,10,25)"), Options{0, false, true});
    EXPECT_EQ(frameNumber(reader.frame(9 / 30.0)), 9);
    EXPECT_EQ(frameNumber(reader.frame(24 / 30.0)), 9) << "frames 10 to 24 are hidden";
    EXPECT_EQ(frameNumber(reader.frame(25 / 30.0)), -1) << "the sixteenth black frame plays";
    EXPECT_EQ(frameNumber(reader.frame(26 / 30.0)), 26);
}

TEST_F(SequentialVideoReaderTest, ReadAheadGivesTheSameFramesAsReadingInPlace) {
    auto file = makeNumberedVideo(dir / "v.mp4", 60);
    SequentialVideoReader reader(file, Options{0.5, true, false});
    reader.start();
    ASSERT_TRUE(reader.waitUntilReady(5s));
    for (int n = 15; n < 60; ++n) {
        // The clock runs ahead of decoding now and then; what is in force must never be later than asked.
        int shown = -2;
        for (int tries = 0; tries < 500 && shown != n; ++tries) {
            shown = frameNumber(reader.frame(n / 30.0));
            if (shown != n) std::this_thread::sleep_for(1ms);
            ASSERT_LE(shown, n);
        }
        EXPECT_EQ(shown, n);
    }
    EXPECT_EQ(frameNumber(reader.frame(10)), 59);
}

TEST_F(SequentialVideoReaderTest, StopsWhileDecodingWithoutWaitingForTheFile) {
    auto file = makeMedia(dir / "big.mp4", "-f lavfi -i testsrc2=s=1280x720:r=30:d=4 -c:v libx264 -preset ultrafast");
    for (int i = 0; i < 5; ++i) {
        SequentialVideoReader reader(file, Options{0, true, false});
        reader.start();
        std::this_thread::sleep_for(std::chrono::milliseconds(i * 7));
        reader.stop();
        EXPECT_TRUE(reader.waitUntilReady(1s));
    }
}
