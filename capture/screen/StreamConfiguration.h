#pragma once

#include "model/Rect.h"

#include <optional>

namespace recorder {

// How a screen stream delivers pictures: even pixel sizes, at most fps a
// second, without the pointer (it is drawn later from the event log).
struct StreamConfiguration {
    int width = 0;
    int height = 0;
    // In pixels relative to the display's top-left corner; the whole display
    // when there is none.
    std::optional<Rect> sourceRect;
    int fps = 60;
    int queueDepth = 8;
    bool showsCursor = false;

    bool operator==(const StreamConfiguration&) const = default;
};

} // namespace recorder
