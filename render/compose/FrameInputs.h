#pragma once

#include "compose/SourceImage.h"
#include "model/Uuid.h"

#include <map>

namespace recorder {

// The decoded pictures of one frame. A null picture is one that isn't
// there; its layer is left out.
struct FrameInputs {
    // Project time in seconds.
    double time = 0;
    SourceImage screen;
    // The camera frame, or the avatar picture.
    SourceImage camera;
    // The frame of each visible media item, by `MediaItem.id`.
    std::map<Uuid, SourceImage> mediaImages;
    // An avatar is never mirrored.
    bool cameraIsAvatar = false;
    // The picture of the person's watermark.
    SourceImage logoImage;
};

} // namespace recorder
