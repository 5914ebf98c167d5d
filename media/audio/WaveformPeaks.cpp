#include "audio/WaveformPeaks.h"

#include "audio/AudioFileReader.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace recorder {

namespace {

std::vector<std::unique_ptr<AudioFileReader>> openStreams(const std::filesystem::path& file) {
    std::vector<std::unique_ptr<AudioFileReader>> readers;
    int count = AudioFileReader::audioStreamCount(file);
    try {
        for (int i = 0; i < count; ++i)
            readers.push_back(std::make_unique<AudioFileReader>(file, AudioFormat{WaveformPeaks::sampleRate, 1}, i));
    } catch (const AudioReadError&) {
        readers.clear();
    }
    return readers;
}

// Sums the streams' next `frames` samples; the length is the longest stream's.
int readMixed(std::vector<std::unique_ptr<AudioFileReader>>& readers, std::vector<float>& mixed, int frames) {
    std::vector<float> one(std::size_t(frames), 0.0f);
    std::fill(mixed.begin(), mixed.end(), 0.0f);
    int longest = 0;
    for (auto& reader : readers) {
        int got = reader->read(one.data(), frames);
        for (int i = 0; i < got; ++i) mixed[std::size_t(i)] += one[std::size_t(i)];
        longest = std::max(longest, got);
    }
    return longest;
}

} // namespace

WaveformPeaks WaveformPeaks::read(const std::filesystem::path& file) {
    WaveformPeaks peaks;
    auto readers = openStreams(file);
    if (readers.empty()) return peaks;
    constexpr int runsPerBlock = 50;
    std::vector<float> mixed(std::size_t(run * runsPerBlock));
    while (true) {
        int got = readMixed(readers, mixed, run * runsPerBlock);
        // Values as 16-bit samples, the form the curve was first defined on.
        for (int r = 0; r + run <= got; r += run) {
            double sum = 0;
            for (int i = r; i < r + run; ++i) {
                float sample = std::clamp(std::nearbyint(mixed[std::size_t(i)] * 32768.0f), -32768.0f, 32767.0f);
                double x = sample * 0.000030517578125;
                sum += x * x;
            }
            peaks.values.push_back(float(std::sqrt(sum / run)));
        }
        if (got < run * runsPerBlock) break; // a last run shorter than 20 ms is dropped
    }
    return peaks;
}

} // namespace recorder
