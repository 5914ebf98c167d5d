#pragma once

#include "audio/PulseContext.h"
#include "queue/SerialQueue.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

// The cameras and microphones there are now. Microphones are the sound
// server's sources (monitors of outputs left out), refreshed when the server
// says its sources changed; cameras are the V4L2 capture nodes, looked for
// every two seconds since udev isn't always there to ask.
class CaptureDevices {
public:
    struct Device {
        std::string id;
        std::string name;
        bool isContinuity = false;
        bool operator==(const Device&) const = default;
    };
    // Told on "devices.refresh" after either list changed.
    using ChangeHandler = std::function<void()>;

    // Without a sound server (null) there are no microphones.
    explicit CaptureDevices(std::shared_ptr<PulseContext> session, std::filesystem::path deviceFolder = "/dev");
    ~CaptureDevices();
    CaptureDevices(const CaptureDevices&) = delete;
    CaptureDevices& operator=(const CaptureDevices&) = delete;

    std::vector<Device> cameras() const;
    std::vector<Device> microphones() const;
    void setOnChange(ChangeHandler onChange);
    // Reads both lists again now; waits.
    void refresh();

    // "lastCameraID": absent or "none" is no camera; else that camera if present.
    std::optional<Device> rememberedCamera(const std::optional<std::string>& lastCameraID) const;
    // "lastMicID": absent is the server's default microphone, "none" none;
    // else that microphone if present.
    std::optional<Device> rememberedMicrophone(const std::optional<std::string>& lastMicID) const;

    static constexpr auto cameraPollInterval = std::chrono::seconds(2);

private:
    void refreshOnQueue();
    void pollCameras();
    std::vector<Device> readMicrophones() const;
    std::vector<Device> readCameras() const;

    std::shared_ptr<PulseContext> session_;
    std::filesystem::path deviceFolder_;
    mutable std::mutex lock_;
    std::vector<Device> cameras_;
    std::vector<Device> microphones_;
    ChangeHandler onChange_;
    bool stopping_ = false;
    // Last, so its thread stops before the state its tasks touch goes.
    std::unique_ptr<SerialQueue> queue_;
};

} // namespace recorder
