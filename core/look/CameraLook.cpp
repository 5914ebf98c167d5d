#include "look/CameraLook.h"

namespace recorder {

CameraLook::CameraLook(const CameraSettings& camera)
    : layout(camera.layout), bubbleSize(camera.bubbleSize), bubbleShape(camera.bubbleShape),
      mirrored(camera.mirrored), borderWidth(camera.borderWidth), shadow(camera.shadow),
      avatarAssetID(camera.avatarAssetID), showAvatar(camera.showAvatar) {}

CameraLook CameraLook::fromJson(const JsonReader& r) {
    CameraLook c;
    c.layout = r.get<CameraLayout>("layout");
    c.bubbleSize = r.get<double>("bubbleSize");
    c.bubbleShape = r.get<BubbleShape>("bubbleShape");
    c.mirrored = r.get<bool>("mirrored");
    c.borderWidth = r.get<double>("borderWidth");
    c.shadow = r.get<bool>("shadow");
    c.avatarAssetID = r.getOptional<Uuid>("avatarAssetID");
    c.showAvatar = r.get<bool>("showAvatar");
    return c;
}

nlohmann::json CameraLook::toJson() const {
    nlohmann::json j{{"layout", encodeJson(layout)},   {"bubbleSize", bubbleSize}, {"bubbleShape", encodeJson(bubbleShape)},
                     {"mirrored", mirrored},           {"borderWidth", borderWidth}, {"shadow", shadow},
                     {"showAvatar", showAvatar}};
    putOptional(j, "avatarAssetID", avatarAssetID);
    return j;
}

} // namespace recorder
