#include "audio/SpeechDetector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace recorder::SpeechDetector {

namespace {

constexpr double mergeGap = 0.7;
constexpr double shortest = 0.25;

std::vector<double> decibels(std::span<const float> levels) {
    std::vector<double> db(levels.size());
    std::transform(levels.begin(), levels.end(), db.begin(),
                   [](float level) { return 20 * std::log10(std::max(double(level), 0.000001)); });
    return db;
}

std::vector<SpeechRange> runsAtOrAbove(const std::vector<double>& db, double threshold, double step) {
    std::vector<SpeechRange> runs;
    std::size_t n = db.size();
    for (std::size_t i = 0; i < n;) {
        if (db[i] < threshold) {
            ++i;
            continue;
        }
        std::size_t j = i;
        while (j + 1 < n && db[j + 1] >= threshold) ++j;
        runs.push_back({double(i) * step, double(j + 1) * step});
        i = j + 1;
    }
    return runs;
}

std::vector<SpeechRange> merged(const std::vector<SpeechRange>& runs) {
    std::vector<SpeechRange> out;
    for (const auto& run : runs) {
        if (!out.empty() && run.start - out.back().end < mergeGap)
            out.back().end = std::max(out.back().end, run.end);
        else
            out.push_back(run);
    }
    return out;
}

} // namespace

std::vector<SpeechRange> ranges(std::span<const float> levels, double step) {
    if (levels.size() < 5 || !(step > 0)) return {};
    std::vector<double> db = decibels(levels);
    std::vector<double> sorted = db;
    std::sort(sorted.begin(), sorted.end());
    double last = double(sorted.size() - 1);
    double noiseFloor = sorted[std::size_t(last * 0.1)];
    double speechLevel = sorted[std::size_t(last * 0.95)];
    // A file whose loud part isn't well above its quiet part has no usable speech.
    if (speechLevel - noiseFloor < 12 || !(speechLevel > -50)) return {};

    double threshold = std::max(noiseFloor + 8, speechLevel - 22);
    std::vector<SpeechRange> out;
    for (const auto& range : merged(runsAtOrAbove(db, threshold, step)))
        if (range.end - range.start >= shortest) out.push_back(range);
    return out;
}

} // namespace recorder::SpeechDetector
