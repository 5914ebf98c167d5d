#pragma once

#include "frames/FrameImage.h"

#include <QImage>

#include <memory>

namespace recorder {

// A decoded picture as the compositor draws it: premultiplied 32-bit, with
// the 2× box-shrunk levels it may be drawn from kept beside it, made the
// first time they are needed. Copies share the pixels and the levels, so a
// frame shown again (preview, repeated export frames) shrinks only once.
class SourceImage {
public:
    // A level to sample and how its pixels map onto the picture's own.
    struct Level {
        QImage image;
        double scaleX = 1;
        double scaleY = 1;
    };

    SourceImage() = default;
    // Converted to premultiplied 32-bit when it is in another format.
    explicit SourceImage(QImage image);
    // Wraps the frame's memory without a copy.
    explicit SourceImage(const FrameImage& frame);

    bool isNull() const { return !shared_; }
    int width() const;
    int height() const;
    bool isOpaque() const;
    const QImage& image() const;

    // Below ~0.75× bilinear sampling skips pixels and fine text shimmers;
    // each halving brings the scale back above that. Area averaging holds
    // out down to 0.5× and asks for levels only below it.
    Level level(double scale, double shrinkBelow = 0.75) const;

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace recorder
