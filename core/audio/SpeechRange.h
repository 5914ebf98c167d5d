#pragma once

namespace recorder {

// A stretch of speech, in seconds.
struct SpeechRange {
    double start = 0;
    double end = 0;

    bool operator==(const SpeechRange&) const = default;
};

} // namespace recorder
