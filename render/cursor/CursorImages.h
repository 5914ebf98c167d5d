#pragma once

#include "compose/SourceImage.h"
#include "model/CursorSettings.h"

#include <QPointF>

#include <map>
#include <string>

namespace recorder {

// The renderer's `cursorImages`: one picture of each cursor style and tint,
// drawn once from the style's outline. The key is the style name, "|", then
// the tint's red, green and blue; few keys ever exist, so the map is never
// emptied.
class CursorImages {
public:
    // Drawn on a 64-point canvas at this many pixels a point: the largest
    // cursor (size 10 under a 3× zoom) still shrinks when it is drawn.
    static constexpr int pixelsPerPoint = 4;
    static constexpr int canvasPoints = 64;

    static RGBAColor defaultTint() { return {0.588, 0.902, 0.631, 1}; }
    static std::string key(CursorStyle style, const RGBAColor& tint);
    // Where the pointer's tip is, as fractions of the picture from its top left.
    static QPointF hotSpot(CursorStyle style);
    // The picture itself, made afresh.
    static QImage draw(CursorStyle style, const RGBAColor& tint);

    // The cached picture, made on first use. A missing tint is the default one.
    const SourceImage& image(CursorStyle style, const std::optional<RGBAColor>& tint);

    std::size_t size() const { return images_.size(); }
    bool contains(const std::string& key) const { return images_.count(key) > 0; }

private:
    std::map<std::string, SourceImage> images_;
};

} // namespace recorder
