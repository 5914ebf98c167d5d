#pragma once

#include "camera/CameraDevice.h"

namespace recorder {

// The cameras of this machine: the test pattern by its id, anything else a
// V4L2 node by its path.
class SystemCameraOpener : public CameraDeviceOpener {
public:
    std::unique_ptr<CameraDevice> open(const std::string& deviceID) override;
};

} // namespace recorder
