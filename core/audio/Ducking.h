#pragma once

#include "audio/SpeechRange.h"
#include "audio/VolumePoint.h"
#include "model/MediaItem.h"
#include "model/Project.h"

#include <vector>

// Pulls music down while someone speaks: speech ranges and an item's fades
// become its volume curve.
namespace recorder::Ducking {

// The duck is complete this long before speech begins.
inline constexpr double lead = 0.15;
// Time to fall.
inline constexpr double attack = 0.3;
// Time to rise after speech ends.
inline constexpr double release = 0.9;

// The gain at `time`: 1 where nothing ducks, `amount` inside speech. Where
// ramps overlap the smallest wins, so they never multiply.
double factor(double time, const std::vector<SpeechRange>& ranges, double amount);

// The knots of the item's volume curve, to be joined by linear ramps: every
// corner of the curve stands on one of them.
std::vector<VolumePoint> points(const MediaItem& item, const std::vector<SpeechRange>& ranges, double amount);

// Speech found in a microphone file, moved onto the output timeline: the file
// starts `startOffset` seconds into the recording and plays through the
// project's clips. Speech in cut-out stretches disappears.
std::vector<SpeechRange> onOutputTimeline(const std::vector<SpeechRange>& fileRanges, const Project& project,
                                          double startOffset);

} // namespace recorder::Ducking
