#include "compose/Placement.h"

#include <algorithm>

namespace recorder::Placement {

namespace {

Placed centred(const QRectF& box, const QSizeF& image, double scale) {
    double w = image.width() * scale, h = image.height() * scale;
    double x = box.x() + (box.width() - w) / 2, y = box.y() + (box.height() - h) / 2;
    return {QTransform(scale, 0, 0, scale, x, y), QRectF(x, y, w, h)};
}

} // namespace

Placed fit(const QRectF& box, const QSizeF& image) {
    if (image.isEmpty()) return {};
    return centred(box, image, std::min(box.width() / image.width(), box.height() / image.height()));
}

Placed fill(const QRectF& box, const QSizeF& image) {
    if (image.isEmpty()) return {};
    Placed placed = centred(box, image, std::max(box.width() / image.width(), box.height() / image.height()));
    placed.rect = box;
    return placed;
}

} // namespace recorder::Placement
