#pragma once

#include <cstddef>

namespace recorder {

// The live level of a microphone, 0 to 1: −50 dB and below read 0, 0 dB reads
// 1. A meter jumps up at once and falls back slowly, so peaks stay visible.
namespace LevelMeter {

double rms(const float* samples, std::size_t count);
double rms(const short* samples, std::size_t count);
// The reading of one buffer's rms.
float reading(double rms);
// The meter after a buffer with this reading.
float next(float present, float reading);

} // namespace LevelMeter
} // namespace recorder
