#include "camera/CameraCapturer.h"

#include "camera/SystemCameraOpener.h"
#include "clock/HostClock.h"
#include "sink/CaptureError.h"

#include <algorithm>

namespace recorder {

CameraCapturer::CameraCapturer(std::unique_ptr<CameraDeviceOpener> opener)
    : opener_(opener ? std::move(opener) : std::make_unique<SystemCameraOpener>()),
      queue_(std::make_unique<SerialQueue>("camera.samples")) {}

CameraCapturer::~CameraCapturer() {
    if (recording_) stopWriting();
    select(std::nullopt);
}

std::optional<std::string> CameraCapturer::selectedID() const {
    std::lock_guard guard(stateLock_);
    return inputID_;
}

bool CameraCapturer::hasInput() const { return selectedID().has_value(); }

Size CameraCapturer::pixelSize() const {
    std::lock_guard guard(stateLock_);
    return pixelSize_;
}

int CameraCapturer::blackSkipped() const {
    return queue_->syncResult([this] { return blackSkipped_; });
}

void CameraCapturer::select(const std::optional<std::string>& deviceID) {
    if (selectedID() == deviceID) return;
    stopInput();
    if (!deviceID) return;
    auto device = opener_->open(*deviceID);
    if (!device) return;
    Size size = device->pixelSize();
    {
        std::lock_guard guard(stateLock_);
        inputID_ = deviceID;
        pixelSize_ = size;
    }
    // The device belongs to the queue from here on.
    queue_->sync([&] { input_ = std::move(device); });
    int generation = ++generation_;
    queue_->async([this, generation] { pump(generation); });
}

void CameraCapturer::stopInput() {
    ++generation_;
    // The frame being read is finished first; the pump then stops by itself.
    queue_->sync([this] {
        if (input_) input_->close();
        input_.reset();
    });
    std::lock_guard guard(stateLock_);
    inputID_.reset();
    pixelSize_ = {};
}

// One frame per task, so that starting and stopping a recording wait for
// at most one frame.
void CameraCapturer::pump(int generation) {
    if (generation != generation_ || !input_) return;
    auto frame = input_->next();
    if (frame) {
        take(*frame);
        queue_->async([this, generation] { pump(generation); });
    } else {
        // A camera that has gone answers at once: ask again a little later
        // rather than spin.
        queue_->asyncAfter(idleRetry, [this, generation] { pump(generation); });
    }
}

void CameraCapturer::take(const CameraFrame& frame) {
    MediaSample sample = MediaSample::video(frame.picture, frame.hostTime);
    frames_.deliver(sample);
    if (!recording_) return;
    if (!sawPicture_) {
        // A camera just opened may hand over black while it warms up; the
        // track shouldn't start with a flash of it, but black is better than
        // no track at all.
        if (isBlack(*frame.picture) && blackSkipped_ < maxBlackSkipped) {
            ++blackSkipped_;
            return;
        }
        sawPicture_ = true;
    }
    if (sink_) sink_->append(sample, true);
}

void CameraCapturer::startWriting(const std::filesystem::path& url, int fps) {
    Size size = pixelSize();
    AssetWriterSink::Video video;
    video.width = int(size.width) & ~1;
    video.height = int(size.height) & ~1;
    // Software HEVC can't keep up on a small machine: H.264 it is.
    video.codec = VideoCodec::h264;
    video.fps = std::min(fps, maxCameraFPS);
    video.bitrateMbps = cameraBitrateMbps;
    if (!hasInput() || video.width < 2 || video.height < 2) throw CaptureError::deviceUnavailable("camera");
    auto sink = std::make_unique<AssetWriterSink>(url, FileType::quickTimeMovie, std::vector<AssetWriterSink::Kind>{video});
    queue_->sync([&] {
        sink_ = std::move(sink);
        blackSkipped_ = 0;
        sawPicture_ = false;
        recording_ = true;
    });
}

std::unique_ptr<AssetWriterSink> CameraCapturer::takeSink() {
    std::unique_ptr<AssetWriterSink> sink;
    queue_->sync([&] {
        recording_ = false;
        sink = std::move(sink_);
    });
    return sink;
}

std::optional<CapturedTrack> CameraCapturer::stopWriting() {
    auto sink = takeSink();
    if (!sink) return std::nullopt;
    double duration = sink->finish();
    std::optional<double> first;
    if (auto pts = sink->firstPTS()) first = HostClock::toSeconds(*pts);
    return CapturedTrack{sink->url(), duration, first};
}

void CameraCapturer::cancelWriting() {
    if (auto sink = takeSink()) sink->cancel();
}

void CameraCapturer::pauseWriting(std::int64_t at) {
    queue_->sync([&] {
        if (sink_) sink_->pause(at);
    });
}

void CameraCapturer::resumeWriting(std::int64_t at) {
    queue_->sync([&] {
        if (sink_) sink_->resume(at);
    });
}

bool CameraCapturer::isBlack(const AVFrame& picture) {
    if (picture.format != AV_PIX_FMT_BGRA || !picture.data[0]) return false;
    for (int r = 1; r < 16; r += 2) {
        const std::uint8_t* row = picture.data[0] + std::ptrdiff_t(picture.height * r / 16) * picture.linesize[0];
        for (int c = 1; c < 16; c += 2) {
            const std::uint8_t* pixel = row + std::ptrdiff_t(picture.width * c / 16) * 4;
            if (pixel[0] || pixel[1] || pixel[2]) return false;
        }
    }
    return true;
}

} // namespace recorder
