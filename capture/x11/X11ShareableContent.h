#pragma once

#include "capture/ShareableContent.h"

#include <xcb/xcb.h>

#include <optional>
#include <vector>

namespace recorder {

class X11Connection;

// The displays (RandR monitors) and the windows a person may record: normal,
// mapped top-level windows of an application (one that names itself in
// WM_CLASS), at least 80 × 60, in front-to-back order. This application's
// own untitled windows (the HUD, the outline) are left out; its titled ones,
// like an editor, are offered.
class X11ShareableContent {
public:
    static ShareableContent load(X11Connection& x);
    // One window as listed, whether or not the filters above offer it; with
    // onScreenOnly, none for a window that isn't mapped.
    static std::optional<ShareableContent::Window> describe(X11Connection& x, xcb_window_t window,
                                                            bool onScreenOnly = false);

private:
    static std::vector<xcb_window_t> topLevelWindows(X11Connection& x);
    static bool isOffered(X11Connection& x, xcb_window_t window, const ShareableContent::Window& described);
};

} // namespace recorder
