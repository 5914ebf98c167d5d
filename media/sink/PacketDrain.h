#pragma once

#include "sink/SampleEncoder.h"

struct AVCodecContext;

namespace recorder {

// Hands every packet the encoder has ready to `emit`; `step` names the work
// in the error when the encoder fails.
void drainPackets(AVCodecContext* codec, const SampleEncoder::Emit& emit, const char* step);

} // namespace recorder
