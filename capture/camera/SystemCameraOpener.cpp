#include "camera/SystemCameraOpener.h"

#include "camera/TestCameraDevice.h"
#include "camera/V4L2CameraDevice.h"

namespace recorder {

std::unique_ptr<CameraDevice> SystemCameraOpener::open(const std::string& deviceID) {
    std::unique_ptr<CameraDevice> device;
    if (deviceID == TestCameraDevice::deviceID)
        device = std::make_unique<TestCameraDevice>();
    else
        device = std::make_unique<V4L2CameraDevice>(deviceID);
    if (!device->open()) return nullptr;
    return device;
}

} // namespace recorder
