#pragma once

#include "audio/SpeechRange.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace recorder {

// The speech ranges of sound files, read once per file and modification.
// Exports run off the main thread, so the table has a lock; it is never
// held while a file is read.
class SpeechRangeCache {
public:
    static SpeechRangeCache& shared();

    // Ranges in the file's own seconds; none when it can't be read.
    std::vector<SpeechRange> speechRanges(const std::filesystem::path& file);

    // The RMS of the first channel over each 50 ms of the file. A last,
    // shorter window is divided by the whole window's length like the others.
    // Throws AudioReadError.
    static std::vector<float> levels(const std::filesystem::path& file);

    static constexpr double step = 0.05;
    // Passing this many entries empties the table.
    static constexpr std::size_t bound = 256;

private:
    static std::string key(const std::filesystem::path& file);

    std::mutex lock_;
    std::map<std::string, std::vector<SpeechRange>> entries_;
};

} // namespace recorder
