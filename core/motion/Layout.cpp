#include "motion/Layout.h"

#include "model/TimeOrder.h"

#include <algorithm>
#include <cmath>

namespace recorder::Layout {

namespace {

// The anchor along one axis: where the target's edge sits within the range
// the zoomed canvas can slide, so that no edge of the canvas ever shows.
double anchor(double targetEdge, double frameSize, double frameOrigin, double range) {
    if (!(range > 1e-9)) return 0.5;
    return clampOrLow((targetEdge * frameSize + frameOrigin) / range, 0, 1);
}

Rect fitted(double areaWidth, double areaHeight, double screenAspect) {
    double w = areaWidth;
    double h = areaWidth / screenAspect;
    if (areaHeight < h) {
        h = areaHeight;
        w = areaHeight * screenAspect;
    }
    return {0, 0, w, h};
}

bool isBubble(CameraLayout layout) {
    return layout == CameraLayout::bubbleBottomRight || layout == CameraLayout::bubbleBottomLeft ||
           layout == CameraLayout::bubbleTopRight || layout == CameraLayout::bubbleTopLeft;
}

} // namespace

ZoomTransform zoomTransform(const Rect& current, const Rect& target, const Rect& screenFrame, double canvasWidth,
                            double canvasHeight) {
    double fullScale = 1 / std::max(target.width, 0.01);
    double ax = anchor(target.x, screenFrame.width, screenFrame.x, canvasWidth - canvasWidth / fullScale);
    double ay = anchor(target.y, screenFrame.height, screenFrame.y, canvasHeight - canvasHeight / fullScale);
    double scale = current.width <= 0.01 ? 100 : 1 / current.width;
    return {scale, -(scale - 1) * ax * canvasWidth, -(scale - 1) * ay * canvasHeight};
}

Point zoomFocus(double scale, double tx, double ty, double canvasWidth, double canvasHeight) {
    if (std::fabs(scale - 1) > 1e-9) return {tx / (1 - scale), ty / (1 - scale)};
    return {canvasWidth * 0.5, canvasHeight * 0.5};
}

ZoomMotionBlur zoomMotionBlur(const ZoomSegment& zoom, double at, const Rect& screenFrame, double motionBlur,
                              int frameRate, double canvasWidth, double canvasHeight) {
    if (!(motionBlur > 0)) return {};
    // A low frame rate never widens the look-ahead beyond 1/24 s.
    double step = 1.0 / std::max(frameRate, 24);
    double next = std::min(at + step, zoom.end);
    auto map = [&](double t) {
        return zoomTransform(zoom.rectAt(t), zoom.targetRect(t), screenFrame, canvasWidth, canvasHeight);
    };
    ZoomTransform a = map(at);
    ZoomTransform b = map(next);
    Point focus = zoomFocus(a.scale, a.tx, a.ty, canvasWidth, canvasHeight);
    double ds = b.scale - a.scale;
    double dx = (b.tx - a.tx) + ds * focus.x;
    double dy = (b.ty - a.ty) + ds * focus.y;
    return {motionBlur * (std::fabs(ds) / a.scale) * canvasHeight * 0.35, motionBlur * std::hypot(dx, dy), dx, dy,
            focus};
}

double cameraMargin(double canvasWidth, double canvasHeight) { return std::min(canvasWidth, canvasHeight) * 0.03; }

std::optional<Rect> cameraRect(CameraLayout layout, double canvasWidth, double canvasHeight, double bubbleSize,
                               double cameraAspect, double margin) {
    if (layout == CameraLayout::hidden) return std::nullopt;
    if (isBubble(layout)) {
        double s = clampOrLow(bubbleSize, 0.08, 0.6) * canvasHeight;
        bool left = layout == CameraLayout::bubbleBottomLeft || layout == CameraLayout::bubbleTopLeft;
        bool top = layout == CameraLayout::bubbleTopRight || layout == CameraLayout::bubbleTopLeft;
        return Rect{left ? margin : canvasWidth - s - margin, top ? margin : canvasHeight - s - margin, s, s};
    }
    if (layout == CameraLayout::sideBySide) {
        double w = canvasWidth * 0.32;
        double h = w / cameraAspect;
        return Rect{canvasWidth - w - margin, (canvasHeight - h) / 2, w, h};
    }
    // fullScreen fills the canvas and overflows it.
    double w = canvasWidth;
    double h = canvasWidth / cameraAspect;
    if (h < canvasHeight) {
        h = canvasHeight;
        w = canvasHeight * cameraAspect;
    }
    return Rect{(canvasWidth - w) / 2, (canvasHeight - h) / 2, w, h};
}

Rect screenFrame(CameraLayout layout, double canvasWidth, double canvasHeight, double screenAspect, double padding) {
    double p = clampOrLow(padding, 0, 0.45);
    // Beside the camera the screen keeps the area left of it.
    double areaWidth = layout == CameraLayout::sideBySide
                           ? canvasWidth - canvasWidth * 0.32 - std::min(canvasWidth, canvasHeight) * 0.03
                           : canvasWidth;
    double q = layout == CameraLayout::sideBySide ? p * std::min(areaWidth, canvasHeight)
                                                  : std::min(canvasWidth, canvasHeight) * p;
    Rect frame = fitted(areaWidth - 2 * q, canvasHeight - 2 * q, screenAspect);
    frame.x = (areaWidth - frame.width) / 2;
    frame.y = (canvasHeight - frame.height) / 2;
    return frame;
}

} // namespace recorder::Layout
