#include "import/SoundExtractor.h"

#include "audio/AacFileWriter.h"
#include "audio/AudioFileReader.h"
#include "audio/FFmpegText.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <array>
#include <vector>

namespace recorder::SoundExtractor {

namespace {

// Owns the two contexts of a remux so every way out closes them.
struct Remux {
    AVFormatContext* input = nullptr;
    AVFormatContext* output = nullptr;
    AVPacket* packet = av_packet_alloc();

    ~Remux() {
        av_packet_free(&packet);
        if (output && output->pb) avio_closep(&output->pb);
        avformat_free_context(output);
        avformat_close_input(&input);
    }
};

void checkWrite(int status) {
    if (status < 0) throw AudioWriteError(ffmpegErrorText(status));
}

bool isAac(const std::filesystem::path& movie) {
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, movie.c_str(), nullptr, nullptr) < 0) return false;
    bool aac = false;
    if (avformat_find_stream_info(format, nullptr) >= 0) {
        int index = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
        aac = index >= 0 && format->streams[index]->codecpar->codec_id == AV_CODEC_ID_AAC;
    }
    avformat_close_input(&format);
    return aac;
}

void copyAac(const std::filesystem::path& movie, const std::filesystem::path& destination) {
    Remux remux;
    int status = avformat_open_input(&remux.input, movie.c_str(), nullptr, nullptr);
    if (status < 0 || avformat_find_stream_info(remux.input, nullptr) < 0) throw AudioReadError(ffmpegErrorText(status));
    int index = av_find_best_stream(remux.input, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) throw NoSoundError();
    AVStream* source = remux.input->streams[index];

    checkWrite(avformat_alloc_output_context2(&remux.output, nullptr, "ipod", destination.c_str()));
    AVStream* target = avformat_new_stream(remux.output, nullptr);
    if (!target) throw AudioWriteError("no memory for the stream");
    checkWrite(avcodec_parameters_copy(target->codecpar, source->codecpar));
    target->codecpar->codec_tag = 0;
    target->time_base = source->time_base;
    checkWrite(avio_open(&remux.output->pb, destination.c_str(), AVIO_FLAG_WRITE));
    AVDictionary* options = nullptr;
    av_dict_set_int(&options, "movie_timescale", source->codecpar->sample_rate, 0);
    status = avformat_write_header(remux.output, &options);
    av_dict_free(&options);
    checkWrite(status);

    std::int64_t start = source->start_time == AV_NOPTS_VALUE ? 0 : source->start_time;
    while (av_read_frame(remux.input, remux.packet) >= 0) {
        int written = 0;
        if (remux.packet->stream_index == index) {
            if (remux.packet->pts != AV_NOPTS_VALUE) remux.packet->pts -= start;
            if (remux.packet->dts != AV_NOPTS_VALUE) remux.packet->dts -= start;
            av_packet_rescale_ts(remux.packet, source->time_base, target->time_base);
            remux.packet->stream_index = 0;
            remux.packet->pos = -1;
            written = av_interleaved_write_frame(remux.output, remux.packet);
        }
        av_packet_unref(remux.packet);
        checkWrite(written);
    }
    checkWrite(av_write_trailer(remux.output));
}

void transcode(const std::filesystem::path& movie, const std::filesystem::path& destination) {
    constexpr std::array aacRates{96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000};
    AudioFileReader probe(movie);
    int rate = probe.fileSampleRate();
    if (std::find(aacRates.begin(), aacRates.end(), rate) == aacRates.end()) rate = 48000;
    int channels = std::min(probe.fileChannels(), 2);
    AudioFileReader reader(movie, AudioFormat{rate, channels});
    AacFileWriter writer(destination, rate, channels, channels == 1 ? 128000 : 192000);
    std::vector<float> block(4096 * std::size_t(channels));
    while (int count = reader.read(block.data(), 4096)) writer.write(block.data(), count);
    writer.finish();
}

} // namespace

void extract(const std::filesystem::path& movie, const std::filesystem::path& destination) {
    if (isAac(movie))
        copyAac(movie, destination);
    else
        transcode(movie, destination);
}

} // namespace recorder::SoundExtractor
