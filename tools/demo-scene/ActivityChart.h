#pragma once

#include <QTimer>
#include <QWidget>

// "Build activity": a strip chart of recent build times. Still by default;
// when told to run it scrolls one step every 1/60 s so that every frame of
// the screen differs (the busy screen of the recording benchmark), and says
// once a second on standard output how many steps it has painted.
class ActivityChart : public QWidget {
    Q_OBJECT
public:
    explicit ActivityChart(QWidget* parent = nullptr);
    void run();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double sample(long index) const;
    void drawGrid(class QPainter& painter, const QRectF& plot) const;
    void drawSeries(QPainter& painter, const QRectF& plot) const;

    QTimer ticker_;
    QTimer counter_;
    long step_ = 0;
    long painted_ = 0;
};
