#include "export/GifWriter.h"

#include "export/ExportError.h"

#include <gif_lib.h>
#include <libimagequant.h>
#include <libyuv.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace recorder {

namespace {

// libimagequant's speed 7 beat FFmpeg's palettegen/paletteuse on screen
// clips at about the same CPU time: files a third to a half the size, with
// equal or better PSNR (see the README).
constexpr int quantiserSpeed = 7;
// One palette entry stays free for "unchanged" (transparent).
constexpr int largestPalette = 255;

void check(int result) {
    if (result != GIF_OK) throw ExportError(ExportError::Kind::writer);
}

struct Quantised {
    liq_attr* attributes = liq_attr_create();
    liq_image* image = nullptr;
    liq_result* result = nullptr;
    ~Quantised() {
        if (result) liq_result_destroy(result);
        if (image) liq_image_destroy(image);
        if (attributes) liq_attr_destroy(attributes);
    }
};

int bitsFor(int colours) {
    int bits = 1;
    while ((1 << bits) < colours) ++bits;
    return bits;
}

} // namespace

GifWriter::GifWriter(const ExportSettings& settings, std::int64_t frameCount)
    : file_(settings.outputURL), width_(settings.width), height_(settings.height), fps_(settings.gifFPS) {
    if (frameCount < 1) throw ExportError(ExportError::Kind::empty);
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
    int error = 0;
    errno = 0;
    gif_ = EGifOpenFileName(file_.c_str(), false, &error);
    if (!gif_) {
        std::string reason = errno ? std::strerror(errno) : GifErrorString(error);
        throw std::runtime_error("The file " + file_.string() + " could not be written: " + reason + ".");
    }
    EGifSetGifVersion(gif_, true);
    check(EGifPutScreenDesc(gif_, width_, height_, 8, 0, nullptr));
    writeLoopForever();
    std::size_t bytes = std::size_t(width_) * std::size_t(height_) * 4;
    current_.resize(bytes);
    previous_.resize(bytes);
    crop_.resize(bytes);
    indices_.resize(std::size_t(width_) * std::size_t(height_));
}

GifWriter::~GifWriter() {
    if (!gif_) return;
    int error = 0;
    EGifCloseFile(gif_, &error);
    if (finished_) return;
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

void GifWriter::writeLoopForever() {
    // The NETSCAPE2.0 block with a loop count of 0: for ever.
    const unsigned char loop[3] = {1, 0, 0};
    check(EGifPutExtensionLeader(gif_, APPLICATION_EXT_FUNC_CODE));
    check(EGifPutExtensionBlock(gif_, 11, "NETSCAPE2.0"));
    check(EGifPutExtensionBlock(gif_, 3, loop));
    check(EGifPutExtensionTrailer(gif_));
}

void GifWriter::appendPicture(const std::uint8_t* bgra, int stride) {
    // libyuv's "ARGB" is B, G, R, A in memory, its "ABGR" R, G, B, A.
    libyuv::ARGBToABGR(bgra, stride, current_.data(), width_ * 4, width_, height_);
    writePicture(changedArea());
    current_.swap(previous_);
    ++written_;
}

GifWriter::Area GifWriter::changedArea() const {
    if (written_ == 0) return {0, 0, width_, height_};
    auto* now = reinterpret_cast<const std::uint32_t*>(current_.data());
    auto* before = reinterpret_cast<const std::uint32_t*>(previous_.data());
    int left = width_, top = height_, right = -1, bottom = -1;
    for (int y = 0; y < height_; ++y) {
        const std::uint32_t* a = now + std::size_t(y) * width_;
        const std::uint32_t* b = before + std::size_t(y) * width_;
        int first = 0;
        while (first < width_ && a[first] == b[first]) ++first;
        if (first == width_) continue;
        int last = width_ - 1;
        while (a[last] == b[last]) --last;
        left = std::min(left, first);
        right = std::max(right, last);
        if (top == height_) top = y;
        bottom = y;
    }
    // Nothing changed: one transparent pixel keeps the frame's time.
    if (right < 0) return {0, 0, 1, 1};
    return {left, top, right - left + 1, bottom - top + 1};
}

void GifWriter::writePicture(const Area& area) {
    for (int y = 0; y < area.height; ++y)
        std::memcpy(&crop_[std::size_t(y) * area.width * 4],
                    &current_[(std::size_t(area.y + y) * width_ + area.x) * 4], std::size_t(area.width) * 4);
    Quantised q;
    if (!q.attributes) throw std::bad_alloc();
    liq_set_speed(q.attributes, quantiserSpeed);
    liq_set_max_colors(q.attributes, largestPalette);
    q.image = liq_image_create_rgba(q.attributes, crop_.data(), area.width, area.height, 0);
    if (!q.image || liq_image_quantize(q.image, q.attributes, &q.result) != LIQ_OK)
        throw ExportError(ExportError::Kind::writer);
    liq_set_dithering_level(q.result, 1.0f);
    std::size_t count = std::size_t(area.width) * area.height;
    if (liq_write_remapped_image(q.result, q.image, indices_.data(), count) != LIQ_OK)
        throw ExportError(ExportError::Kind::writer);
    const liq_palette* palette = liq_get_palette(q.result);
    int transparent = int(palette->count);
    // Pixels the picture before already shows stay as they are.
    if (written_ > 0) {
        for (int y = 0; y < area.height; ++y) {
            auto* now = reinterpret_cast<const std::uint32_t*>(&current_[(std::size_t(area.y + y) * width_ + area.x) * 4]);
            auto* before = reinterpret_cast<const std::uint32_t*>(&previous_[(std::size_t(area.y + y) * width_ + area.x) * 4]);
            std::uint8_t* row = &indices_[std::size_t(y) * area.width];
            for (int x = 0; x < area.width; ++x)
                if (now[x] == before[x]) row[x] = std::uint8_t(transparent);
        }
    }
    std::unique_ptr<ColorMapObject, decltype(&GifFreeMapObject)> colours(
        GifMakeMapObject(1 << bitsFor(transparent + 1), nullptr), &GifFreeMapObject);
    if (!colours) throw std::bad_alloc();
    for (unsigned i = 0; i < palette->count; ++i)
        colours->Colors[i] = {palette->entries[i].r, palette->entries[i].g, palette->entries[i].b};
    int delay = delayOf(written_);
    // Disposal "leave in place" (1), with a transparent index.
    const unsigned char control[4] = {(1 << 2) | 1, std::uint8_t(delay & 0xff), std::uint8_t(delay >> 8),
                                      std::uint8_t(transparent)};
    check(EGifPutExtension(gif_, GRAPHICS_EXT_FUNC_CODE, 4, control));
    check(EGifPutImageDesc(gif_, area.x, area.y, area.width, area.height, false, colours.get()));
    for (int y = 0; y < area.height; ++y)
        check(EGifPutLine(gif_, &indices_[std::size_t(y) * area.width], area.width));
}

int GifWriter::delayOf(std::int64_t index) const {
    // Delays are whole hundredths: rounding the running total keeps the GIF
    // in time (1/15 s alternates 7, 6, 7 hundredths and 450 make 30 s).
    auto at = [this](std::int64_t i) { return std::llround(double(i) * 100.0 / fps_); };
    return int(at(index + 1) - at(index));
}

void GifWriter::finish() {
    if (finished_) return;
    int error = 0;
    int closed = EGifCloseFile(gif_, &error);
    gif_ = nullptr;
    if (closed != GIF_OK) {
        std::error_code ignored;
        std::filesystem::remove(file_, ignored);
        throw ExportError(ExportError::Kind::writer);
    }
    finished_ = true;
}

} // namespace recorder
