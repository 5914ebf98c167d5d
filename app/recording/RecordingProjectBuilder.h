#pragma once

#include "audio/CapturedTrack.h"
#include "events/EventLog.h"
#include "model/Project.h"
#include "model/Size.h"
#include "screen/ScreenCaptureResult.h"

#include <filesystem>
#include <optional>

namespace recorder {

class LookLibrary;

// Turns what a finished recording left in its package into the project the
// editor opens: assets aligned by their first samples, one clip, the canvas
// of the recording's shape, the look used last and zooms from the clicks.
namespace RecordingProjectBuilder {

struct Results {
    std::filesystem::path package;
    int fps = 60;
    ScreenCaptureResult screen;
    std::optional<CapturedTrack> camera;
    Size cameraPixelSize;
    std::optional<CapturedTrack> microphone;
    EventLog events;
};

// Writes "events.json" into the assets (a failure is logged and the asset
// left out) and brings in the look's pictures; the caller saves the project.
// Without a last look the first built-in background is used.
Project build(const Results& results, const LookLibrary* looks);

} // namespace RecordingProjectBuilder

} // namespace recorder
