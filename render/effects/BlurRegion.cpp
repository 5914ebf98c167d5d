#include "effects/BlurRegion.h"

#include "effects/GaussianBlur.h"
#include "effects/HalfSize.h"
#include "effects/PackedPixel.h"
#include "effects/Pixelate.h"
#include "effects/ScaledDraw.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace recorder {

namespace {

// Coordinates beyond this many pixels come from a damaged project, never
// from an edit: such a region is left out rather than clipped.
constexpr double farthest = 1e6;

constexpr double smallestDeviation = 2;

// Large blurs run on a halved copy: past a few pixels of deviation the
// fine detail a halving loses is blurred away anyway.
constexpr double smallestHalvedDeviation = 4;

bool sensible(double value) { return std::isfinite(value) && std::fabs(value) < farthest; }

// Part of a picture, sharing its pixels.
QImage view(const QImage& image, const QRect& area) {
    return QImage(image.constBits() + area.y() * image.bytesPerLine() + area.x() * 4, area.width(), area.height(),
                  image.bytesPerLine(), image.format());
}

QImage view(QImage& image, const QRect& area) {
    return QImage(image.bits() + area.y() * image.bytesPerLine() + area.x() * 4, area.width(), area.height(),
                  image.bytesPerLine(), image.format());
}

// Which picture pixel stands for a place past its edge along one axis: the
// nearest edge pixel where the stage ends there, a reflection where the
// stage goes on out of view (zoomed in).
struct Edges {
    bool reflectLow;
    bool reflectHigh;

    int pick(int c, int n) const {
        if (c < 0) c = reflectLow ? -c - 1 : 0;
        if (c >= n) c = reflectHigh ? 2 * n - 1 - c : n - 1;
        return std::clamp(c, 0, n - 1);
    }
};

// `area` of the picture, which may reach past its edges.
QImage extendedCopy(const QImage& image, const QRect& area, Edges across, Edges down) {
    QImage out(area.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < area.height(); ++y) {
        const auto* in = reinterpret_cast<const std::uint32_t*>(image.constScanLine(down.pick(area.y() + y, image.height())));
        auto* row = reinterpret_cast<std::uint32_t*>(out.scanLine(y));
        for (int x = 0; x < area.width(); ++x) row[x] = in[across.pick(area.x() + x, image.width())];
    }
    return out;
}

// A Gaussian blur of `source`, halving it first while the deviation stays
// above a few pixels, and bringing it back to its size in a new picture.
QImage blurredAtReducedSize(const QImage& source, double sigma) {
    std::vector<QImage> levels{source};
    while (sigma / 2 >= smallestHalvedDeviation && levels.back().width() > 8 && levels.back().height() > 8) {
        levels.push_back(HalfSize::shrink(levels.back()));
        sigma /= 2;
    }
    if (levels.size() == 1) levels.back() = source.copy();
    GaussianBlur::blur(levels.back(), sigma);
    for (std::size_t i = levels.size() - 1; i > 1; --i) HalfSize::expandInto(levels[i], levels[i - 1]);
    if (levels.size() == 1) return levels.front();
    QImage full(source.size(), QImage::Format_ARGB32_Premultiplied);
    HalfSize::expandInto(levels[1], full);
    return full;
}

// Every pixel times the opacity, which then draws as it is.
void fade(QImage& piece, double opacity) {
    if (opacity >= 1) return;
    auto alpha = std::uint32_t(std::lround(std::clamp(opacity, 0.0, 1.0) * 255));
    for (int y = 0; y < piece.height(); ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(piece.scanLine(y));
        for (int x = 0; x < piece.width(); ++x) row[x] = PackedPixel::multiply(row[x], alpha);
    }
}

} // namespace

std::optional<BlurRegion> BlurRegion::of(const MediaItem& item, double width, double height) {
    const Rect& f = item.frame;
    double x = f.x * width, y = f.y * height, w = f.width * width, h = f.height * height;
    if (!sensible(x) || !sensible(y) || !sensible(w) || !sensible(h) || !(w > 0) || !(h > 0)) return std::nullopt;
    // Whole pixels, rounded outwards.
    QRectF whole(std::floor(x), std::floor(y), std::ceil(x + w) - std::floor(x), std::ceil(y + h) - std::floor(y));
    if (whole.width() < 2 || whole.height() < 2) return std::nullopt;
    if (!whole.intersects(QRectF(0, 0, width, height)) || !(item.opacity > 0)) return std::nullopt;

    BlurRegion region;
    region.rect = whole;
    double strength = item.blurAmount ? std::clamp(*item.blurAmount, 0.05, 1.0) : 0.5;
    if (std::isnan(strength)) strength = 0.5;
    double perPixel = height / 1080;
    region.style = item.blurStyle == "pixelate" ? Style::pixelate : Style::gaussian;
    region.amount = region.style == Style::pixelate ? strength * 40 * perPixel + 6 : strength * 36 * perPixel + 4;
    region.cornerRadius = std::isfinite(item.cornerRadius) ? std::max(item.cornerRadius * perPixel, 0.0) : 0;
    region.opacity = std::min(item.opacity, 1.0);
    region.canvas = QSizeF(width, height);
    return region;
}

void BlurRegion::apply(QImage& target, const QTransform& stageToTarget) const {
    double scale = stageToTarget.m11();
    // Under two pixels a blur hides nothing: the region is left as it is.
    if (style == Style::gaussian && !(amount * scale >= smallestDeviation)) return;
    double radius = std::min(cornerRadius * scale, double(std::max(target.width(), target.height())));
    // Past the target by more than the corner radius, the region's edge is
    // as good as anywhere beyond: its corners stay out of sight.
    int slack = int(std::ceil(radius)) + 2;
    QRect full = stageToTarget.mapRect(rect).toAlignedRect().intersected(
        target.rect().adjusted(-slack, -slack, slack, slack));
    if (!full.intersects(target.rect())) return;
    double reach = style == Style::gaussian ? std::ceil(3 * amount * scale) : std::ceil(amount * scale);
    // The filter reads the stage around the region, as far as it reaches.
    int margin = int(std::clamp(reach, 0.0, double(std::max(target.width(), target.height()))));
    QRect around = full.adjusted(-margin, -margin, margin, margin);
    QRectF stage = stageToTarget.mapRect(QRectF(QPointF(0, 0), canvas));
    Edges across{stage.left() < -0.5, stage.right() > target.width() + 0.5};
    Edges down{stage.top() < -0.5, stage.bottom() > target.height() + 0.5};
    QImage work = target.rect().contains(around) ? view(std::as_const(target), around)
                                                 : extendedCopy(target, around, across, down);
    if (style == Style::gaussian) {
        work = blurredAtReducedSize(work, amount * scale);
    } else {
        work = work.copy();
        // Blocks start at the region's lower left corner and step from there.
        QPointF origin = stageToTarget.map(QPointF(rect.left(), rect.bottom())) - QPointF(around.topLeft());
        Pixelate::apply(work, origin, amount * scale);
    }
    QImage piece = view(work, full.translated(-around.topLeft()));
    fade(piece, opacity);
    // Whole target pixels, with the rounded corners cut softly: the region's
    // edges on the zoomed stage fall within a pixel of their exact place.
    ScaledDraw::draw(target, piece, 1, 1, full.x(), full.y(), radius);
}

} // namespace recorder
