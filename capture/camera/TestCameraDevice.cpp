#include "camera/TestCameraDevice.h"

#include "clock/HostClock.h"
#include "sink/MediaSample.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavutil/mem.h>
}

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace recorder {

namespace {

std::shared_ptr<AVFrame> owned(AVFrame* frame) {
    return {frame, [](AVFrame* f) { av_frame_free(&f); }};
}

} // namespace

bool TestCameraDevice::isListed() {
    const char* value = std::getenv(environmentSwitch);
    return value && std::string(value) == "1";
}

TestCameraDevice::TestCameraDevice() : TestCameraDevice(Options{}) {}

TestCameraDevice::TestCameraDevice(Options options) : options_(std::move(options)) {}

TestCameraDevice::~TestCameraDevice() { close(); }

bool TestCameraDevice::open() {
    close();
    if (options_.width < 1 || options_.height < 1 || options_.fps < 1) return false;
    graph_ = avfilter_graph_alloc();
    if (!graph_) return false;
    if (avfilter_graph_create_filter(&output_, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr, graph_) < 0) {
        close();
        return false;
    }
    AVFilterInOut* open = avfilter_inout_alloc();
    open->name = av_strdup("out");
    open->filter_ctx = output_;
    open->pad_idx = 0;
    open->next = nullptr;
    std::string description = "testsrc2=size=" + std::to_string(options_.width) + "x" + std::to_string(options_.height) +
                              ":rate=" + std::to_string(options_.fps) + ",format=bgra";
    bool ok = avfilter_graph_parse_ptr(graph_, description.c_str(), &open, nullptr, nullptr) >= 0 &&
              avfilter_graph_config(graph_, nullptr) >= 0;
    avfilter_inout_free(&open);
    if (!ok) {
        close();
        return false;
    }
    index_ = 0;
    started_ = std::chrono::steady_clock::now();
    return true;
}

void TestCameraDevice::close() {
    avfilter_graph_free(&graph_);
    output_ = nullptr;
}

Size TestCameraDevice::pixelSize() const { return {double(options_.width), double(options_.height)}; }

std::optional<CameraFrame> TestCameraDevice::next() {
    if (!graph_) return std::nullopt;
    auto picture = pattern();
    if (!picture) return std::nullopt;
    if (options_.black && options_.black(index_)) picture = blackPicture();
    waitForTurn();
    CameraFrame frame{std::move(picture), HostClock::nanoseconds()};
    if (options_.onFrame) options_.onFrame(index_, frame.hostTime);
    ++index_;
    return frame;
}

std::shared_ptr<AVFrame> TestCameraDevice::pattern() {
    auto frame = owned(av_frame_alloc());
    if (!frame || av_buffersink_get_frame(output_, frame.get()) < 0) return nullptr;
    return frame;
}

std::shared_ptr<AVFrame> TestCameraDevice::blackPicture() const {
    auto frame = MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, options_.width, options_.height);
    for (int y = 0; y < options_.height; ++y) {
        auto* row = frame->data[0] + std::ptrdiff_t(y) * frame->linesize[0];
        std::memset(row, 0, std::size_t(options_.width) * 4);
        for (int x = 0; x < options_.width; ++x) row[x * 4 + 3] = 255;
    }
    return frame;
}

// A camera hands over a picture when it has one: one frame interval after
// the last, never a burst to catch up.
void TestCameraDevice::waitForTurn() {
    auto due = started_ + std::chrono::nanoseconds(std::int64_t(index_) * HostClock::nanosecondsPerSecond / options_.fps);
    auto now = std::chrono::steady_clock::now();
    if (due > now) {
        std::this_thread::sleep_for(due - now);
    } else if (now - due > std::chrono::milliseconds(200)) {
        // Far behind (the machine was busy): start counting again from now.
        started_ = now - std::chrono::nanoseconds(std::int64_t(index_) * HostClock::nanosecondsPerSecond / options_.fps);
    }
}

} // namespace recorder
