#include "model/AudioSettings.h"

namespace recorder {

std::optional<std::string> AudioSettings::cleanedMicFileName() const {
    if (!micNoiseRemoval && !micLeveling) return std::nullopt;
    return std::string("mic.clean-") + (micNoiseRemoval ? "n" : "") + (micLeveling ? "l" : "") + ".m4a";
}

AudioSettings AudioSettings::fromJson(const JsonReader& r) {
    AudioSettings a;
    a.micVolume = r.get<double>("micVolume");
    a.systemVolume = r.get<double>("systemVolume");
    a.micMuted = r.get<bool>("micMuted");
    a.systemMuted = r.get<bool>("systemMuted");
    a.micNoiseRemoval = r.get<bool>("micNoiseRemoval");
    a.micLeveling = r.get<bool>("micLeveling");
    a.duckMusic = r.get<bool>("duckMusic");
    a.duckLevel = r.get<double>("duckLevel");
    return a;
}

nlohmann::json AudioSettings::toJson() const {
    return {{"micVolume", micVolume},     {"systemVolume", systemVolume},
            {"micMuted", micMuted},       {"systemMuted", systemMuted},
            {"micNoiseRemoval", micNoiseRemoval}, {"micLeveling", micLeveling},
            {"duckMusic", duckMusic},     {"duckLevel", duckLevel}};
}

} // namespace recorder
