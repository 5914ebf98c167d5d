#pragma once

#include "camera/CameraDevice.h"

#include <chrono>
#include <functional>

struct AVFilterGraph;
struct AVFilterContext;

namespace recorder {

// A camera for machines that have none: FFmpeg's "testsrc2" pattern, paced
// at its frame rate and stamped when each picture is handed over, as a real
// camera's would be. Chosen frames can come out black, as a camera's do
// while it warms up.
class TestCameraDevice : public CameraDevice {
public:
    static constexpr const char* deviceID = "test:testsrc2";
    static constexpr const char* deviceName = "Test pattern";
    // Set to 1, the test camera is listed among the cameras.
    static constexpr const char* environmentSwitch = "RECORDER_TEST_CAMERA";

    struct Options {
        int width = 640;
        int height = 480;
        int fps = 30;
        // Which frames (counted from 0) are black; none when unset.
        std::function<bool(int index)> black;
        // Told of every frame handed over, with its host time.
        std::function<void(int index, std::int64_t hostTime)> onFrame;
    };

    static bool isListed();

    TestCameraDevice();
    explicit TestCameraDevice(Options options);
    ~TestCameraDevice() override;

    bool open() override;
    Size pixelSize() const override;
    std::optional<CameraFrame> next() override;
    void close() override;

private:
    std::shared_ptr<AVFrame> pattern();
    std::shared_ptr<AVFrame> blackPicture() const;
    void waitForTurn();

    Options options_;
    AVFilterGraph* graph_ = nullptr;
    AVFilterContext* output_ = nullptr;
    int index_ = 0;
    std::chrono::steady_clock::time_point started_;
};

} // namespace recorder
