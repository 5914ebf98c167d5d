#pragma once

#include <QImage>
#include <QRectF>
#include <QSize>

#include <map>
#include <string>

namespace recorder {

// A soft drop shadow: drawn at a quarter of the size and blurred there,
// then drawn 4× larger at `rect`, canvas pixels.
struct Shadow {
    QImage image;
    QRectF rect;
};

// Shadows by their exact geometry: a still frame's shadows are made once.
class ShadowCache {
public:
    // The shadow of a rounded rectangle (canvas pixels, origin top left),
    // moved down by `offsetY`, black at `opacity`, blurred by `radius`.
    Shadow shadow(const QRectF& rect, double radius, double offsetY, double opacity, double cornerRadius,
                  QSize canvasSize);

    std::size_t size() const { return shadows_.size(); }

    static constexpr std::size_t bound = 64;

private:
    std::map<std::string, Shadow> shadows_;
};

} // namespace recorder
