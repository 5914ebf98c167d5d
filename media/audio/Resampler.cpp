#include "audio/Resampler.h"

#include "audio/FFmpegText.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <stdexcept>

namespace recorder {

Resampler::Resampler(int fromRate, int toRate) {
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    int status = swr_alloc_set_opts2(&context_, &mono, AV_SAMPLE_FMT_FLT, toRate, &mono, AV_SAMPLE_FMT_FLT, fromRate, 0,
                                     nullptr);
    if (status >= 0) status = swr_init(context_);
    if (status < 0) {
        swr_free(&context_);
        throw std::runtime_error("resampling from " + std::to_string(fromRate) + " to " + std::to_string(toRate) +
                                 " Hz failed: " + ffmpegErrorText(status));
    }
}

Resampler::~Resampler() { swr_free(&context_); }

void Resampler::process(std::span<const float> samples, std::vector<float>& out) {
    if (!samples.empty()) convert(samples.data(), int(samples.size()), out);
}

void Resampler::flush(std::vector<float>& out) { convert(nullptr, 0, out); }

void Resampler::convert(const float* samples, int count, std::vector<float>& out) {
    int room = swr_get_out_samples(context_, count);
    if (room <= 0) return;
    std::size_t end = out.size();
    out.resize(end + std::size_t(room));
    auto* output = reinterpret_cast<std::uint8_t*>(out.data() + end);
    const auto* input = reinterpret_cast<const std::uint8_t*>(samples);
    int made = swr_convert(context_, &output, room, samples ? &input : nullptr, count);
    out.resize(end + std::size_t(std::max(made, 0)));
}

} // namespace recorder
