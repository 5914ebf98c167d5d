#include "motion/FrameGeometry.h"

#include "motion/CameraMotion.h"
#include "motion/Layout.h"

#include <cmath>

namespace recorder {

namespace {

std::optional<double> aspectOf(const Asset* asset) {
    if (!asset || !asset->pixelSize) return std::nullopt;
    double aspect = asset->pixelSize->width / asset->pixelSize->height;
    if (!std::isfinite(aspect) || !(aspect > 0)) return std::nullopt;
    return aspect;
}

} // namespace

double FrameGeometry::screenAspect(const Project& project) {
    return aspectOf(project.asset(AssetKind::screen))
        .value_or(double(project.canvas.width) / double(project.canvas.height));
}

double FrameGeometry::cameraAspect(const Project& project) {
    return aspectOf(project.asset(AssetKind::camera)).value_or(16.0 / 9.0);
}

FrameGeometry FrameGeometry::at(const Project& project, double time, double canvasWidth, double canvasHeight) {
    FrameGeometry g;
    g.time = time;
    g.canvasWidth = canvasWidth;
    g.canvasHeight = canvasHeight;
    g.source = project.sourceTime(time);
    bool cameraHidden = !project.hasCamera() || project.tracks.camera.hidden;
    g.camera = CameraMotion::state(time, canvasWidth, canvasHeight, cameraAspect(project), screenAspect(project),
                                   project.style.padding, project.camera, cameraHidden);

    const ZoomSegment* zoom = project.activeZoom(time);
    if (!zoom) return g;
    Rect rect = zoom->rectAt(time);
    if (rect == Rect::full()) return g;
    FrameZoom z{zoom->id, rect, zoom->targetRect(time), {}, {}, {}};
    z.transform = Layout::zoomTransform(z.rect, z.target, g.camera.screenFrame, canvasWidth, canvasHeight);
    z.focus = Layout::zoomFocus(z.transform.scale, z.transform.tx, z.transform.ty, canvasWidth, canvasHeight);
    z.motion = Layout::zoomMotionBlur(*zoom, time, g.camera.screenFrame, project.style.motionBlur,
                                      project.canvas.frameRate, canvasWidth, canvasHeight);
    g.zoom = z;
    return g;
}

} // namespace recorder
