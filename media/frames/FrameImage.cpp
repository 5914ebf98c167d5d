#include "frames/FrameImage.h"

#include <cstdlib>
#include <new>

namespace recorder {

FrameImage::FrameImage(int width, int height, int bytesPerLine, std::uint8_t* data, std::shared_ptr<void> owner,
                       bool opaque)
    : width_(width), height_(height), bytesPerLine_(bytesPerLine), data_(data), owner_(std::move(owner)),
      opaque_(opaque) {}

FrameImage FrameImage::allocate(int width, int height, bool opaque) {
    if (width <= 0 || height <= 0) return {};
    constexpr std::size_t alignment = 64;
    std::size_t bytesPerLine = (std::size_t(width) * 4 + alignment - 1) / alignment * alignment;
    void* memory = std::aligned_alloc(alignment, bytesPerLine * std::size_t(height));
    if (!memory) throw std::bad_alloc();
    std::shared_ptr<void> owner(memory, [](void* p) { std::free(p); });
    return FrameImage(width, height, int(bytesPerLine), static_cast<std::uint8_t*>(memory), std::move(owner), opaque);
}

} // namespace recorder
