#include "model/StyleSettings.h"

namespace recorder {

StyleSettings StyleSettings::fromJson(const JsonReader& r) {
    StyleSettings s;
    s.background = r.get<BackgroundStyle>("background");
    s.padding = r.get<double>("padding");
    s.cornerRadius = r.get<double>("cornerRadius");
    s.shadowOpacity = r.get<double>("shadowOpacity");
    s.shadowRadius = r.get<double>("shadowRadius");
    s.shadowOffsetY = r.get<double>("shadowOffsetY");
    s.deviceFrame = r.get<DeviceFrame>("deviceFrame");
    s.motionBlur = r.get<double>("motionBlur");
    return s;
}

nlohmann::json StyleSettings::toJson() const {
    return {{"background", background.toJson()},   {"padding", padding},
            {"cornerRadius", cornerRadius},         {"shadowOpacity", shadowOpacity},
            {"shadowRadius", shadowRadius},         {"shadowOffsetY", shadowOffsetY},
            {"deviceFrame", encodeJson(deviceFrame)}, {"motionBlur", motionBlur}};
}

} // namespace recorder
