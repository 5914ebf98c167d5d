#include "compose/FrameRenderer.h"

#include "compose/CacheKey.h"
#include "compose/RoundedImage.h"
#include "cursor/CursorLayer.h"
#include "effects/BlurRegion.h"
#include "effects/HalfSize.h"
#include "effects/MotionBlur.h"
#include "effects/ScaledDraw.h"

#include <QPainter>

#include <cmath>

namespace recorder {

namespace {

// A request whose shape differs from the canvas's by more than this is
// letterboxed rather than stretched.
constexpr double aspectTolerance = 0.003;

QSizeF sizeOf(const SourceImage& image) { return image.isNull() ? QSizeF() : QSizeF(image.width(), image.height()); }

// The pixels wholly inside `r`.
QRect inside(const QRectF& r) {
    int left = int(std::ceil(r.left())), top = int(std::ceil(r.top()));
    return QRect(left, top, int(std::floor(r.right())) - left, int(std::floor(r.bottom())) - top);
}

} // namespace

QImage FrameRenderer::render(const Project& project, const FrameInputs& inputs, const EventLog* eventLog, int width,
                             int height) {
    markRects_ = {};
    if (width < 1 || height < 1) return {};
    QImage frame(width, height, QImage::Format_ARGB32_Premultiplied);
    double aspect = double(project.canvas.width) / project.canvas.height;
    double requested = double(width) / height;
    if (!std::isfinite(aspect) || !(aspect > 0) || std::fabs(requested - aspect) <= aspectTolerance) {
        renderInto(frame, project, inputs, eventLog);
        return frame;
    }
    int w = width, h = int(std::lround(width / aspect));
    if (aspect < requested) {
        h = height;
        w = int(std::lround(aspect * height));
    }
    {
        QPainter painter(&frame);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(0, 0, background(project, width, height));
    }
    // Whole pixels: half a pixel of offset would soften the entire picture.
    if (w >= 1 && h >= 1) {
        QImage picture = view(frame, QRect((width - w) / 2, (height - h) / 2, w, h));
        renderInto(picture, project, inputs, eventLog);
    }
    return frame;
}

void FrameRenderer::renderInto(QImage& target, const Project& project, const FrameInputs& inputs,
                               const EventLog* eventLog) {
    FramePlan::Pictures pictures{sizeOf(inputs.screen), sizeOf(inputs.camera), inputs.cameraIsAvatar};
    FramePlan plan = FramePlan::make(project, inputs.time, pictures, target.width(), target.height());
    if (plan.blursMotion()) {
        // The blurred stage is all that shows, so it is drawn at half size
        // to begin with rather than drawn whole and shrunk.
        QImage half((target.width() + 1) / 2, (target.height() + 1) / 2, QImage::Format_ARGB32_Premultiplied);
        drawStage(half, plan.zoom * QTransform::fromScale(0.5, 0.5), plan, project, inputs, eventLog);
        if (plan.zoomBlur)
            MotionBlur::zoom(half, plan.zoomBlurCentre(), plan.zoomBlurAmount(), 0.35 * plan.height * 0.5);
        if (plan.panBlur) MotionBlur::directional(half, plan.panBlurRadius(), QPointF(plan.motion.dx, plan.motion.dy));
        HalfSize::expandInto(half, target);
    } else {
        drawStage(target, plan.zoom, plan, project, inputs, eventLog);
    }
    // The camera sits above the zoom: the bubble stays put while the screen
    // zooms behind it. Media items, captions and the marks follow it.
    drawCamera(target, plan, inputs);
    overlayLayer_.draw(target, project, inputs, shadowCache_);
}

// Background, shadow and screen, then what lives on the screen (cursor,
// click ripples, blur regions), all through the zoom in one resampling.
void FrameRenderer::drawStage(QImage& target, const QTransform& stageToTarget, const FramePlan& plan,
                              const Project& project, const FrameInputs& inputs, const EventLog* eventLog) {
    {
        QPainter painter(&target);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.setClipRegion(outsideScreen(plan, inputs.screen.isOpaque(), stageToTarget, target.size()));
        if (!stageToTarget.isIdentity()) {
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.setTransform(stageToTarget);
        }
        painter.drawImage(0, 0, backdrop(project, plan));
    }
    if (plan.drawsScreen) drawScreen(target, plan, inputs.screen, stageToTarget);
    drawCursor(target, stageToTarget, plan, project, inputs.time, eventLog);
    drawBlurRegions(target, stageToTarget, plan, project, inputs.time);
}

// Only on a drawn screen: the pointer belongs to the recording.
void FrameRenderer::drawCursor(QImage& target, const QTransform& stageToTarget, const FramePlan& plan,
                               const Project& project, double time, const EventLog* eventLog) {
    if (!plan.drawsScreen || !eventLog) return;
    auto layer = CursorLayer::make(project, time, plan.camera.screenFrame, *eventLog, smoothedLog_);
    if (layer) layer->draw(target, stageToTarget, cursorImages_);
}

// Each region filters the stage as it stands, cursor included, before the
// zoom: drawn on the zoomed stage, scaled along.
void FrameRenderer::drawBlurRegions(QImage& target, const QTransform& stageToTarget, const FramePlan& plan,
                                    const Project& project, double time) {
    for (const MediaItem* item : project.visibleMedia(time)) {
        if (item->kind != AssetKind::blur) continue;
        if (auto region = BlurRegion::of(*item, plan.width, plan.height)) region->apply(target, stageToTarget);
    }
}

// Placement and zoom are both a scale and a shift, so the screen is drawn
// through their product with area averaging, in one resampling.
void FrameRenderer::drawScreen(QImage& target, const FramePlan& plan, const SourceImage& screen,
                               const QTransform& stageToTarget) {
    QTransform map = plan.screenTransform * stageToTarget;
    SourceImage::Level level = screen.level(map.m11(), 0.5);
    ScaledDraw::draw(target, level.image, map.m11() * level.scaleX, map.m22() * level.scaleY, map.dx(), map.dy(),
                     plan.screenRadius * stageToTarget.m11());
}

// Under an opaque screen nothing needs drawing: the hidden part of the
// backdrop is most of the canvas.
QRegion FrameRenderer::outsideScreen(const FramePlan& plan, bool screenIsOpaque, const QTransform& stageToTarget,
                                     QSize target) {
    QRegion all(QRect(QPoint(0, 0), target));
    if (!plan.drawsScreen || !screenIsOpaque) return all;
    double r = std::min(plan.screenRadius, std::min(plan.screenRect.width(), plan.screenRect.height()) / 2);
    r = std::max(r, 0.0);
    // One more pixel in: the screen's soft edge needs the backdrop under it.
    QRect across = inside(stageToTarget.mapRect(plan.screenRect.adjusted(0, r, 0, -r))).adjusted(1, 1, -1, -1);
    QRect down = inside(stageToTarget.mapRect(plan.screenRect.adjusted(r, 0, -r, 0))).adjusted(1, 1, -1, -1);
    return all.subtracted(QRegion(across)).subtracted(QRegion(down));
}

QImage FrameRenderer::backdrop(const Project& project, const FramePlan& plan) {
    int width = int(plan.width), height = int(plan.height);
    QImage back = background(project, width, height);
    if (!plan.drawsScreen || !plan.screenShadow) return back;
    const auto& s = *plan.screenShadow;
    std::string key = CacheKey::join(
        {BackgroundCache::description(project.style.background), std::to_string(width) + "x" + std::to_string(height),
         CacheKey::number(s.rect.x()), CacheKey::number(s.rect.y()), CacheKey::number(s.rect.width()),
         CacheKey::number(s.rect.height()), CacheKey::number(s.radius), CacheKey::number(s.offsetY),
         CacheKey::number(s.opacity), CacheKey::number(s.cornerRadius)},
        "|");
    if (key == backdropKey_) return backdrop_;
    QImage made = back.copy();
    {
        QPainter painter(&made);
        drawShadow(painter, s, made.size());
    }
    backdropKey_ = std::move(key);
    backdrop_ = made;
    return made;
}

QImage FrameRenderer::background(const Project& project, int width, int height) {
    const auto& style = project.style.background;
    const SourceImage& picture = std::holds_alternative<BackgroundStyle::Image>(style.value)              ? backgroundImage_
                                 : std::holds_alternative<BackgroundStyle::BlurredWallpaper>(style.value) ? wallpaperImage_
                                                                                                          : SourceImage();
    return backgroundCache_.background(style, width, height, picture);
}

void FrameRenderer::drawCamera(QImage& target, const FramePlan& plan, const FrameInputs& inputs) {
    if (!plan.drawsCamera) return;
    QPainter painter(&target);
    if (plan.cameraShadow) drawShadow(painter, *plan.cameraShadow, target.size());
    RoundedImage::draw(painter, inputs.camera, plan.cameraTransform, plan.cameraRect, plan.cameraRadius,
                       plan.cameraAboutCentre);
}

void FrameRenderer::drawShadow(QPainter& painter, const FramePlan::ShadowSpec& spec, QSize canvas) {
    Shadow shadow = shadowCache_.shadow(spec.rect, spec.radius, spec.offsetY, spec.opacity, spec.cornerRadius, canvas);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(shadow.rect, shadow.image);
    painter.restore();
}

QImage FrameRenderer::view(QImage& image, const QRect& area) {
    return QImage(image.bits() + area.y() * image.bytesPerLine() + area.x() * 4, area.width(), area.height(),
                  image.bytesPerLine(), image.format());
}

} // namespace recorder
