#pragma once

#include "model/MediaItem.h"
#include "model/Project.h"
#include "timeline/TrackSpan.h"

#include <optional>
#include <vector>

// Where the stretches of a sound file play on the output timeline.
namespace recorder::AudioSpans {

// A recording's sound file (microphone, system audio) through the clips. The
// file begins `startOffset` seconds into the recording and lasts
// `fileDuration`; each clip contributes the part of it the file covers, at
// the clip's speed. Clips the file doesn't reach still take their time.
std::vector<TrackSpan> ofRecording(const Project& project, double startOffset, double fileDuration);

// A media item's sound: from its `sourceOffset`, as long as the item lasts
// or the file has sound left, whichever ends first. None when nothing plays.
std::optional<TrackSpan> ofMediaItem(const MediaItem& item, double fileDuration);

} // namespace recorder::AudioSpans
