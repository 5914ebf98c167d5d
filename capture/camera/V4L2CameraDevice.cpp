#include "camera/V4L2CameraDevice.h"

#include "clock/HostClock.h"
#include "sink/MediaSample.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

#include <libyuv/convert_argb.h>

#include <cerrno>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace recorder {

namespace {

int retrying(int fd, unsigned long request, void* argument) {
    int result;
    do {
        result = ioctl(fd, request, argument);
    } while (result < 0 && errno == EINTR);
    return result;
}

bool offers(int fd, std::uint32_t pixelFormat) {
    v4l2_fmtdesc description{};
    description.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    for (description.index = 0; retrying(fd, VIDIOC_ENUM_FMT, &description) == 0; ++description.index)
        if (description.pixelformat == pixelFormat) return true;
    return false;
}

std::int64_t nanoseconds(const timeval& time) {
    return std::int64_t(time.tv_sec) * HostClock::nanosecondsPerSecond + std::int64_t(time.tv_usec) * 1000;
}

} // namespace

V4L2CameraDevice::V4L2CameraDevice(std::string path) : path_(std::move(path)) {}

V4L2CameraDevice::~V4L2CameraDevice() { close(); }

bool V4L2CameraDevice::open() {
    close();
    fd_ = ::open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) return false;
    v4l2_capability capability{};
    bool ok = retrying(fd_, VIDIOC_QUERYCAP, &capability) == 0;
    std::uint32_t caps = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) ? capability.device_caps : capability.capabilities;
    ok = ok && (caps & V4L2_CAP_VIDEO_CAPTURE) && (caps & V4L2_CAP_STREAMING);
    if (!ok || !chooseFormat() || !mapBuffers() || !startStreaming()) {
        close();
        return false;
    }
    return true;
}

bool V4L2CameraDevice::chooseFormat() {
    if (offers(fd_, V4L2_PIX_FMT_YUYV))
        format_ = V4L2_PIX_FMT_YUYV;
    else if (offers(fd_, V4L2_PIX_FMT_MJPEG))
        format_ = V4L2_PIX_FMT_MJPEG;
    else
        return false;
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.width = wantedWidth;
    format.fmt.pix.height = wantedHeight;
    format.fmt.pix.pixelformat = format_;
    format.fmt.pix.field = V4L2_FIELD_ANY;
    if (retrying(fd_, VIDIOC_S_FMT, &format) < 0 || format.fmt.pix.pixelformat != format_) return false;
    width_ = int(format.fmt.pix.width);
    height_ = int(format.fmt.pix.height);
    stride_ = format.fmt.pix.bytesperline ? int(format.fmt.pix.bytesperline) : width_ * 2;
    // The rate is a wish: a driver that can't set it keeps its own.
    v4l2_streamparm rate{};
    rate.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    rate.parm.capture.timeperframe = {1, wantedFPS};
    retrying(fd_, VIDIOC_S_PARM, &rate);
    return width_ > 0 && height_ > 0;
}

bool V4L2CameraDevice::mapBuffers() {
    v4l2_requestbuffers request{};
    request.count = 4;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    if (retrying(fd_, VIDIOC_REQBUFS, &request) < 0 || request.count < 2) return false;
    for (std::uint32_t i = 0; i < request.count; ++i) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        buffer.index = i;
        if (retrying(fd_, VIDIOC_QUERYBUF, &buffer) < 0) return false;
        void* start = mmap(nullptr, buffer.length, PROT_READ | PROT_WRITE, MAP_SHARED, fd_, buffer.m.offset);
        if (start == MAP_FAILED) return false;
        buffers_.push_back({start, buffer.length});
    }
    return true;
}

bool V4L2CameraDevice::startStreaming() {
    for (std::uint32_t i = 0; i < buffers_.size(); ++i) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        buffer.index = i;
        if (retrying(fd_, VIDIOC_QBUF, &buffer) < 0) return false;
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    streaming_ = retrying(fd_, VIDIOC_STREAMON, &type) == 0;
    return streaming_;
}

void V4L2CameraDevice::close() {
    if (fd_ >= 0 && streaming_) {
        int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        retrying(fd_, VIDIOC_STREAMOFF, &type);
    }
    streaming_ = false;
    for (const auto& buffer : buffers_) munmap(buffer.start, buffer.length);
    buffers_.clear();
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    avcodec_free_context(&decoder_);
    sws_freeContext(scaler_);
    scaler_ = nullptr;
}

Size V4L2CameraDevice::pixelSize() const { return {double(width_), double(height_)}; }

std::optional<CameraFrame> V4L2CameraDevice::next() {
    if (!streaming_) return std::nullopt;
    pollfd ready{fd_, POLLIN, 0};
    if (poll(&ready, 1, 1000 / wantedFPS * 3) <= 0) return std::nullopt;
    if (ready.revents & (POLLERR | POLLHUP | POLLNVAL)) {
        // Unplugged: nothing more will come.
        close();
        return std::nullopt;
    }
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    if (retrying(fd_, VIDIOC_DQBUF, &buffer) < 0 || buffer.index >= buffers_.size()) return std::nullopt;
    // The driver's stamp is of the capture itself when it runs on the
    // monotonic clock, as the host clock does.
    bool monotonic = (buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    std::int64_t hostTime = monotonic ? nanoseconds(buffer.timestamp) : HostClock::nanoseconds();
    std::shared_ptr<AVFrame> picture;
    if (!(buffer.flags & V4L2_BUF_FLAG_ERROR)) picture = convert(buffers_[buffer.index], buffer.bytesused);
    retrying(fd_, VIDIOC_QBUF, &buffer);
    if (!picture) return std::nullopt;
    return CameraFrame{std::move(picture), hostTime};
}

std::shared_ptr<AVFrame> V4L2CameraDevice::convert(const Buffer& buffer, std::size_t used) {
    auto* data = static_cast<const std::uint8_t*>(buffer.start);
    if (format_ == V4L2_PIX_FMT_MJPEG) return decodeJPEG(data, used);
    if (used < std::size_t(stride_) * std::size_t(height_)) return nullptr;
    auto picture = MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, width_, height_);
    // libyuv's ARGB is B, G, R, A in memory: our BGRA.
    libyuv::YUY2ToARGB(data, stride_, picture->data[0], picture->linesize[0], width_, height_);
    return picture;
}

std::shared_ptr<AVFrame> V4L2CameraDevice::decodeJPEG(const std::uint8_t* data, std::size_t size) {
    if (!decoder_) {
        const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
        decoder_ = codec ? avcodec_alloc_context3(codec) : nullptr;
        if (!decoder_ || avcodec_open2(decoder_, codec, nullptr) < 0) {
            avcodec_free_context(&decoder_);
            return nullptr;
        }
    }
    AVPacket* packet = av_packet_alloc();
    // The packet borrows the mapped buffer; the decoder copies what it keeps.
    packet->data = const_cast<std::uint8_t*>(data);
    packet->size = int(size);
    AVFrame* decoded = av_frame_alloc();
    bool ok = avcodec_send_packet(decoder_, packet) >= 0 && avcodec_receive_frame(decoder_, decoded) >= 0;
    av_packet_free(&packet);
    std::shared_ptr<AVFrame> picture;
    if (ok) {
        scaler_ = sws_getCachedContext(scaler_, decoded->width, decoded->height, AVPixelFormat(decoded->format), width_,
                                       height_, AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr);
        if (scaler_) {
            picture = MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, width_, height_);
            sws_scale(scaler_, decoded->data, decoded->linesize, 0, decoded->height, picture->data, picture->linesize);
        }
    }
    av_frame_free(&decoded);
    return picture;
}

} // namespace recorder
