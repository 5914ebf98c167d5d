#include "model/CameraSettings.h"

#include <algorithm>

namespace recorder {

double CameraSettings::effectiveTransitionDuration() const {
    return std::clamp(transitionDuration.value_or(0.6), 0.1, 3.0);
}

CameraSettings CameraSettings::fromJson(const JsonReader& r) {
    CameraSettings c;
    c.layout = r.get<CameraLayout>("layout");
    c.keyframes = r.get<std::vector<CameraLayoutKeyframe>>("keyframes");
    c.bubbleSize = r.get<double>("bubbleSize");
    c.bubbleShape = r.get<BubbleShape>("bubbleShape");
    c.mirrored = r.get<bool>("mirrored");
    c.borderWidth = r.get<double>("borderWidth");
    c.shadow = r.get<bool>("shadow");
    c.avatarAssetID = r.getOptional<Uuid>("avatarAssetID");
    c.showAvatar = r.get<bool>("showAvatar");
    c.transition = r.getOptional<CameraTransition>("transition");
    c.transitionDuration = r.getOptional<double>("transitionDuration");
    return c;
}

nlohmann::json CameraSettings::toJson() const {
    nlohmann::json j{{"layout", encodeJson(layout)},
                     {"keyframes", encodeJson(keyframes)},
                     {"bubbleSize", bubbleSize},
                     {"bubbleShape", encodeJson(bubbleShape)},
                     {"mirrored", mirrored},
                     {"borderWidth", borderWidth},
                     {"shadow", shadow},
                     {"showAvatar", showAvatar}};
    putOptional(j, "avatarAssetID", avatarAssetID);
    putOptional(j, "transition", transition);
    putOptional(j, "transitionDuration", transitionDuration);
    return j;
}

} // namespace recorder
