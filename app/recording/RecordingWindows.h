#pragma once

#include "model/Rect.h"

namespace recorder {

class FrameFanout;

// The floating things of a running recording: the outline around a window
// or area, the control bar, the camera picture. The session only says when
// they come and go; the desktop application draws them, a headless run has
// none. Main thread only.
class RecordingWindows {
public:
    virtual ~RecordingWindows() = default;

    // The region in desktop points, top-left coordinates.
    virtual void showOutline(Rect region) = 0;
    virtual void moveOutline(Rect region) = 0;
    virtual void closeOutline() = 0;

    virtual void showHUD() = 0;
    // After the recorded region moved.
    virtual void placeHUD() = 0;
    virtual void closeHUD() = 0;

    virtual void showCameraPreview(FrameFanout& frames) = 0;
    virtual void closePreviews() = 0;
};

} // namespace recorder
