#include "compose/SourceImage.h"

#include "effects/HalfSize.h"

#include <mutex>
#include <vector>

namespace recorder {

namespace {

// Levels stop where a picture would fall below a few pixels.
constexpr int smallestLevelSide = 8;

bool everyPixelIsOpaque(const QImage& image) {
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(image.constScanLine(y));
        std::uint32_t all = 0xFF000000;
        for (int x = 0; x < image.width(); ++x) all &= row[x];
        if ((all >> 24) != 0xFF) return false;
    }
    return true;
}

} // namespace

struct SourceImage::Shared {
    QImage image;
    bool opaque = false;
    std::mutex lock;
    std::vector<QImage> halves;
};

SourceImage::SourceImage(QImage image) {
    if (image.isNull()) return;
    shared_ = std::make_shared<Shared>();
    bool alphaFormat = image.hasAlphaChannel();
    shared_->image = image.format() == QImage::Format_ARGB32_Premultiplied
                         ? std::move(image)
                         : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    // A picture in a format with alpha is often opaque all the same, and
    // what lies under an opaque picture need not be drawn.
    shared_->opaque = !alphaFormat || everyPixelIsOpaque(shared_->image);
}

SourceImage::SourceImage(const FrameImage& frame) {
    if (frame.isNull()) return;
    shared_ = std::make_shared<Shared>();
    shared_->opaque = frame.isOpaque();
    // The cleanup holds the frame's owner until the QImage lets go.
    auto* keep = new std::shared_ptr<void>(frame.owner());
    shared_->image = QImage(
        frame.data(), frame.width(), frame.height(), frame.bytesPerLine(), QImage::Format_ARGB32_Premultiplied,
        [](void* info) { delete static_cast<std::shared_ptr<void>*>(info); }, keep);
}

int SourceImage::width() const { return shared_ ? shared_->image.width() : 0; }
int SourceImage::height() const { return shared_ ? shared_->image.height() : 0; }
bool SourceImage::isOpaque() const { return shared_ && shared_->opaque; }

const QImage& SourceImage::image() const {
    static const QImage none;
    return shared_ ? shared_->image : none;
}

SourceImage::Level SourceImage::level(double scale, double shrinkBelow) const {
    if (!shared_) return {};
    std::lock_guard lock(shared_->lock);
    const QImage* chosen = &shared_->image;
    std::size_t depth = 0;
    while (scale < shrinkBelow && std::min(chosen->width(), chosen->height()) >= 2 * smallestLevelSide) {
        if (shared_->halves.size() <= depth) shared_->halves.push_back(HalfSize::shrink(*chosen));
        chosen = &shared_->halves[depth++];
        scale *= 2;
    }
    return {*chosen, double(shared_->image.width()) / chosen->width(),
            double(shared_->image.height()) / chosen->height()};
}

} // namespace recorder
