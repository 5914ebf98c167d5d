#pragma once

#include <cstdint>
#include <memory>

namespace recorder {

// A decoded picture in the compositor's pixel format: 32 bits a pixel,
// premultiplied, bytes B, G, R, A in memory (what QImage calls
// ARGB32_Premultiplied on a little-endian machine). Copies share the pixels,
// which stay alive while any copy does, so a frame can cross threads and be
// wrapped by the compositor without a copy.
class FrameImage {
public:
    FrameImage() = default;
    // Wraps memory someone else owns; `owner` keeps it alive.
    FrameImage(int width, int height, int bytesPerLine, std::uint8_t* data, std::shared_ptr<void> owner,
               bool opaque);

    // New, uninitialised pixels with rows aligned for SIMD loops.
    static FrameImage allocate(int width, int height, bool opaque);

    int width() const { return width_; }
    int height() const { return height_; }
    int bytesPerLine() const { return bytesPerLine_; }
    bool isNull() const { return data_ == nullptr; }
    // True when every alpha is 255, as for decoded video.
    bool isOpaque() const { return opaque_; }
    const std::uint8_t* data() const { return data_; }
    const std::uint8_t* row(int y) const { return data_ + std::ptrdiff_t(y) * bytesPerLine_; }
    // For whoever is still filling a frame it made; shared frames are read only.
    std::uint8_t* bits() { return data_; }
    std::uint8_t* mutableRow(int y) { return data_ + std::ptrdiff_t(y) * bytesPerLine_; }
    const std::shared_ptr<void>& owner() const { return owner_; }

private:
    int width_ = 0;
    int height_ = 0;
    int bytesPerLine_ = 0;
    std::uint8_t* data_ = nullptr;
    std::shared_ptr<void> owner_;
    bool opaque_ = false;
};

} // namespace recorder
