#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace recorder;
using namespace recorder::test;

TEST(AudioFileRoundTrip, AnM4aDecodesToExactlyTheFramesWrittenAndLinesUp) {
    TempDir dir;
    // An odd length and a gap of silence to line up on.
    Samples written = joined({tone(440, 0.5, 0.5), silence(0.01), tone(440, 0.5123, 0.5)});
    writeM4a(dir / "a.m4a", written);
    Samples read = readAll(dir / "a.m4a");
    ASSERT_EQ(read.size(), written.size()) << "the priming and the last frame's padding are hidden";
    double worst = 0;
    for (std::size_t i = 2000; i + 2000 < read.size(); ++i) worst = std::max(worst, double(std::fabs(read[i] - written[i])));
    EXPECT_LT(worst, 0.05) << "sample for sample, within AAC's error";
    EXPECT_LT(rms(slice(read, 0.502, 0.508)), 0.01) << "the gap is where it was written";
    EXPECT_NEAR(AudioFileReader(dir / "a.m4a").duration(), double(written.size()) / 48000, 1e-6);
}

TEST(AudioFileReader, SeeksToTheSampleAndGivesWhatReadingThroughGives) {
    TempDir dir;
    writeM4a(dir / "a.m4a", joined({tone(300, 1, 0.4), tone(700, 1, 0.4)}));
    Samples through = readAll(dir / "a.m4a");
    AudioFileReader reader(dir / "a.m4a");
    for (double at : {1.2345, 0.0, 0.01, 1.999}) {
        reader.seek(at);
        Samples block(480);
        int got = reader.read(block.data(), 480);
        auto from = std::size_t(std::llround(at * 48000));
        ASSERT_EQ(got, int(std::min<std::size_t>(480, through.size() - from))) << at;
        double worst = 0;
        for (int i = 0; i < got; ++i) worst = std::max(worst, double(std::fabs(block[std::size_t(i)] - through[from + std::size_t(i)])));
        EXPECT_LT(worst, 0.01) << "at " << at;
    }
}

TEST(AudioFileReader, AtSpeedTwoPlaysTwiceTheFrequencyInHalfTheTime) {
    TempDir dir;
    writeM4a(dir / "a.m4a", tone(1000, 2, 0.5));
    AudioFileReader reader(dir / "a.m4a", {48000, 2});
    reader.seek(0, 2);
    Samples out(48000 * 2 * 2);
    int got = reader.read(out.data(), 48000 * 2);
    EXPECT_NEAR(got, 48000, 2);
    EXPECT_NEAR(toneFrequency(slice(channel(out, 2, 0), 0.1, 0.9)), 2000, 1);
}

TEST(AudioFileReader, ConvertsRateAndPutsAMonoVoiceInBothEarsAtFullLevel) {
    TempDir dir;
    writeWav(dir / "a.wav", tone(1000, 1, 0.5, 44100), 44100);
    Samples out = readAll(dir / "a.wav", {48000, 2});
    EXPECT_NEAR(double(out.size()) / 2, 48000, 50);
    auto left = channel(out, 2, 0), right = channel(out, 2, 1);
    EXPECT_NEAR(rms(slice(left, 0.1, 0.9)), 0.5 / std::sqrt(2), 0.005);
    EXPECT_NEAR(rms(slice(right, 0.1, 0.9)), 0.5 / std::sqrt(2), 0.005);
    EXPECT_NEAR(toneFrequency(slice(left, 0.1, 0.9)), 1000, 1);
}

TEST(AudioFileReader, RefusesAFileWithoutSoundOrThatIsntMedia) {
    TempDir dir;
    writeText(dir / "notes.m4a", "this is not sound");
    EXPECT_THROW(AudioFileReader(dir / "notes.m4a"), AudioReadError);
    std::ofstream(dir / "empty.m4a");
    EXPECT_THROW(AudioFileReader(dir / "empty.m4a"), AudioReadError);
    EXPECT_EQ(AudioFileReader::audioStreamCount(dir / "notes.m4a"), 0);
}

TEST(AudioFileReader, EndsATruncatedFileWhereItsDataEnds) {
    TempDir dir;
    writeWav(dir / "a.wav", tone(500, 4, 0.5));
    std::filesystem::resize_file(dir / "a.wav", 44 + 2 * 48000 * 2); // header + 2 s of 16-bit mono
    EXPECT_EQ(readAll(dir / "a.wav").size(), 2u * 48000);
}
