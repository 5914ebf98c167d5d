#include "compose/RoundedImage.h"

#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace recorder::RoundedImage {

double largestScale(const QTransform& m) {
    return std::max(std::hypot(m.m11(), m.m12()), std::hypot(m.m21(), m.m22()));
}

void draw(QPainter& painter, const SourceImage& image, const QTransform& imageToLayout, const QRectF& clip,
          double radius, const QTransform& layoutToTarget) {
    if (image.isNull() || clip.isEmpty()) return;
    QTransform imageToTarget = imageToLayout * layoutToTarget;
    SourceImage::Level level = image.level(largestScale(imageToTarget));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    if (radius > 0) {
        QPainterPath outline;
        outline.addRoundedRect(clip, radius, radius);
        painter.setTransform(layoutToTarget);
        painter.setClipPath(outline, Qt::IntersectClip);
    } else {
        painter.setTransform(layoutToTarget);
        painter.setClipRect(clip, Qt::IntersectClip);
    }
    painter.setTransform(QTransform::fromScale(level.scaleX, level.scaleY) * imageToTarget);
    painter.drawImage(QPointF(0, 0), level.image);
    painter.restore();
}

} // namespace recorder::RoundedImage
