#pragma once

#include "recording/RecordingWindows.h"

namespace recorder {

// No windows at all: the command line and tests record without them.
class HeadlessRecordingWindows : public RecordingWindows {
public:
    void showOutline(Rect) override {}
    void moveOutline(Rect) override {}
    void closeOutline() override {}
    void showHUD() override {}
    void placeHUD() override {}
    void closeHUD() override {}
    void showCameraPreview(FrameFanout&) override {}
    void closePreviews() override {}
};

} // namespace recorder
