#pragma once

#include "camera/CameraDevice.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct AVCodecContext;
struct SwsContext;

namespace recorder {

// A V4L2 capture node (/dev/videoN): YUYV when it offers it, else MJPEG,
// through memory-mapped buffers; every picture handed over as BGRA.
class V4L2CameraDevice : public CameraDevice {
public:
    explicit V4L2CameraDevice(std::string path);
    ~V4L2CameraDevice() override;
    V4L2CameraDevice(const V4L2CameraDevice&) = delete;
    V4L2CameraDevice& operator=(const V4L2CameraDevice&) = delete;

    bool open() override;
    Size pixelSize() const override;
    std::optional<CameraFrame> next() override;
    void close() override;

    // Asked of the driver, which gives the nearest it has.
    static constexpr int wantedWidth = 1280;
    static constexpr int wantedHeight = 720;
    static constexpr int wantedFPS = 30;

private:
    struct Buffer {
        void* start = nullptr;
        std::size_t length = 0;
    };

    bool chooseFormat();
    bool mapBuffers();
    bool startStreaming();
    std::shared_ptr<AVFrame> convert(const Buffer& buffer, std::size_t used);
    std::shared_ptr<AVFrame> decodeJPEG(const std::uint8_t* data, std::size_t size);

    std::string path_;
    int fd_ = -1;
    std::uint32_t format_ = 0;
    int width_ = 0;
    int height_ = 0;
    int stride_ = 0;
    std::vector<Buffer> buffers_;
    bool streaming_ = false;
    AVCodecContext* decoder_ = nullptr;
    SwsContext* scaler_ = nullptr;
};

} // namespace recorder
