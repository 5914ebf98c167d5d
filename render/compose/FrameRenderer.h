#pragma once

#include "compose/BackgroundCache.h"
#include "compose/FrameInputs.h"
#include "compose/FramePlan.h"
#include "compose/ShadowCache.h"
#include "cursor/CursorImages.h"
#include "cursor/SmoothedLogCache.h"
#include "events/EventLog.h"
#include "model/Project.h"
#include "overlay/OverlayLayer.h"

#include <QImage>
#include <QRegion>

#include <optional>
#include <string>

namespace recorder {

// Composes one output frame of a project at one project time, the same way
// for the preview and the export; each of those owns its own renderer and
// caches. Not synchronised: one thread at a time.
class FrameRenderer {
public:
    // Where the two marks landed in the last frame, normalised, origin top left.
    struct MarkRects {
        std::optional<Rect> product;
        std::optional<Rect> custom;
    };

    // Always a picture of width by height; what can't be drawn is left out.
    // Sizes below 1 pixel give a null picture.
    QImage render(const Project& project, const FrameInputs& inputs, const EventLog* eventLog, int width, int height);

    // The loaded file of a `blurredWallpaper` or an `image` background;
    // the owner sets one, clears the other and drops the cache when the
    // project's background style changes.
    void setWallpaperImage(SourceImage image) { wallpaperImage_ = std::move(image); }
    void setBackgroundImage(SourceImage image) { backgroundImage_ = std::move(image); }
    void dropBackgroundCache() {
        backgroundCache_.clear();
        backdropKey_.clear();
    }

    const MarkRects& markRects() const { return markRects_; }

private:
    void renderInto(QImage& target, const Project& project, const FrameInputs& inputs, const EventLog* eventLog);
    void drawStage(QImage& target, const QTransform& stageToTarget, const FramePlan& plan, const Project& project,
                   const FrameInputs& inputs, const EventLog* eventLog);
    QImage backdrop(const Project& project, const FramePlan& plan);
    QImage background(const Project& project, int width, int height);
    void drawCamera(QImage& target, const FramePlan& plan, const FrameInputs& inputs);
    void drawShadow(QPainter& painter, const FramePlan::ShadowSpec& spec, QSize canvas);
    void drawScreen(QImage& target, const FramePlan& plan, const SourceImage& screen, const QTransform& stageToTarget);
    void drawCursor(QImage& target, const QTransform& stageToTarget, const FramePlan& plan, const Project& project,
                    double time, const EventLog* eventLog);
    static void drawBlurRegions(QImage& target, const QTransform& stageToTarget, const FramePlan& plan,
                                const Project& project, double time);
    static QRegion outsideScreen(const FramePlan& plan, bool screenIsOpaque, const QTransform& stageToTarget,
                                 QSize target);
    static QImage view(QImage& image, const QRect& area);

    BackgroundCache backgroundCache_;
    SourceImage wallpaperImage_;
    SourceImage backgroundImage_;
    ShadowCache shadowCache_;
    // Media items, text and shapes over the camera; holds `shapeImages`.
    OverlayLayer overlayLayer_;
    // The background with the screen's shadow on it: the stage's first
    // layer, the same for every frame while nothing moves.
    std::string backdropKey_;
    QImage backdrop_;
    MarkRects markRects_;
    CursorImages cursorImages_;
    SmoothedLogCache smoothedLog_;
};

} // namespace recorder
