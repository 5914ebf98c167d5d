#pragma once

#include "audio/SpeechRange.h"

#include <span>
#include <vector>

// Finds speech in a microphone track from its loudness alone.
namespace recorder::SpeechDetector {

// `levels` are RMS values `step` seconds apart. Sorted, non-overlapping.
std::vector<SpeechRange> ranges(std::span<const float> levels, double step);

} // namespace recorder::SpeechDetector
