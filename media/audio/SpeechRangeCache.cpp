#include "audio/SpeechRangeCache.h"

#include "audio/AudioFileReader.h"
#include "audio/SpeechDetector.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace recorder {

SpeechRangeCache& SpeechRangeCache::shared() {
    static SpeechRangeCache cache;
    return cache;
}

std::string SpeechRangeCache::key(const std::filesystem::path& file) {
    std::error_code error;
    auto modified = std::filesystem::last_write_time(file, error);
    long long seconds = 0;
    if (!error)
        seconds = std::chrono::duration_cast<std::chrono::seconds>(
                      std::chrono::file_clock::to_sys(modified).time_since_epoch())
                      .count();
    return file.string() + "|" + std::to_string(seconds);
}

std::vector<SpeechRange> SpeechRangeCache::speechRanges(const std::filesystem::path& file) {
    std::string entry = key(file);
    {
        std::lock_guard guard(lock_);
        if (auto it = entries_.find(entry); it != entries_.end()) return it->second;
    }
    std::vector<SpeechRange> ranges;
    try {
        ranges = SpeechDetector::ranges(levels(file), step);
    } catch (const AudioReadError&) {
        return {};
    }
    std::lock_guard guard(lock_);
    if (entries_.size() >= bound) entries_.clear();
    entries_[entry] = ranges;
    return ranges;
}

std::vector<float> SpeechRangeCache::levels(const std::filesystem::path& file) {
    AudioFileReader reader(file);
    int channels = reader.channels();
    int window = std::max(int(reader.sampleRate() * step), 1);
    std::vector<float> samples(std::size_t(window) * std::size_t(channels));
    std::vector<float> levels;
    while (true) {
        int count = reader.read(samples.data(), window);
        if (count == 0) break;
        double sum = 0;
        for (int i = 0; i < count; ++i) {
            double x = samples[std::size_t(i) * std::size_t(channels)];
            sum += x * x;
        }
        levels.push_back(float(std::sqrt(sum / window)));
        if (count < window) break;
    }
    return levels;
}

} // namespace recorder
