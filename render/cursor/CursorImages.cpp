#include "cursor/CursorImages.h"

#include "compose/CacheKey.h"
#include "effects/GaussianBlur.h"

#include <QPainter>
#include <QPainterPath>

namespace recorder {

namespace {

constexpr int side = CursorImages::canvasPoints * CursorImages::pixelsPerPoint;

QColor colorOf(const RGBAColor& c, double alpha) {
    return QColor::fromRgbF(float(c.r), float(c.g), float(c.b), float(alpha));
}

QImage blankCanvas() {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

// Points to pixels, origin top left as the outlines are given.
QTransform pointScale() { return QTransform::fromScale(CursorImages::pixelsPerPoint, CursorImages::pixelsPerPoint); }

// A soft black copy of a filled shape, `blur` points across, moved down by
// `dropPoints`: what a drop shadow under that fill looks like.
void drawShadow(QPainter& painter, const QPainterPath& shape, double alpha, double dropPoints, double blur) {
    QImage shadow(side, side, QImage::Format_Alpha8);
    shadow.fill(0);
    {
        QPainter p(&shadow);
        p.setRenderHint(QPainter::Antialiasing);
        p.setTransform(QTransform::fromTranslate(0, dropPoints) * pointScale());
        p.fillPath(shape, QColor::fromRgbF(0, 0, 0, float(alpha)));
    }
    // A shadow's blur is about twice its deviation.
    GaussianBlur::blur(shadow, blur / 2 * CursorImages::pixelsPerPoint);
    painter.save();
    painter.resetTransform();
    painter.drawImage(0, 0, shadow);
    painter.restore();
}

QImage arrow() {
    QImage image = blankCanvas();
    QPainterPath path;
    path.moveTo(8, 4);
    for (auto [x, y] : {std::pair{8, 50}, {20, 39}, {28, 58}, {36, 54}, {28, 36}, {44, 36}}) path.lineTo(x, y);
    path.closeSubpath();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawShadow(painter, path, 0.5, 2, 4);
    painter.setTransform(pointScale());
    painter.fillPath(path, Qt::white);
    QPen outline(Qt::black, 2.5);
    outline.setJoinStyle(Qt::MiterJoin);
    painter.strokePath(path, outline);
    return image;
}

QImage dot(const RGBAColor& tint) {
    QImage image = blankCanvas();
    QPainterPath oval;
    oval.addEllipse(QRectF(12, 12, 40, 40));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // The shadow is cast by the fill as drawn, at its own alpha.
    drawShadow(painter, oval, 0.5 * 0.9, 0, 6);
    painter.setTransform(pointScale());
    painter.fillPath(oval, colorOf(tint, 0.9));
    return image;
}

QImage ring(const RGBAColor& tint) {
    QImage image = blankCanvas();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(pointScale());
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colorOf(tint, 1), 5));
    painter.drawEllipse(QRectF(8, 8, 48, 48));
    // A thin dark edge just outside keeps the ring visible on a light screen.
    painter.setPen(QPen(QColor::fromRgbF(0, 0, 0, 0.6f), 1));
    painter.drawEllipse(QRectF(5.5, 5.5, 53, 53));
    return image;
}

} // namespace

std::string CursorImages::key(CursorStyle style, const RGBAColor& tint) {
    return std::string(EnumNames<CursorStyle>::names[std::size_t(style)]) + "|" + CacheKey::number(tint.r) + "," +
           CacheKey::number(tint.g) + "," + CacheKey::number(tint.b);
}

QPointF CursorImages::hotSpot(CursorStyle style) {
    return style == CursorStyle::arrow ? QPointF(0.12, 0.06) : QPointF(0.5, 0.5);
}

QImage CursorImages::draw(CursorStyle style, const RGBAColor& tint) {
    switch (style) {
    case CursorStyle::arrow: return arrow();
    case CursorStyle::dot: return dot(tint);
    case CursorStyle::ring: return ring(tint);
    }
    return {};
}

const SourceImage& CursorImages::image(CursorStyle style, const std::optional<RGBAColor>& tint) {
    RGBAColor color = tint.value_or(defaultTint());
    std::string name = key(style, color);
    auto found = images_.find(name);
    if (found != images_.end()) return found->second;
    return images_.emplace(std::move(name), SourceImage(draw(style, color))).first->second;
}

} // namespace recorder
