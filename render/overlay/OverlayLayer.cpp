#include "overlay/OverlayLayer.h"

#include "compose/Placement.h"
#include "compose/RoundedImage.h"
#include "overlay/ShapeRenderer.h"

#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <optional>

namespace recorder {

namespace {

// An item more than this many canvases across is a damaged value; drawing
// it would only cost memory.
constexpr double largestReach = 8;

double finiteOr(double value, double fallback) { return std::isfinite(value) ? value : fallback; }

bool sensible(const QRectF& box, QSize canvas) {
    double reachX = largestReach * canvas.width(), reachY = largestReach * canvas.height();
    return std::isfinite(box.x()) && std::isfinite(box.y()) && std::isfinite(box.width()) &&
           std::isfinite(box.height()) && box.width() > 0 && box.height() > 0 && box.width() <= reachX &&
           box.height() <= reachY && std::fabs(box.x()) <= reachX && std::fabs(box.y()) <= reachY;
}

QColor colourOf(const RGBAColor& c) {
    auto unit = [](double v) { return std::isfinite(v) ? std::clamp(v, 0.0, 1.0) : 0.0; };
    return QColor::fromRgbF(float(unit(c.r)), float(unit(c.g)), float(unit(c.b)), float(unit(c.a)));
}

// About the box's centre: moved by the animation (dy downward), turned
// clockwise on screen by `rotation` degrees, scaled.
QTransform motionOf(const QRectF& box, double rotation, const ItemAnimation& motion) {
    QPointF c = box.center();
    QTransform t;
    t.translate(c.x() + motion.dx, c.y() + motion.dy);
    t.rotate(finiteOr(rotation, 0));
    t.scale(motion.scale, motion.scale);
    t.translate(-c.x(), -c.y());
    return t;
}

// Border under the picture, shadow over it: the shadow darkens the item's
// own pixels too, which is the look to keep.
void drawPieces(QPainter& painter, const SourceImage& image, const Placement::Placed& fit, double radius,
                double border, const RGBAColor& borderColor, const std::optional<Shadow>& shadow,
                const QTransform& layoutToTarget) {
    if (border > 0) {
        QPainterPath outer;
        outer.addRoundedRect(fit.rect.adjusted(-border, -border, border, border), radius + border, radius + border);
        painter.setTransform(layoutToTarget);
        painter.fillPath(outer, colourOf(borderColor));
    }
    RoundedImage::draw(painter, image, fit.transform, fit.rect, radius, layoutToTarget);
    if (shadow) {
        painter.setTransform(layoutToTarget);
        painter.drawImage(shadow->rect, shadow->image);
    }
}

} // namespace

void OverlayLayer::draw(QImage& target, const Project& project, const FrameInputs& inputs, ShadowCache& shadows) {
    auto items = project.visibleMedia(inputs.time);
    if (items.empty()) return;
    QSize canvas = target.size();
    QPainter painter(&target);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    for (const MediaItem* item : items) {
        if (item->kind == AssetKind::blur) continue;
        if (item->kind == AssetKind::shape) {
            drawShape(painter, *item, inputs.time, canvas);
            continue;
        }
        auto found = inputs.mediaImages.find(item->id);
        if (found == inputs.mediaImages.end() || found->second.isNull()) continue;
        Look look = lookOf(*item, canvas);
        ItemAnimation motion =
            ItemAnimation::at(*item, inputs.time, canvas.width(), canvas.height(), look.box.width(), look.box.height());
        drawPlaced(painter, *item, found->second, look, motion, canvas, &shadows);
    }
}

OverlayLayer::Look OverlayLayer::lookOf(const MediaItem& item, QSize canvas) {
    double W = canvas.width(), H = canvas.height();
    Look look;
    look.box = QRectF(item.frame.x * W, item.frame.y * H, item.frame.width * W, item.frame.height * H);
    look.radius = std::clamp(finiteOr(item.cornerRadius, 0) * H / 1080, 0.0, largestReach * H);
    look.shadow = item.shadow;
    look.border = std::clamp(finiteOr(item.borderWidth, 0) * H / 1080, 0.0, H);
    look.borderColor = item.borderColor;
    return look;
}

void OverlayLayer::drawShape(QPainter& painter, const MediaItem& item, double time, QSize canvas) {
    if (!item.shape) return;
    double p = ItemAnimation::drawSteps(item, time);
    if (!(p > 0)) return;
    double W = canvas.width(), H = canvas.height();
    const Rect& f = item.frame;
    QRectF frame(f.x * W, f.y * H, f.width * W, f.height * H);
    if (!std::isfinite(frame.width()) || !std::isfinite(frame.height())) return;
    // Beyond the largest raster nothing would be drawn anyway.
    int w = int(std::max(std::lround(std::clamp(frame.width(), 0.0, 1e6)), 2L));
    int h = int(std::max(std::lround(std::clamp(frame.height(), 0.0, 1e6)), 2L));
    SourceImage raster = shapeImages_.shape(*item.shape, w, h, H, p);
    if (raster.isNull()) return;
    double m = ShapeRenderer::padding(*item.shape, H);
    Look look;
    look.box = QRectF(frame.x() - m, frame.y() - m, std::max(frame.width(), 0.0) + 2 * m,
                      std::max(frame.height(), 0.0) + 2 * m);
    ItemAnimation motion = ItemAnimation::at(item, time, W, H, look.box.width(), look.box.height());
    drawPlaced(painter, item, raster, look, motion, canvas, nullptr);
}

void OverlayLayer::drawPlaced(QPainter& painter, const MediaItem& item, const SourceImage& image, const Look& look,
                              const ItemAnimation& motion, QSize canvas, ShadowCache* shadows) {
    double opacity = std::min(motion.opacity, 1.0);
    if (!sensible(look.box, canvas) || !(opacity > 0) || !(motion.scale > 0) || !std::isfinite(motion.scale) ||
        !std::isfinite(motion.dx) || !std::isfinite(motion.dy))
        return;
    Placement::Placed fit = Placement::fit(look.box, QSizeF(image.width(), image.height()));
    QTransform moved = motionOf(look.box, item.rotation, motion);
    double H = canvas.height();
    std::optional<Shadow> shadow;
    if (look.shadow && shadows) shadow = shadows->shadow(look.box, 18 * H / 1080, 8 * H / 1080, 0.45, look.radius, canvas);
    painter.save();
    // Opacity applies to the item as one picture: with a border or shadow
    // under and over it, those are flattened first.
    QRectF extent = fit.rect.adjusted(-look.border, -look.border, look.border, look.border);
    if (shadow) extent |= shadow->rect;
    extent &= moved.inverted().mapRect(QRectF(QPointF(0, 0), QSizeF(canvas))).adjusted(-2, -2, 2, 2);
    QRect area = extent.toAlignedRect();
    bool layered = opacity < 1 && (shadow || look.border > 0) && !area.isEmpty() &&
                   double(area.width()) * area.height() <= 4.0 * canvas.width() * canvas.height();
    if (!layered) {
        painter.setOpacity(opacity);
        drawPieces(painter, image, fit, look.radius, look.border, look.borderColor, shadow, moved);
    } else {
        QImage layer(area.size(), QImage::Format_ARGB32_Premultiplied);
        layer.fill(Qt::transparent);
        {
            QPainter flat(&layer);
            flat.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
            drawPieces(flat, image, fit, look.radius, look.border, look.borderColor, shadow,
                       QTransform::fromTranslate(-area.x(), -area.y()));
        }
        painter.setTransform(QTransform::fromTranslate(area.x(), area.y()) * moved);
        painter.setOpacity(opacity);
        painter.drawImage(0, 0, layer);
    }
    painter.restore();
}

} // namespace recorder
