#pragma once

#include "sources/SequentialVideoReader.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace recorder {

// The screen or camera recording of an export, read forwards. Between
// clips the source time may jump: back, or far ahead, which is cheaper to
// reach by seeking than by decoding through; then a new reader starts there.
class ForwardVideoSource {
public:
    // Throws MediaError when the file can't be opened.
    ForwardVideoSource(std::filesystem::path file, bool skipsBlackFrames);

    // The latest frame at or before `at` (below 0 counts as 0).
    std::optional<FrameImage> frame(double at);

private:
    std::filesystem::path file_;
    bool skipsBlackFrames_;
    std::unique_ptr<SequentialVideoReader> reader_;
    double lastTime_ = 0;
};

} // namespace recorder
