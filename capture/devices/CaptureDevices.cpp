#include "devices/CaptureDevices.h"

#include "camera/TestCameraDevice.h"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace recorder {

namespace {

// The card name of a node that captures pictures; metadata nodes of the same
// camera answer too, but without the capture capability.
std::optional<std::string> captureCardName(const std::filesystem::path& node) {
    int fd = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    v4l2_capability capability{};
    bool ok = ioctl(fd, VIDIOC_QUERYCAP, &capability) == 0;
    close(fd);
    if (!ok) return std::nullopt;
    std::uint32_t caps = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) ? capability.device_caps : capability.capabilities;
    if (!(caps & V4L2_CAP_VIDEO_CAPTURE)) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(capability.card));
}

} // namespace

CaptureDevices::CaptureDevices(std::shared_ptr<PulseContext> session, std::filesystem::path deviceFolder)
    : session_(std::move(session)),
      deviceFolder_(std::move(deviceFolder)),
      queue_(std::make_unique<SerialQueue>("devices.refresh")) {
    refresh();
    if (session_) {
        PulseContext::Lock lock(session_->mainloop());
        // Runs on the server's thread, which must not wait on itself: the
        // lists are read again on our queue.
        auto onEvent = [](pa_context*, pa_subscription_event_type_t, std::uint32_t, void* self) {
            auto* me = static_cast<CaptureDevices*>(self);
            me->queue_->async([me] { me->refreshOnQueue(); });
        };
        pa_context_set_subscribe_callback(session_->context(), onEvent, this);
        if (auto* operation = pa_context_subscribe(session_->context(),
                                                   pa_subscription_mask_t(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER),
                                                   nullptr, nullptr))
            pa_operation_unref(operation);
    }
    queue_->asyncAfter(cameraPollInterval, [this] { pollCameras(); });
}

CaptureDevices::~CaptureDevices() {
    if (session_) {
        PulseContext::Lock lock(session_->mainloop());
        pa_context_set_subscribe_callback(session_->context(), nullptr, nullptr);
    }
    queue_->sync([this] { stopping_ = true; });
    queue_.reset();
}

std::vector<CaptureDevices::Device> CaptureDevices::cameras() const {
    std::lock_guard guard(lock_);
    return cameras_;
}

std::vector<CaptureDevices::Device> CaptureDevices::microphones() const {
    std::lock_guard guard(lock_);
    return microphones_;
}

void CaptureDevices::setOnChange(ChangeHandler onChange) {
    queue_->sync([&] { onChange_ = std::move(onChange); });
}

void CaptureDevices::refresh() {
    queue_->sync([this] { refreshOnQueue(); });
}

void CaptureDevices::pollCameras() {
    if (stopping_) return;
    refreshOnQueue();
    queue_->asyncAfter(cameraPollInterval, [this] { pollCameras(); });
}

void CaptureDevices::refreshOnQueue() {
    auto cameras = readCameras();
    auto microphones = readMicrophones();
    bool changed = false;
    {
        // Assigned only when different, so watchers aren't told of nothing.
        std::lock_guard guard(lock_);
        if (cameras != cameras_) cameras_ = std::move(cameras), changed = true;
        if (microphones != microphones_) microphones_ = std::move(microphones), changed = true;
    }
    if (changed && onChange_) onChange_();
}

std::vector<CaptureDevices::Device> CaptureDevices::readMicrophones() const {
    std::vector<Device> out;
    if (!session_) return out;
    for (const auto& source : session_->sources())
        if (!source.isMonitor) out.push_back({source.name, source.description, false});
    return out;
}

std::vector<CaptureDevices::Device> CaptureDevices::readCameras() const {
    std::vector<Device> out;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(deviceFolder_, error)) {
        std::string name = entry.path().filename().string();
        if (!name.starts_with("video")) continue;
        if (auto card = captureCardName(entry.path())) out.push_back({entry.path().string(), *card, false});
    }
    std::sort(out.begin(), out.end(), [](const Device& a, const Device& b) { return a.id < b.id; });
    if (TestCameraDevice::isListed()) out.push_back({TestCameraDevice::deviceID, TestCameraDevice::deviceName, false});
    return out;
}

std::optional<CaptureDevices::Device> CaptureDevices::rememberedCamera(const std::optional<std::string>& lastCameraID) const {
    if (!lastCameraID || *lastCameraID == "none") return std::nullopt;
    auto list = cameras();
    auto found = std::find_if(list.begin(), list.end(), [&](const Device& d) { return d.id == *lastCameraID; });
    if (found == list.end()) return std::nullopt;
    return *found;
}

std::optional<CaptureDevices::Device> CaptureDevices::rememberedMicrophone(const std::optional<std::string>& lastMicID) const {
    if (lastMicID && *lastMicID == "none") return std::nullopt;
    std::string wanted;
    if (lastMicID) {
        wanted = *lastMicID;
    } else {
        auto info = session_ ? session_->serverInfo() : std::nullopt;
        if (!info) return std::nullopt;
        wanted = info->defaultSourceName;
    }
    auto list = microphones();
    auto found = std::find_if(list.begin(), list.end(), [&](const Device& d) { return d.id == wanted; });
    if (found == list.end()) return std::nullopt;
    return *found;
}

} // namespace recorder
