#include "compose/FramePlan.h"

#include "compose/Placement.h"
#include "motion/CameraMotion.h"
#include "motion/Layout.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace recorder {

namespace {

double aspectOf(const QSizeF& size, double otherwise) {
    return size.isEmpty() ? otherwise : size.width() / size.height();
}

bool isBubble(CameraLayout layout) {
    return layout == CameraLayout::bubbleBottomRight || layout == CameraLayout::bubbleBottomLeft ||
           layout == CameraLayout::bubbleTopRight || layout == CameraLayout::bubbleTopLeft;
}

double cornerRadiusOf(CameraLayout layout, const Project& project, const QRectF& rect, double height) {
    if (layout == CameraLayout::sideBySide) return project.style.cornerRadius * height / 1080;
    if (isBubble(layout)) return rect.width() * (project.camera.bubbleShape == BubbleShape::circle ? 0.5 : 0.18);
    return 0;
}

void planScreen(FramePlan& plan, const Project& project, const QSizeF& screen) {
    plan.drawsScreen = !screen.isEmpty() && plan.camera.screenVisible && !project.tracks.screen.hidden;
    if (!plan.drawsScreen) return;
    auto placed = Placement::fit(Placement::toQRectF(plan.camera.screenFrame), screen);
    plan.screenTransform = placed.transform;
    plan.screenRect = placed.rect;
    double perPixel = plan.height / 1080;
    plan.screenRadius = project.style.cornerRadius * perPixel;
    if (project.style.shadowOpacity > 0)
        plan.screenShadow = FramePlan::ShadowSpec{Placement::toQRectF(plan.camera.screenFrame),
                                                  project.style.shadowRadius * perPixel,
                                                  project.style.shadowOffsetY * perPixel, project.style.shadowOpacity,
                                                  plan.screenRadius};
}

void planZoom(FramePlan& plan, const Project& project, double time) {
    const ZoomSegment* segment = project.activeZoom(time);
    if (!segment) return;
    Rect current = segment->rectAt(time);
    if (current == Rect::full()) return;
    ZoomTransform map = Layout::zoomTransform(current, segment->targetRect(time), plan.camera.screenFrame, plan.width,
                                              plan.height);
    plan.zoomed = true;
    plan.zoom = QTransform(map.scale, 0, 0, map.scale, map.tx, map.ty);
    if (!(project.style.motionBlur > 0)) return;
    plan.motion = Layout::zoomMotionBlur(*segment, time, plan.camera.screenFrame, project.style.motionBlur,
                                         project.canvas.frameRate, plan.width, plan.height);
    plan.zoomBlur = plan.motion.zoomAmount > 0.4;
    plan.panBlur = plan.motion.panAmount > 0.6;
}

void planCamera(FramePlan& plan, const Project& project, const FramePlan::Pictures& pictures) {
    const CameraMotionState& state = plan.camera;
    plan.drawsCamera = !pictures.camera.isEmpty() && state.rect && state.scale > 0.005 && std::fabs(state.flipX) > 0.005;
    if (!plan.drawsCamera) return;
    QRectF rect = Placement::toQRectF(*state.rect);
    plan.cameraRect = rect;
    double from = cornerRadiusOf(state.from, project, rect, plan.height);
    double to = cornerRadiusOf(state.to, project, rect, plan.height);
    plan.cameraRadius = from + (to - from) * state.radiusMix;

    QTransform mirror;
    if (project.camera.mirrored && !pictures.cameraIsAvatar) mirror = QTransform(-1, 0, 0, 1, pictures.camera.width(), 0);
    // Filled a pixel beyond the rectangle, so that only the rounded mask
    // softens its edges, never the picture's own edge as well.
    plan.cameraTransform = mirror * Placement::fill(rect.adjusted(-1, -1, 1, 1), pictures.camera).transform;

    QPointF c = rect.center();
    // Turning counter-clockwise on the screen is a negative angle with y down.
    QTransform about;
    about.translate(c.x(), c.y());
    about.rotate(-state.rotation * 180 / std::numbers::pi);
    about.scale(state.scale * state.flipX, state.scale);
    about.translate(-c.x(), -c.y());
    plan.cameraAboutCentre = about;

    bool resting = state.to == CameraLayout::fullScreen && state.progress >= 1;
    if (!project.camera.shadow || !(state.scale > 0.2) || resting) return;
    QSizeF shrunk(rect.width() * state.scale * std::fabs(state.flipX), rect.height() * state.scale);
    double perPixel = plan.height / 1080;
    plan.cameraShadow = FramePlan::ShadowSpec{QRectF(c.x() - shrunk.width() / 2, c.y() - shrunk.height() / 2,
                                                     shrunk.width(), shrunk.height()),
                                              24 * perPixel, 10 * perPixel, 0.4, state.scale * plan.cameraRadius};
}

} // namespace

FramePlan FramePlan::make(const Project& project, double time, const Pictures& pictures, double width, double height) {
    FramePlan plan;
    plan.width = width;
    plan.height = height;
    double screenAspect = aspectOf(pictures.screen, double(project.canvas.width) / project.canvas.height);
    double cameraAspect = aspectOf(pictures.camera, 16.0 / 9.0);
    bool cameraHidden = pictures.camera.isEmpty() || project.tracks.camera.hidden;
    plan.camera = CameraMotion::state(time, width, height, cameraAspect, screenAspect, project.style.padding,
                                      project.camera, cameraHidden);
    planScreen(plan, project, pictures.screen);
    planZoom(plan, project, time);
    planCamera(plan, project, pictures);
    return plan;
}

QPointF FramePlan::zoomBlurCentre() const {
    // The focus is the map's fixed point, so it is where it was before the zoom.
    return QPointF(zoom.dx() + zoom.m11() * motion.focus.x, zoom.dy() + zoom.m22() * motion.focus.y) * 0.5;
}

double FramePlan::zoomBlurAmount() const { return std::min(motion.zoomAmount, 14.0) * 0.5; }

double FramePlan::panBlurRadius() const { return std::min(motion.panAmount, 20.0) * 0.5; }

} // namespace recorder
