// Project's edits of media items and zooms.
#include "model/Project.h"
#include "model/TimeOrder.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace recorder {

namespace {

void sortZooms(std::vector<ZoomSegment>& zooms) {
    std::stable_sort(zooms.begin(), zooms.end(),
                     [](const ZoomSegment& a, const ZoomSegment& b) { return earlierTime(a.start, b.start); });
}

} // namespace

void Project::addIntro(MediaItem item) {
    double length = std::max(0.5, item.end - item.start);
    insertLeadingGap(length);
    item.start = 0;
    item.end = length;
    addMedia(std::move(item));
}

void Project::addOutro(MediaItem item) {
    double length = item.end - item.start;
    double start = duration();
    for (const auto& other : media) start = std::max(start, other.end);
    item.start = start;
    item.end = start + (length >= 0.5 ? length : 0.5);
    addMedia(std::move(item));
}

void Project::addMedia(MediaItem item) {
    if (media.empty()) {
        item.zIndex = 0;
    } else {
        int top = std::max_element(media.begin(), media.end(), [](const auto& a, const auto& b) {
                      return a.zIndex < b.zIndex;
                  })->zIndex;
        item.zIndex = top == INT_MAX ? top : top + 1;
    }
    media.push_back(std::move(item));
}

void Project::updateMedia(const MediaItem& item) {
    auto it = std::find_if(media.begin(), media.end(), [&](const MediaItem& m) { return m.id == item.id; });
    if (it != media.end()) *it = item;
}

void Project::removeMedia(const Uuid& itemID) {
    std::erase_if(media, [&](const MediaItem& m) { return m.id == itemID; });
}

void Project::addZoom(ZoomSegment zoom) {
    zooms.push_back(std::move(zoom));
    sortZooms(zooms);
}

void Project::updateZoom(const ZoomSegment& zoom) {
    auto it = std::find_if(zooms.begin(), zooms.end(), [&](const ZoomSegment& z) { return z.id == zoom.id; });
    if (it == zooms.end()) return;
    *it = zoom;
    sortZooms(zooms);
}

void Project::removeZoom(const Uuid& zoomID) {
    std::erase_if(zooms, [&](const ZoomSegment& z) { return z.id == zoomID; });
}

void Project::replaceAutoZooms(std::vector<ZoomSegment> generated) {
    std::erase_if(zooms, [](const ZoomSegment& z) { return z.isAuto; });
    for (auto& zoom : generated) zooms.push_back(std::move(zoom));
    sortZooms(zooms);
}

void Project::setZoomScale(const Uuid& zoomID, double scale) {
    if (std::isnan(scale)) return;
    auto it = std::find_if(zooms.begin(), zooms.end(), [&](const ZoomSegment& z) { return z.id == zoomID; });
    if (it == zooms.end()) return;
    // Magnification runs from 1.05 to 8; the centre stays.
    double side = scale >= 8 ? 0.125 : 1 / std::max(scale, 1.05);
    double s = std::clamp(side, 0.01, 1.0);
    Rect old = it->rect;
    double x = clampOrLow(old.x + old.width / 2 - side / 2, 0.0, 1 - s);
    double y = clampOrLow(old.y + old.height / 2 - side / 2, 0.0, 1 - s);
    it->rect = {x, y, s, s};
}

} // namespace recorder
