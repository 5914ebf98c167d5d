#include "audio/WaveformPeaks.h"

#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;

namespace {

int run(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

} // namespace

TEST(WaveformPeaks, GivesFiftyValuesASecondAndDropsAShortLastRun) {
    TempDir dir;
    writeWav(dir / "one.wav", tone(440, 1, 0.5));
    writeWav(dir / "longer.wav", tone(440, 1.01, 0.5));
    EXPECT_EQ(WaveformPeaks::read(dir / "one.wav").values.size(), 50u);
    EXPECT_EQ(WaveformPeaks::read(dir / "longer.wav").values.size(), 50u);
}

TEST(WaveformPeaks, ValuesAreTheRmsOfEach20Milliseconds) {
    TempDir dir;
    writeM4a(dir / "a.m4a", joined({tone(440, 1, 0.5), silence(1), tone(440, 1, 0.1)}));
    auto values = WaveformPeaks::read(dir / "a.m4a").values;
    ASSERT_EQ(values.size(), 150u);
    EXPECT_NEAR(values[25], 0.5 / std::sqrt(2), 0.01);
    EXPECT_LT(values[75], 0.001);
    EXPECT_NEAR(values[125], 0.1 / std::sqrt(2), 0.005);
}

TEST(WaveformPeaks, MixesAllSoundTracksOfAFileIntoOneCurve) {
    TempDir dir;
    writeWav(dir / "low.wav", tone(300, 2, 0.2));
    writeWav(dir / "high.wav", joined({silence(1), tone(900, 1, 0.2)}));
    ASSERT_EQ(run("ffmpeg -v error -y -i '" + (dir / "low.wav").string() + "' -i '" + (dir / "high.wav").string() +
                  "' -map 0 -map 1 -c:a aac '" + (dir / "two.m4a").string() + "'"),
              0);
    auto values = WaveformPeaks::read(dir / "two.m4a").values;
    ASSERT_GE(values.size(), 99u);
    EXPECT_NEAR(values[25], 0.2 / std::sqrt(2), 0.01) << "only the first track sounds";
    EXPECT_NEAR(values[75], 0.2, 0.01) << "two tones of 0.2 at different pitches add to an RMS of 0.2";
}

TEST(WaveformPeaks, AreEmptyForAFileWithoutSoundOrNoFileAtAll) {
    TempDir dir;
    ASSERT_EQ(run("ffmpeg -v error -y -f lavfi -i testsrc=size=160x120:rate=10:duration=1 -c:v libx264 '" +
                  (dir / "silent.mp4").string() + "'"),
              0);
    EXPECT_TRUE(WaveformPeaks::read(dir / "silent.mp4").values.empty());
    EXPECT_TRUE(WaveformPeaks::read(dir / "missing.m4a").values.empty());
    writeText(dir / "junk.m4a", "not sound");
    EXPECT_TRUE(WaveformPeaks::read(dir / "junk.m4a").values.empty());
}
