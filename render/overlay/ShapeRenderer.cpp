#include "overlay/ShapeRenderer.h"

#include "effects/GaussianBlur.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace recorder::ShapeRenderer {

namespace {

constexpr double pi = 3.14159265358979323846;
// A head many times the stroke is a slip of the hand; past this it only
// grows the picture.
constexpr double largestHead = 20;

double headSize(const ShapeSpec& spec) {
    return std::isfinite(spec.headSize) ? std::clamp(spec.headSize, 0.0, largestHead) : 0;
}

QColor colourOf(const RGBAColor& c, double alphaScale = 1) {
    auto unit = [](double v) { return std::isfinite(v) ? std::clamp(v, 0.0, 1.0) : 0.0; };
    return QColor::fromRgbF(float(unit(c.r)), float(unit(c.g)), float(unit(c.b)), float(unit(c.a * alphaScale)));
}

const QColor dark = QColor::fromRgbF(0, 0, 0, 0.55f);

QPen roundPen(QColor colour, double width) {
    QPen pen(colour, width);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

// Start and end of an arrow or line as fractions of its box, from the top left.
std::pair<QPointF, QPointF> ends(ShapeDirection direction) {
    switch (direction) {
    case ShapeDirection::right: return {{0, 0.5}, {1, 0.5}};
    case ShapeDirection::downRight: return {{0, 0}, {1, 1}};
    case ShapeDirection::down: return {{0.5, 0}, {0.5, 1}};
    case ShapeDirection::downLeft: return {{1, 0}, {0, 1}};
    case ShapeDirection::left: return {{1, 0.5}, {0, 0.5}};
    case ShapeDirection::upLeft: return {{1, 1}, {0, 0}};
    case ShapeDirection::up: return {{0.5, 1}, {0.5, 0}};
    case ShapeDirection::upRight: return {{0, 1}, {1, 0}};
    }
    return {{0, 0.5}, {1, 0.5}};
}

void drawArrow(QPainter& painter, const ShapeSpec& spec, const QRectF& box, double k, double progress) {
    auto [from, to] = ends(spec.direction);
    QPointF start(box.x() + from.x() * box.width(), box.y() + from.y() * box.height());
    QPointF end(box.x() + to.x() * box.width(), box.y() + to.y() * box.height());
    // The shape grows from its start.
    QPointF tip = start + (end - start) * progress;
    double length = std::hypot(tip.x() - start.x(), tip.y() - start.y());
    QPointF u = length > 0 ? (tip - start) / length : QPointF(1, 0);
    double head = spec.kind == ShapeKind::arrow ? std::min(k * headSize(spec), length) : 0;
    QPolygonF triangle;
    if (head > 0) {
        QPointF base = tip - head * u;
        QPointF n(-u.y() * 0.62 * head, u.x() * 0.62 * head);
        triangle << tip << base + n << base - n;
    }
    // The shaft stops inside the head, so no round cap pokes out of the tip.
    QPainterPath shaft(start);
    shaft.lineTo(tip - 0.8 * head * u);
    painter.setBrush(Qt::NoBrush);
    if (spec.outline) {
        painter.setPen(roundPen(dark, 1.6 * k));
        painter.drawPath(shaft);
        if (head > 0) {
            painter.setPen(roundPen(dark, 0.6 * k));
            painter.setBrush(dark);
            painter.drawPolygon(triangle);
        }
    }
    QColor main = colourOf(spec.color);
    painter.setPen(roundPen(main, k));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(shaft);
    if (head > 0) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(main);
        painter.drawPolygon(triangle);
    }
}

double perimeter(ShapeKind kind, double w, double h) {
    if (kind == ShapeKind::rectangle) return 2 * (w + h);
    return pi * (1.5 * (w + h) - std::sqrt((1.5 * w + 0.5 * h) * (0.5 * w + 1.5 * h)));
}

// Dash lengths are in pixels here but in pen widths for Qt.
QPen outlinePen(QColor colour, double width, double progress, double around) {
    QPen pen = roundPen(colour, width);
    if (progress < 1) pen.setDashPattern({progress * around / width, 2 * around / width});
    return pen;
}

void drawBox(QPainter& painter, const ShapeSpec& spec, const QRectF& box, double k, double progress) {
    QPainterPath path;
    if (spec.kind == ShapeKind::rectangle) {
        double cornerRadius = std::isfinite(spec.cornerRadius) ? std::clamp(spec.cornerRadius, 0.0, 0.5) : 0;
        double r = cornerRadius * std::min(box.width(), box.height());
        path.addRoundedRect(box, r, r);
    } else {
        path.addEllipse(box);
    }
    if (spec.filled || spec.strokeless) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colourOf(spec.color, std::clamp(spec.fillOpacity, 0.0, 1.0) * progress));
        painter.drawPath(path);
    }
    if (spec.strokeless) return;
    double around = perimeter(spec.kind, box.width(), box.height());
    painter.setBrush(Qt::NoBrush);
    if (spec.outline) {
        painter.setPen(outlinePen(dark, 1.6 * k, progress, around));
        painter.drawPath(path);
    }
    painter.setPen(outlinePen(colourOf(spec.color), k, progress, around));
    painter.drawPath(path);
}

// One soft shadow under everything drawn, as if it were one layer.
void addShadow(QImage& art, double k) {
    QImage shade = art.convertToFormat(QImage::Format_Alpha8);
    // A shadow's blur value spreads about as far as a Gaussian whose deviation is half of it.
    GaussianBlur::blur(shade, (1.5 * k + 6) / 2);
    QImage out(art.size(), QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    QPainter painter(&out);
    painter.setOpacity(0.45);
    painter.drawImage(QPointF(0, 0.5 * k), shade);
    painter.setOpacity(1);
    painter.drawImage(0, 0, art);
    painter.end();
    art = out;
}

} // namespace

double strokePixels(const ShapeSpec& spec, double canvasHeight) {
    double k = spec.strokeWidth * canvasHeight;
    if (!std::isfinite(k)) return 1;
    return std::clamp(k, 1.0, std::max(canvasHeight / 2, 1.0));
}

int padding(const ShapeSpec& spec, double canvasHeight) {
    double k = strokePixels(spec, canvasHeight);
    double head = spec.kind == ShapeKind::arrow ? k * headSize(spec) : 0;
    double glow = spec.shadow ? 2 * k + 10 : 0;
    return int(std::ceil(glow + 1.5 * k + 0.7 * head));
}

QImage raster(const ShapeSpec& spec, int width, int height, double canvasHeight, double progress) {
    int m = padding(spec, canvasHeight);
    long long w = (long long)width + 2 * m, h = (long long)height + 2 * m;
    if (width < 1 || height < 1 || w > largestSide || h > largestSide || w * h > largestArea) return {};
    double k = strokePixels(spec, canvasHeight);
    QImage art(int(w), int(h), QImage::Format_ARGB32_Premultiplied);
    art.fill(Qt::transparent);
    {
        QPainter painter(&art);
        painter.setRenderHint(QPainter::Antialiasing);
        QRectF box(m, m, width, height);
        if (spec.kind == ShapeKind::arrow || spec.kind == ShapeKind::line)
            drawArrow(painter, spec, box, k, progress);
        else
            drawBox(painter, spec, box, k, progress);
    }
    if (spec.shadow) addShadow(art, k);
    return art;
}

} // namespace recorder::ShapeRenderer
