#include "effects/Pixelate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace recorder::Pixelate {

namespace {

// Pixel edges of the grid's cells along one axis, from 0 to length.
std::vector<int> cellEdges(double origin, double cell, int length) {
    // The same grid through a point within one cell of 0, so the steps
    // below stay exact wherever the origin was.
    origin = std::fmod(origin, cell);
    std::vector<int> edges{0};
    for (double k = origin > 0 ? 0 : 1;; k += 1) {
        int edge = int(std::lround(origin + k * cell));
        if (edge >= length) break;
        if (edge > edges.back()) edges.push_back(edge);
    }
    edges.push_back(length);
    return edges;
}

void fillCell(QImage& image, int x0, int x1, int y0, int y1) {
    std::uint64_t sums[4]{};
    for (int y = y0; y < y1; ++y) {
        const auto* row = image.constScanLine(y) + 4 * x0;
        for (int i = 0; i < 4 * (x1 - x0); ++i) sums[i & 3] += row[i];
    }
    std::uint64_t count = std::uint64_t(x1 - x0) * std::uint64_t(y1 - y0);
    std::uint8_t mean[4];
    for (int c = 0; c < 4; ++c) mean[c] = std::uint8_t((sums[c] + count / 2) / count);
    std::uint32_t pixel;
    std::memcpy(&pixel, mean, 4);
    for (int y = y0; y < y1; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(image.scanLine(y));
        std::fill(row + x0, row + x1, pixel);
    }
}

} // namespace

void apply(QImage& image, QPointF origin, double cell) {
    if (image.isNull() || !(cell >= 1) || !std::isfinite(cell) || !std::isfinite(origin.x()) ||
        !std::isfinite(origin.y()))
        return;
    if (image.format() != QImage::Format_ARGB32_Premultiplied)
        image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    std::vector<int> columns = cellEdges(origin.x(), cell, image.width());
    std::vector<int> rows = cellEdges(origin.y(), cell, image.height());
    for (std::size_t j = 0; j + 1 < rows.size(); ++j)
        for (std::size_t i = 0; i + 1 < columns.size(); ++i)
            fillCell(image, columns[i], columns[i + 1], rows[j], rows[j + 1]);
}

} // namespace recorder::Pixelate
