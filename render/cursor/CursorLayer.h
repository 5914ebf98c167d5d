#pragma once

#include "cursor/ClickRipple.h"
#include "events/EventLog.h"
#include "model/CursorSettings.h"

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QTransform>

#include <optional>
#include <vector>

namespace recorder {

class CursorImages;
class SmoothedLogCache;
struct Project;

// The drawn pointer of one frame and the click ripples under it: part of
// the stage, above the screen, so they zoom with it. Stage pixels, origin
// top left.
struct CursorLayer {
    // The height of the cursor's 64-point canvas on the stage: 22 pixels at
    // size 1 on a screen drawn 1920 wide, so padding makes it smaller.
    double cursorHeight = 0;
    // The smoothed pointer on the stage, where the hot spot goes.
    QPointF position;
    // 0.9 while a button is held down, else 1.
    double pressScale = 1;
    CursorStyle style = CursorStyle::arrow;
    std::optional<RGBAColor> tint;
    std::vector<ClickRipple> ripples;

    // What to draw at a project time, or nothing: the cursor is off, the
    // time is outside the clips, or the pointer has rested longer than the
    // project allows. `screenFrame` is where the screen is on the stage.
    static std::optional<CursorLayer> make(const Project& project, double time, const Rect& screenFrame,
                                           const EventLog& log, SmoothedLogCache& smoothedLogs);
    // The same at a source time, with the log already smoothed.
    static std::optional<CursorLayer> atSourceTime(const CursorSettings& settings, const EventLog& log,
                                                   const EventLog& smoothed, double sourceTime,
                                                   const Rect& screenFrame);

    // The cursor picture's square on the stage, with its hot spot on `position`.
    QRectF imageRect() const;
    // Ripples in the order of their clicks, then the cursor.
    void draw(QImage& target, const QTransform& stageToTarget, CursorImages& images) const;
};

} // namespace recorder
