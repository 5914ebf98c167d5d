#include "compose/BackgroundCache.h"

#include "compose/Placement.h"
#include "compose/RoundedImage.h"
#include "effects/GaussianBlur.h"

#include <QLinearGradient>
#include <QPainter>

#include <cmath>
#include <numbers>

namespace recorder {

namespace {

QColor opaque(const RGBAColor& c) { return QColor::fromRgbF(float(c.r), float(c.g), float(c.b), 1.f); }

// What shows when a picture background's file is missing.
const QColor missingPicture = QColor::fromRgbF(0.1f, 0.1f, 0.12f);

QImage filled(int width, int height, const QColor& color) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    return image;
}

// The two points in top-origin pixels: the first colour up and to the right
// at 135°, as the angle turns counter-clockwise on the screen.
QImage gradient(const BackgroundStyle::Gradient& g, int width, int height) {
    double a = g.angle * std::numbers::pi / 180;
    double cx = std::cos(a) * width * 0.5, sy = std::sin(a) * height * 0.5;
    QLinearGradient fill(QPointF(width / 2.0 - cx, height / 2.0 - sy), QPointF(width / 2.0 + cx, height / 2.0 + sy));
    fill.setColorAt(0, opaque(g.from));
    fill.setColorAt(1, opaque(g.to));
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(image.rect(), fill);
    return image;
}

QImage filledWith(const SourceImage& picture, int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    QPainter painter(&image);
    QRectF canvas(0, 0, width, height);
    auto placed = Placement::fill(canvas, QSizeF(picture.width(), picture.height()));
    RoundedImage::draw(painter, picture, placed.transform, canvas, 0, QTransform());
    return image;
}

// A wide blur is as good made small and drawn back up, and far cheaper.
QImage blurredWallpaper(const SourceImage& picture, double sigma, int width, int height) {
    double shrink = sigma > 8 ? 8 / sigma : 1;
    int w = std::max(1, int(std::ceil(width * shrink))), h = std::max(1, int(std::ceil(height * shrink)));
    QImage small = filledWith(picture, w, h);
    GaussianBlur::blur(small, sigma * shrink);
    if (shrink == 1) return small;
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QRectF(0, 0, width, height), small);
    return image;
}

template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

} // namespace

std::string BackgroundCache::description(const BackgroundStyle& style) { return style.toJson().dump(); }

QImage BackgroundCache::background(const BackgroundStyle& style, int width, int height, const SourceImage& picture) {
    std::string key = description(style) + "-" + std::to_string(width) + "x" + std::to_string(height);
    if (key == key_) return image_;
    image_ = std::visit(Overloaded{
                            [&](const BackgroundStyle::Solid& s) { return filled(width, height, opaque(s.color)); },
                            [&](const BackgroundStyle::Gradient& g) { return gradient(g, width, height); },
                            [&](const BackgroundStyle::Image&) {
                                return picture.isNull() ? filled(width, height, missingPicture)
                                                        : filledWith(picture, width, height);
                            },
                            [&](const BackgroundStyle::BlurredWallpaper& w) {
                                return picture.isNull() ? filled(width, height, missingPicture)
                                                        : blurredWallpaper(picture, w.blurRadius * height / 1080,
                                                                           width, height);
                            },
                        },
                        style.value);
    key_ = std::move(key);
    return image_;
}

void BackgroundCache::clear() {
    key_.clear();
    image_ = QImage();
}

} // namespace recorder
