#pragma once

#include "compose/FrameRenderer.h"
#include "model/Project.h"

#include <QColor>
#include <QImage>
#include <QPainter>

#include <cmath>
#include <cstdlib>
#include <string>

namespace recorder::test {

inline SourceImage solidPicture(int width, int height, QColor color) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    return SourceImage(image);
}

// Left half one colour, right half another: tells mirrored from not.
inline SourceImage halvesPicture(int width, int height, QColor left, QColor right) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height, left);
    painter.fillRect(width / 2, 0, width - width / 2, height, right);
    return SourceImage(image);
}

// A canvas with a flat background and no shadow, so every pixel outside
// the screen is the background colour.
inline Project flatProject(int width = 1920, int height = 1080, QColor background = QColor(20, 40, 160)) {
    Project project("Test", {width, height, 60}, "1.0");
    project.style.background = {BackgroundStyle::Solid{{background.redF(), background.greenF(), background.blueF(), 1}}};
    project.style.shadowOpacity = 0;
    project.style.motionBlur = 0;
    return project;
}

inline ZoomSegment zoomSegment(double start, double end, Rect rect, double ramp) {
    ZoomSegment zoom;
    zoom.id = Uuid::random();
    zoom.start = start;
    zoom.end = end;
    zoom.rect = rect;
    zoom.inDuration = ramp;
    zoom.outDuration = ramp;
    return zoom;
}

inline QColor at(const QImage& image, double x, double y) { return image.pixelColor(int(x), int(y)); }

inline bool near(QColor a, QColor b, int tolerance = 2) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance && std::abs(a.alpha() - b.alpha()) <= tolerance;
}

inline std::string describe(QColor c) {
    return "rgba(" + std::to_string(c.red()) + ", " + std::to_string(c.green()) + ", " + std::to_string(c.blue()) + ", " +
           std::to_string(c.alpha()) + ")";
}

// Writes a frame for a person to look at when RECORDER_TEST_FRAMES names a folder.
inline void keepForLooking(const QImage& image, const char* name) {
    if (const char* folder = std::getenv("RECORDER_TEST_FRAMES")) image.save(QString(folder) + "/" + name + ".png");
}

} // namespace recorder::test
