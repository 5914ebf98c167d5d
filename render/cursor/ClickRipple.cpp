#include "cursor/ClickRipple.h"

#include "effects/PackedPixel.h"

#include <QColor>
#include <QImage>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace recorder {

namespace {

// Where the ring's two ramps start and meet, as distances from its centre.
struct Ramps {
    double inner;
    double peak;
    double outer;
};

Ramps rampsOf(const ClickRipple& ripple) {
    return {std::max(0.0, ripple.radius - 1.5 * ripple.thickness), std::max(0.0, ripple.radius - ripple.thickness),
            ripple.radius};
}

} // namespace

std::vector<ClickRipple> ClickRipple::live(const std::vector<ClickEvent>& clicks, double sourceTime,
                                           const Rect& screenFrame, double cursorHeight, const RGBAColor& highlight) {
    std::vector<ClickRipple> ripples;
    for (const auto& click : clicks) {
        double age = sourceTime - click.time;
        if (!click.isDown || click.button != ClickEvent::Button::left || !(age >= 0 && age < lifetime)) continue;
        double f = age / lifetime;
        QPointF centre(screenFrame.x + screenFrame.width * click.position.x,
                       screenFrame.y + screenFrame.height * click.position.y);
        RGBAColor color = highlight;
        color.a = (1 - f) * highlight.a;
        ripples.push_back({centre, cursorHeight * (f * 2.2 + 0.6), cursorHeight * 0.18, color});
    }
    return ripples;
}

double ClickRipple::alphaAt(double distance) const {
    Ramps r = rampsOf(*this);
    auto ramp = [](double d, double from, double to) {
        if (d <= from) return 0.0;
        if (d >= to) return 1.0;
        return (d - from) / (to - from);
    };
    double rising = ramp(distance, r.inner, r.peak);
    double falling = 1 - ramp(distance, r.peak, r.outer);
    return std::clamp(color.a, 0.0, 1.0) * std::min(rising, falling);
}

void ClickRipple::draw(QImage& target, const QTransform& stageToTarget) const {
    if (target.format() != QImage::Format_ARGB32_Premultiplied) return;
    double scale = stageToTarget.m11();
    ClickRipple mapped{stageToTarget.map(centre), radius * scale, thickness * scale, color};
    Ramps r = rampsOf(mapped);
    // A ring wider than any frame comes only from a damaged project.
    constexpr double widest = 1e5;
    QPointF c = mapped.centre;
    if (!(r.outer > 0 && r.outer < widest) || !(color.a > 0) || !std::isfinite(c.x()) || !std::isfinite(c.y())) return;
    std::uint32_t opaque = QColor::fromRgbF(float(color.r), float(color.g), float(color.b)).rgba();
    // alphaAt, in single precision for the loop below.
    const float inner = float(r.inner), outer = float(r.outer);
    const float perRise = r.peak > r.inner ? float(1 / (r.peak - r.inner)) : 1e9f;
    const float perFall = r.outer > r.peak ? float(1 / (r.outer - r.peak)) : 1e9f;
    const float peakAlpha = float(255 * std::clamp(color.a, 0.0, 1.0));
    std::vector<std::uint8_t> alphas(std::size_t(target.width()));
    int top = std::max(0, int(std::floor(c.y() - r.outer)));
    int bottom = std::min(target.height(), int(std::ceil(c.y() + r.outer)) + 1);
    for (int y = top; y < bottom; ++y) {
        double dy = y + 0.5 - c.y();
        const float dy2 = float(dy * dy);
        double outerSpan = r.outer * r.outer - dy * dy;
        if (outerSpan <= 0) continue;
        double half = std::sqrt(outerSpan);
        // Inside the inner circle nothing is drawn: skip that stretch of the row.
        double innerSpan = r.inner * r.inner - dy * dy;
        double hole = innerSpan > 0 ? std::sqrt(innerSpan) : 0;
        auto* row = reinterpret_cast<std::uint32_t*>(target.scanLine(y));
        auto blend = [&](int from, int to) {
            from = std::max(from, 0);
            to = std::min(to, target.width());
            // Alphas first, in a loop without branches the compiler vectorises.
            const float x0 = float(from + 0.5 - c.x());
            for (int i = 0; i < to - from; ++i) {
                float dx = x0 + float(i);
                float d = std::sqrt(dx * dx + dy2);
                float v = std::clamp(std::min((d - inner) * perRise, (outer - d) * perFall), 0.0f, 1.0f);
                alphas[std::size_t(i)] = std::uint8_t(v * peakAlpha + 0.5f);
            }
            for (int x = from; x < to; ++x)
                if (std::uint32_t alpha = alphas[std::size_t(x - from)])
                    row[x] = PackedPixel::over(PackedPixel::multiply(opaque, alpha), row[x]);
        };
        int left = int(std::floor(c.x() - half)), right = int(std::ceil(c.x() + half)) + 1;
        if (hole > 1) {
            blend(left, int(std::ceil(c.x() - hole)) + 1);
            blend(int(std::floor(c.x() + hole)), right);
        } else {
            blend(left, right);
        }
    }
}

} // namespace recorder
