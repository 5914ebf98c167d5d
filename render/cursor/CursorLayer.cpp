#include "cursor/CursorLayer.h"

#include "cursor/CursorImages.h"
#include "cursor/SmoothedLogCache.h"
#include "effects/ScaledDraw.h"
#include "model/Project.h"

#include <algorithm>
#include <cmath>

namespace recorder {

namespace {

// The last sample at or before a time, if any; samples are in time order.
const CursorSample* lastSampleAtOrBefore(const std::vector<CursorSample>& samples, double time) {
    auto after = std::upper_bound(samples.begin(), samples.end(), time,
                                  [](double t, const CursorSample& s) { return t < s.time; });
    return after == samples.begin() ? nullptr : &*(after - 1);
}

bool restsTooLong(const CursorSettings& settings, const EventLog& log, double sourceTime) {
    if (!(settings.hideWhenIdleAfter > 0)) return false;
    const CursorSample* last = lastSampleAtOrBefore(log.samples, sourceTime);
    return last && sourceTime - last->time > settings.hideWhenIdleAfter;
}

// Whether the latest press or release at or before the time was a press, of
// any button.
bool isPressed(const std::vector<ClickEvent>& clicks, double sourceTime) {
    const ClickEvent* latest = nullptr;
    for (const auto& click : clicks)
        if (click.time <= sourceTime && (!latest || click.time >= latest->time)) latest = &click;
    return latest && latest->isDown;
}

} // namespace

std::optional<CursorLayer> CursorLayer::make(const Project& project, double time, const Rect& screenFrame,
                                             const EventLog& log, SmoothedLogCache& smoothedLogs) {
    if (!project.cursor.visible) return std::nullopt;
    auto source = project.sourceTime(time);
    if (!source) return std::nullopt;
    const EventLog& smoothed = smoothedLogs.smoothed(log, project.cursor.smoothing);
    return atSourceTime(project.cursor, log, smoothed, source->time, screenFrame);
}

std::optional<CursorLayer> CursorLayer::atSourceTime(const CursorSettings& settings, const EventLog& log,
                                                     const EventLog& smoothed, double sourceTime,
                                                     const Rect& screenFrame) {
    if (!settings.visible || !std::isfinite(sourceTime) || restsTooLong(settings, log, sourceTime)) return std::nullopt;
    CursorLayer layer;
    layer.cursorHeight = screenFrame.width / 1920 * settings.size * 22;
    Point p = smoothed.position(sourceTime);
    layer.position = QPointF(screenFrame.x + screenFrame.width * p.x, screenFrame.y + screenFrame.height * p.y);
    layer.pressScale = isPressed(log.clicks, sourceTime) ? 0.9 : 1;
    layer.style = settings.style;
    layer.tint = settings.tint;
    if (settings.clickRipples)
        layer.ripples = ClickRipple::live(log.clicks, sourceTime, screenFrame, layer.cursorHeight,
                                          settings.clickHighlightColor);
    return layer;
}

QRectF CursorLayer::imageRect() const {
    double side = pressScale * cursorHeight;
    QPointF hot = CursorImages::hotSpot(style);
    return QRectF(position.x() - hot.x() * side, position.y() - hot.y() * side, side, side);
}

void CursorLayer::draw(QImage& target, const QTransform& stageToTarget, CursorImages& images) const {
    for (const auto& ripple : ripples) ripple.draw(target, stageToTarget);
    QRectF rect = stageToTarget.mapRect(imageRect());
    // Smaller than a pixel, or larger than the whole frame many times over:
    // only a damaged project asks for that.
    double largest = 4.0 * std::max(target.width(), target.height());
    if (!(rect.width() > 0.5 && rect.width() < largest) || !std::isfinite(rect.x()) || !std::isfinite(rect.y())) return;
    if (!rect.intersects(QRectF(target.rect()))) return;
    const SourceImage& picture = images.image(style, tint);
    double scale = rect.width() / picture.width();
    // Area averaging from a halved level keeps the outline's weight at
    // every size; bilinear sampling from the big raster would thin it.
    SourceImage::Level level = picture.level(scale, 0.5);
    ScaledDraw::draw(target, level.image, scale * level.scaleX, scale * level.scaleY, rect.x(), rect.y(), 0);
}

} // namespace recorder
