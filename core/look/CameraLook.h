#pragma once

#include "model/CameraSettings.h"

#include <optional>

namespace recorder {

// The parts of the camera settings that belong to a look: keyframes and the
// transition are the content's, not the look's.
struct CameraLook {
    CameraLayout layout = CameraLayout::bubbleBottomRight;
    double bubbleSize = 0.24;
    BubbleShape bubbleShape = BubbleShape::circle;
    bool mirrored = true;
    double borderWidth = 0;
    bool shadow = true;
    std::optional<Uuid> avatarAssetID;
    bool showAvatar = false;

    CameraLook() = default;
    explicit CameraLook(const CameraSettings& camera);

    bool operator==(const CameraLook&) const = default;

    static CameraLook fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
