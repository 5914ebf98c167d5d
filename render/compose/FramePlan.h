#pragma once

#include "model/Project.h"
#include "motion/CameraMotionState.h"
#include "motion/ZoomMotionBlur.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

#include <optional>

namespace recorder {

// The arithmetic of one frame, before anything is drawn: where the screen
// and the camera go, the zoom and the motion blur. Canvas pixels, origin
// top left.
struct FramePlan {
    struct ShadowSpec {
        QRectF rect;
        double radius = 0;
        double offsetY = 0;
        double opacity = 0;
        double cornerRadius = 0;
    };

    // What the frame has to work with; sizes are empty for a missing picture.
    struct Pictures {
        QSizeF screen;
        QSizeF camera;
        bool cameraIsAvatar = false;
    };

    double width = 0;
    double height = 0;
    CameraMotionState camera;

    bool drawsScreen = false;
    // From the screen picture's pixels to the stage, and the rectangle it fills.
    QTransform screenTransform;
    QRectF screenRect;
    double screenRadius = 0;
    std::optional<ShadowSpec> screenShadow;

    // The whole stage's map; the identity without a zoom.
    QTransform zoom;
    bool zoomed = false;
    ZoomMotionBlur motion;
    bool zoomBlur = false;
    bool panBlur = false;

    bool drawsCamera = false;
    // The camera picture's pixels to layout space (fill and mirror), the
    // rectangle it fills there, and layout space to the canvas (the
    // transition's scale, rotation and flip about the centre).
    QTransform cameraTransform;
    QRectF cameraRect;
    double cameraRadius = 0;
    QTransform cameraAboutCentre;
    std::optional<ShadowSpec> cameraShadow;

    static FramePlan make(const Project& project, double time, const Pictures& pictures, double width, double height);

    bool blursMotion() const { return zoomBlur || panBlur; }
    // The centre of the zoom blur and the pan direction, in half-size pixels.
    QPointF zoomBlurCentre() const;
    double zoomBlurAmount() const;
    double panBlurRadius() const;
};

} // namespace recorder
