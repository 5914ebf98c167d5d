#include "ActivityChart.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <cstdio>

namespace {
constexpr int pixelsPerSample = 6;
}

ActivityChart::ActivityChart(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(220);
    ticker_.setTimerType(Qt::PreciseTimer);
    ticker_.setInterval(16);
    connect(&ticker_, &QTimer::timeout, this, [this] {
        ++step_;
        update();
    });
}

void ActivityChart::run() {
    ticker_.start();
    counter_.setInterval(1000);
    connect(&counter_, &QTimer::timeout, this, [this] {
        std::printf("painted %ld\n", painted_);
        std::fflush(stdout);
    });
    counter_.start();
}

// A made-up but steady series: the same index always gives the same value.
double ActivityChart::sample(long index) const {
    double x = double(index);
    return 0.5 + 0.25 * std::sin(x * 0.11) + 0.15 * std::sin(x * 0.37 + 1.3) + 0.08 * std::sin(x * 1.7);
}

void ActivityChart::paintEvent(QPaintEvent*) {
    ++painted_;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF card = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QColor(0xe3, 0xe6, 0xef));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(card, 12, 12);

    painter.setPen(QColor(0x1d, 0x24, 0x3b));
    QFont title = font();
    title.setPixelSize(17);
    title.setBold(true);
    painter.setFont(title);
    painter.drawText(QRectF(24, 14, width() - 48, 32), Qt::AlignLeft | Qt::AlignVCenter, "Build activity");
    painter.setFont(font());
    painter.setPen(QColor(0x6b, 0x72, 0x88));
    QString latest = QString("last build %1 s").arg(60 + 40 * sample(step_ / pixelsPerSample), 0, 'f', 1);
    painter.drawText(QRectF(24, 14, width() - 48, 32), Qt::AlignRight | Qt::AlignVCenter, latest);

    QRectF plot(24, 56, width() - 48, height() - 76);
    drawGrid(painter, plot);
    drawSeries(painter, plot);
}

void ActivityChart::drawGrid(QPainter& painter, const QRectF& plot) const {
    painter.setPen(QPen(QColor(0xee, 0xf0, 0xf5), 1));
    for (int i = 0; i <= 4; ++i) {
        double y = plot.top() + plot.height() * i / 4.0;
        painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
    }
}

void ActivityChart::drawSeries(QPainter& painter, const QRectF& plot) const {
    // The whole strip slides left by one pixel a step; samples stay put on it.
    long first = step_ / pixelsPerSample;
    double shift = double(step_ % pixelsPerSample);
    int count = int(plot.width() / pixelsPerSample) + 2;
    QPainterPath line, area;
    for (int i = 0; i < count; ++i) {
        double x = plot.left() + i * pixelsPerSample - shift;
        double y = plot.bottom() - sample(first + i) * plot.height();
        if (i == 0) {
            line.moveTo(x, y);
            area.moveTo(x, plot.bottom());
        }
        line.lineTo(x, y);
        area.lineTo(x, y);
    }
    area.lineTo(plot.left() + (count - 1) * pixelsPerSample - shift, plot.bottom());
    area.closeSubpath();
    painter.save();
    painter.setClipRect(plot);
    QLinearGradient fill(plot.topLeft(), plot.bottomLeft());
    fill.setColorAt(0, QColor(59, 110, 245, 90));
    fill.setColorAt(1, QColor(59, 110, 245, 8));
    painter.fillPath(area, fill);
    painter.setPen(QPen(QColor(0x3b, 0x6e, 0xf5), 2.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(line);
    painter.restore();
}
