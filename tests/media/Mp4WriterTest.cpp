#include "export/ExportError.h"
#include "export/Mp4Writer.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <random>
#include <vector>

namespace recorder {
namespace {

// What FFmpeg's own demuxer finds in a file.
struct FileFacts {
    std::int64_t videoPackets = 0;
    double videoSeconds = 0;
    int profile = -1;
    AVCodecID videoCodec = AV_CODEC_ID_NONE;
    std::uint32_t videoTag = 0;
    int width = 0;
    int height = 0;
    std::int64_t videoBytes = 0;
    std::vector<double> keyFrameTimes;
    bool hasAudio = false;
    AVCodecID audioCodec = AV_CODEC_ID_NONE;
    int sampleRate = 0;
    int channels = 0;
    double audioSeconds = 0;
    // Where each audio packet starts, against the picture decoded just before it.
    double largestAudioLead = 0;
};

FileFacts inspect(const std::filesystem::path& file) {
    FileFacts facts;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, file.c_str(), nullptr, nullptr) < 0) return facts;
    avformat_find_stream_info(format, nullptr);
    int video = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    int audio = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (video >= 0) {
        AVStream* s = format->streams[video];
        facts.profile = s->codecpar->profile;
        facts.videoCodec = s->codecpar->codec_id;
        facts.videoTag = s->codecpar->codec_tag;
        facts.width = s->codecpar->width;
        facts.height = s->codecpar->height;
        facts.videoSeconds = double(s->duration) * av_q2d(s->time_base);
    }
    if (audio >= 0) {
        AVStream* s = format->streams[audio];
        facts.hasAudio = true;
        facts.audioCodec = s->codecpar->codec_id;
        facts.sampleRate = s->codecpar->sample_rate;
        facts.channels = s->codecpar->ch_layout.nb_channels;
        facts.audioSeconds = double(s->duration) * av_q2d(s->time_base);
    }
    AVPacket* packet = av_packet_alloc();
    double lastVideoDts = 0;
    while (av_read_frame(format, packet) >= 0) {
        AVStream* s = format->streams[packet->stream_index];
        if (packet->stream_index == video) {
            ++facts.videoPackets;
            facts.videoBytes += packet->size;
            lastVideoDts = double(packet->dts) * av_q2d(s->time_base);
            if (packet->flags & AV_PKT_FLAG_KEY) facts.keyFrameTimes.push_back(double(packet->pts) * av_q2d(s->time_base));
        } else if (packet->stream_index == audio) {
            double start = double(packet->pts) * av_q2d(s->time_base);
            facts.largestAudioLead = std::max(facts.largestAudioLead, start - lastVideoDts);
        }
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    avformat_close_input(&format);
    return facts;
}

// Fast start: the index (moov) comes before the media data (mdat).
bool indexIsAtTheFront(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto moov = bytes.find("moov");
    auto mdat = bytes.find("mdat");
    return moov != std::string::npos && mdat != std::string::npos && moov < mdat;
}

ExportSettings settingsOf(ExportFormat format, const std::filesystem::path& out, int width, int height, int fps,
                          double seconds) {
    ExportSettings s;
    s.format = format;
    s.outputURL = out;
    s.width = width;
    s.height = height;
    s.fps = fps;
    s.decision.width = width;
    s.decision.height = height;
    s.decision.durationSeconds = seconds;
    return s;
}

// A bar sweeping across a grey field: content an encoder has to follow.
void writeMovingBar(Mp4Writer& writer, const ExportSettings& s, std::int64_t frames) {
    std::vector<std::uint8_t> bgra(std::size_t(s.width) * s.height * 4);
    for (std::int64_t i = 0; i < frames; ++i) {
        for (int y = 0; y < s.height; ++y)
            for (int x = 0; x < s.width; ++x) {
                std::uint8_t* p = &bgra[(std::size_t(y) * s.width + x) * 4];
                bool bar = std::abs(x - int(i * 7 % s.width)) < 12;
                p[0] = bar ? 240 : 90;
                p[1] = bar ? 40 : 100;
                p[2] = bar ? 30 : std::uint8_t(y * 255 / s.height);
                p[3] = 255;
            }
        writer.appendPicture(bgra.data(), s.width * 4);
    }
}

// Fine random detail scrolling sideways, like a page of text in motion: the
// encoder can follow it but must spend bits on every picture.
void writeScrollingDetail(Mp4Writer& writer, const ExportSettings& s, std::int64_t frames) {
    int textureWidth = s.width * 4;
    std::vector<std::uint8_t> texture(std::size_t(textureWidth) * s.height);
    std::mt19937 random(7);
    for (auto& value : texture) value = std::uint8_t(random());
    std::vector<std::uint8_t> bgra(std::size_t(s.width) * s.height * 4);
    for (std::int64_t i = 0; i < frames; ++i) {
        int offset = int(i * 5 % (textureWidth - s.width));
        for (int y = 0; y < s.height; ++y)
            for (int x = 0; x < s.width; ++x) {
                std::uint8_t v = texture[std::size_t(y) * textureWidth + x + offset];
                std::uint8_t* p = &bgra[(std::size_t(y) * s.width + x) * 4];
                p[0] = v;
                p[1] = std::uint8_t(255 - v);
                p[2] = std::uint8_t(v / 2 + 60);
                p[3] = 255;
            }
        writer.appendPicture(bgra.data(), s.width * 4);
    }
}

Mp4Writer::AudioSource sine(double hertz) {
    return [hertz](std::int64_t start, float* out, int frames) {
        for (int i = 0; i < frames; ++i) {
            float v = 0.3f * float(std::sin(2 * M_PI * hertz * double(start + i) / 48000));
            out[2 * i] = v;
            out[2 * i + 1] = v;
        }
    };
}

TEST(Mp4WriterTest, H264_HasEveryFrameAndEndsOnTheLastOne) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4H264, dir / "out.mp4", 320, 180, 30, 10.99);
    ASSERT_EQ(s.frameCount(), 329);
    Mp4Writer writer(s, s.frameCount());
    writeMovingBar(writer, s, s.frameCount());
    writer.finish();

    FileFacts facts = inspect(s.outputURL);
    EXPECT_EQ(facts.videoCodec, AV_CODEC_ID_H264);
    EXPECT_EQ(facts.profile, FF_PROFILE_H264_HIGH);
    EXPECT_EQ(facts.videoPackets, 329);
    EXPECT_NEAR(facts.videoSeconds, 10.9667, 0.0005);
    EXPECT_EQ(facts.width, 320);
    EXPECT_EQ(facts.height, 180);
    EXPECT_FALSE(facts.hasAudio);
    EXPECT_TRUE(indexIsAtTheFront(s.outputURL));
}

TEST(Mp4WriterTest, H264_HasAKeyFrameAtLeastEveryTwoSeconds) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4H264, dir / "out.mp4", 320, 180, 30, 7);
    Mp4Writer writer(s, s.frameCount());
    writeMovingBar(writer, s, s.frameCount());
    writer.finish();

    FileFacts facts = inspect(s.outputURL);
    ASSERT_FALSE(facts.keyFrameTimes.empty());
    EXPECT_DOUBLE_EQ(facts.keyFrameTimes.front(), 0);
    double previous = 0;
    for (double t : facts.keyFrameTimes) {
        EXPECT_LE(t - previous, 2.0 + 1e-9);
        previous = t;
    }
    EXPECT_LE(7.0 - previous, 2.0 + 1e-9);
}

TEST(Mp4WriterTest, Hevc_IsTaggedHvc1) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4HEVC, dir / "out.mp4", 320, 180, 30, 1);
    Mp4Writer writer(s, s.frameCount());
    writeMovingBar(writer, s, s.frameCount());
    writer.finish();

    FileFacts facts = inspect(s.outputURL);
    EXPECT_EQ(facts.videoCodec, AV_CODEC_ID_HEVC);
    EXPECT_EQ(facts.videoTag, MKTAG('h', 'v', 'c', '1'));
    EXPECT_EQ(facts.videoPackets, 30);
}

TEST(Mp4WriterTest, Sound_IsAacStereoCutWhereThePictureEnds) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4H264, dir / "out.mp4", 320, 180, 30, 4.5);
    std::int64_t lastAsked = 0;
    auto tone = sine(440);
    Mp4Writer writer(s, s.frameCount(), [&](std::int64_t start, float* out, int frames) {
        lastAsked = start + frames;
        tone(start, out, frames);
    });
    writeMovingBar(writer, s, s.frameCount());
    writer.finish();

    EXPECT_EQ(lastAsked, 4 * 48000 + 24000);
    FileFacts facts = inspect(s.outputURL);
    ASSERT_TRUE(facts.hasAudio);
    EXPECT_EQ(facts.audioCodec, AV_CODEC_ID_AAC);
    EXPECT_EQ(facts.sampleRate, 48000);
    EXPECT_EQ(facts.channels, 2);
    EXPECT_LE(facts.audioSeconds, facts.videoSeconds + 1e-6);
    EXPECT_GT(facts.audioSeconds, facts.videoSeconds - 0.03);
    EXPECT_LE(facts.largestAudioLead, 1.1);
}

TEST(Mp4WriterTest, AverageBitRate_IsWithinFifteenPercentOfTheFormulaOnABusyClip) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4H264, dir / "out.mp4", 640, 360, 30, 4);
    Mp4Writer writer(s, s.frameCount());
    writeScrollingDetail(writer, s, s.frameCount());
    writer.finish();

    FileFacts facts = inspect(s.outputURL);
    double bitsPerSecond = double(facts.videoBytes) * 8 / 4;
    EXPECT_NEAR(bitsPerSecond, double(s.averageBitRate()), 0.15 * double(s.averageBitRate()));
}

TEST(Mp4WriterTest, Open_ReplacesAnExistingFile) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4H264, dir / "out.mp4", 160, 90, 30, 1);
    std::ofstream(s.outputURL) << "not a movie";
    Mp4Writer writer(s, s.frameCount());
    writeMovingBar(writer, s, s.frameCount());
    writer.finish();
    EXPECT_EQ(inspect(s.outputURL).videoPackets, 30);
}

TEST(Mp4WriterTest, Open_InAMissingFolderFailsNamingThePath) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4H264, dir / "missing" / "out.mp4", 160, 90, 30, 1);
    try {
        Mp4Writer writer(s, s.frameCount());
        FAIL() << "opened a file in a folder that does not exist";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find(s.outputURL.string()), std::string::npos) << e.what();
    }
}

TEST(Mp4WriterTest, NoFrames_FailsWithNothingToExport) {
    test::TempDir dir;
    auto s = settingsOf(ExportFormat::mp4H264, dir / "out.mp4", 160, 90, 30, 0.02);
    try {
        Mp4Writer writer(s, s.frameCount());
        FAIL();
    } catch (const ExportError& e) {
        EXPECT_STREQ(e.what(), "There is nothing to export.");
    }
    EXPECT_FALSE(std::filesystem::exists(s.outputURL));
}

} // namespace
} // namespace recorder
