#pragma once

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace recorder {

// A picture of part of a drawable, read into memory shared with the X server
// (MIT-SHM): the server writes the pixels straight into our memory, with no
// copy through the socket. Without MIT-SHM (a remote server) it falls back
// to a plain GetImage.
class ShmImage {
public:
    ShmImage(xcb_connection_t* connection, int maxWidth, int maxHeight);
    ~ShmImage();
    ShmImage(const ShmImage&) = delete;
    ShmImage& operator=(const ShmImage&) = delete;

    // 32-bit BGRX pixels, rows of width × 4 bytes. False if the server
    // refused (the drawable is gone or the rectangle is outside it).
    bool grab(xcb_drawable_t drawable, int x, int y, int width, int height);
    const std::uint8_t* data() const { return data_; }
    int stride() const { return width_ * 4; }
    int width() const { return width_; }
    int height() const { return height_; }
    bool sharesMemory() const { return segment_ != 0; }

private:
    bool grabShared(xcb_drawable_t drawable, int x, int y, int width, int height);
    bool grabCopied(xcb_drawable_t drawable, int x, int y, int width, int height);

    xcb_connection_t* connection_;
    std::size_t capacity_ = 0;
    int shmId_ = -1;
    xcb_shm_seg_t segment_ = 0;
    std::uint8_t* shared_ = nullptr;
    std::vector<std::uint8_t> copied_;
    const std::uint8_t* data_ = nullptr;
    int width_ = 0;
    int height_ = 0;
};

} // namespace recorder
