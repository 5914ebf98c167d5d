#pragma once

#include "compose/FrameRenderer.h"
#include "model/Project.h"

#include <QGuiApplication>
#include <QImage>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace recorder::test {

// Fonts need a QGuiApplication; headless runs use the offscreen platform,
// as recorder-cli does. It is never destroyed: at exit Qt's own statics
// may already be gone, and tearing it down after them crashes.
inline void ensureGui() {
    if (QCoreApplication::instance()) return;
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static int argc = 1;
    static char name[] = "render_tests";
    static char* argv[] = {name, nullptr};
    new QGuiApplication(argc, argv);
}

// Pictures of overlays, kept under the build folder for a person to look at.
inline std::filesystem::path overlayPictures() {
    auto folder = std::filesystem::canonical("/proc/self/exe").parent_path().parent_path() / "test-output" / "overlay";
    std::filesystem::create_directories(folder);
    return folder;
}

inline void keepPicture(const QImage& image, const std::string& name) {
    image.save(QString::fromStdString((overlayPictures() / (name + ".png")).string()));
}

inline MediaItem overlayItem(AssetKind kind, Rect frame, double start = 0, double end = 10) {
    MediaItem item;
    item.id = Uuid::random();
    item.assetID = Uuid::random();
    item.kind = kind;
    item.start = start;
    item.end = end;
    item.frame = frame;
    item.animationDuration = 0;
    return item;
}

inline MediaItem shapeItem(ShapeSpec spec, Rect frame, double start = 0, double end = 10) {
    MediaItem item = overlayItem(AssetKind::shape, frame, start, end);
    item.shape = spec;
    return item;
}

// Counts pixels in `area` for which `test` holds.
template <class Test>
int countPixels(const QImage& image, QRect area, Test test) {
    int count = 0;
    area &= image.rect();
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (test(image.pixelColor(x, y))) ++count;
    return count;
}

} // namespace recorder::test
