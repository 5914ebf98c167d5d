#include "compose/ShadowCache.h"

#include "compose/CacheKey.h"
#include "effects/GaussianBlur.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace recorder {

namespace {

std::string keyOf(const QRectF& r, double radius, double offsetY, double opacity, double cornerRadius, QSize canvas) {
    return CacheKey::join({std::to_string(int(r.x())) + "," + std::to_string(int(r.y())) + "," +
                               std::to_string(int(r.width())) + "," + std::to_string(int(r.height())),
                           CacheKey::number(radius), CacheKey::number(offsetY), CacheKey::number(opacity),
                           CacheKey::number(cornerRadius),
                           std::to_string(canvas.width()) + "x" + std::to_string(canvas.height())},
                          "|");
}

Shadow drawShadow(const QRectF& rect, double radius, double offsetY, double opacity, double cornerRadius) {
    QRectF shape = rect.translated(0, offsetY);
    double margin = 3 * std::max(radius, 0.0);
    QRectF area = shape.adjusted(-margin, -margin, margin, margin);
    QImage quarter(int(std::ceil(area.width() / 4)) + 1, int(std::ceil(area.height() / 4)) + 1, QImage::Format_Alpha8);
    quarter.fill(0);
    {
        QPainter painter(&quarter);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor::fromRgbF(0, 0, 0, float(std::clamp(opacity, 0.0, 1.0))));
        QPainterPath outline;
        QRectF small((shape.x() - area.x()) / 4, (shape.y() - area.y()) / 4, shape.width() / 4, shape.height() / 4);
        double r = std::max(cornerRadius, 0.0) / 4;
        outline.addRoundedRect(small, r, r);
        painter.drawPath(outline);
    }
    GaussianBlur::blur(quarter, 0.25 * radius);
    return {quarter, QRectF(area.topLeft(), QSizeF(quarter.width() * 4.0, quarter.height() * 4.0))};
}

} // namespace

Shadow ShadowCache::shadow(const QRectF& rect, double radius, double offsetY, double opacity, double cornerRadius,
                           QSize canvasSize) {
    std::string key = keyOf(rect, radius, offsetY, opacity, cornerRadius, canvasSize);
    auto found = shadows_.find(key);
    if (found != shadows_.end()) return found->second;
    if (shadows_.size() > bound) shadows_.clear();
    Shadow made = drawShadow(rect, radius, offsetY, opacity, cornerRadius);
    shadows_.emplace(std::move(key), made);
    return made;
}

} // namespace recorder
