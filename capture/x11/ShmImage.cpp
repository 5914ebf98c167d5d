#include "x11/ShmImage.h"

#include "x11/XcbReply.h"

#include <cstring>
#include <sys/ipc.h>
#include <sys/shm.h>

namespace recorder {

namespace {

constexpr std::uint32_t allPlanes = ~0u;

bool serverHasShm(xcb_connection_t* c) {
    const xcb_query_extension_reply_t* shm = xcb_get_extension_data(c, &xcb_shm_id);
    return shm && shm->present;
}

} // namespace

ShmImage::ShmImage(xcb_connection_t* connection, int maxWidth, int maxHeight)
    : connection_(connection), capacity_(std::size_t(maxWidth) * std::size_t(maxHeight) * 4) {
    if (!serverHasShm(connection_)) return;
    shmId_ = shmget(IPC_PRIVATE, capacity_, IPC_CREAT | 0600);
    if (shmId_ < 0) return;
    void* address = shmat(shmId_, nullptr, 0);
    // Marked for removal now: the segment goes away when both sides detach,
    // even if this process dies.
    shmctl(shmId_, IPC_RMID, nullptr);
    if (address == reinterpret_cast<void*>(-1)) return;
    shared_ = static_cast<std::uint8_t*>(address);
    segment_ = xcb_generate_id(connection_);
    XcbReply<xcb_generic_error_t> error(
        xcb_request_check(connection_, xcb_shm_attach_checked(connection_, segment_, std::uint32_t(shmId_), 0)));
    if (error) {
        shmdt(shared_);
        shared_ = nullptr;
        segment_ = 0;
    }
}

ShmImage::~ShmImage() {
    if (segment_) xcb_shm_detach(connection_, segment_);
    xcb_flush(connection_);
    if (shared_) shmdt(shared_);
}

bool ShmImage::grab(xcb_drawable_t drawable, int x, int y, int width, int height) {
    if (width <= 0 || height <= 0) return false;
    bool fits = std::size_t(width) * std::size_t(height) * 4 <= capacity_;
    bool done = segment_ && fits ? grabShared(drawable, x, y, width, height) : grabCopied(drawable, x, y, width, height);
    if (done) {
        width_ = width;
        height_ = height;
    }
    return done;
}

bool ShmImage::grabShared(xcb_drawable_t drawable, int x, int y, int width, int height) {
    auto cookie = xcb_shm_get_image(connection_, drawable, std::int16_t(x), std::int16_t(y), std::uint16_t(width),
                                    std::uint16_t(height), allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP, segment_, 0);
    XcbReply<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(connection_, cookie, nullptr));
    if (!reply) return false;
    data_ = shared_;
    return true;
}

bool ShmImage::grabCopied(xcb_drawable_t drawable, int x, int y, int width, int height) {
    auto cookie = xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, std::int16_t(x), std::int16_t(y),
                                std::uint16_t(width), std::uint16_t(height), allPlanes);
    XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection_, cookie, nullptr));
    if (!reply) return false;
    std::size_t length = std::size_t(xcb_get_image_data_length(reply.get()));
    copied_.assign(xcb_get_image_data(reply.get()), xcb_get_image_data(reply.get()) + length);
    data_ = copied_.data();
    return true;
}

} // namespace recorder
