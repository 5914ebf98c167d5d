#include "import/VideoFileInfo.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace recorder {

namespace {

// A cover picture in a sound file is a "video" stream of one frame.
AVStream* pictureStream(AVFormatContext* format) {
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        AVStream* stream = format->streams[i];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !(stream->disposition & AV_DISPOSITION_ATTACHED_PIC))
            return stream;
    }
    return nullptr;
}

AVStream* soundStream(AVFormatContext* format) {
    int index = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    return index < 0 ? nullptr : format->streams[index];
}

double seconds(std::int64_t value, AVRational base) { return value == AV_NOPTS_VALUE ? 0 : double(value) * av_q2d(base); }

} // namespace

std::optional<VideoFileInfo> VideoFileInfo::read(const std::filesystem::path& file) {
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, file.c_str(), nullptr, nullptr) < 0) return std::nullopt;
    if (avformat_find_stream_info(format, nullptr) < 0) {
        avformat_close_input(&format);
        return std::nullopt;
    }
    VideoFileInfo info;
    AVStream* video = pictureStream(format);
    AVStream* sound = soundStream(format);
    info.hasVideo = video != nullptr;
    info.hasSound = sound != nullptr;
    if (format->duration != AV_NOPTS_VALUE) info.duration = double(format->duration) / AV_TIME_BASE;
    if (video) {
        if (video->duration != AV_NOPTS_VALUE && video->duration > 0) info.duration = seconds(video->duration, video->time_base);
        AVRational aspect = av_guess_sample_aspect_ratio(format, video, nullptr);
        double widthScale = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1;
        info.pixelSize = {video->codecpar->width * widthScale, double(video->codecpar->height)};
        AVRational rate = av_guess_frame_rate(format, video, nullptr);
        if (rate.num > 0 && rate.den > 0) info.frameRate = av_q2d(rate);
        if (sound) info.soundStartOffset = seconds(sound->start_time, sound->time_base) - seconds(video->start_time, video->time_base);
    }
    avformat_close_input(&format);
    return info;
}

} // namespace recorder
