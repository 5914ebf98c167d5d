#pragma once

#include "json/JsonReader.h"

#include <optional>
#include <string>

namespace recorder {

struct AudioSettings {
    double micVolume = 1;
    double systemVolume = 1;
    bool micMuted = false;
    bool systemMuted = false;
    bool micNoiseRemoval = false;
    bool micLeveling = false;
    bool duckMusic = false;
    double duckLevel = 0.25;

    // "mic.clean-{n}{l}.m4a" for the flags that are on; none when neither is.
    std::optional<std::string> cleanedMicFileName() const;

    bool operator==(const AudioSettings&) const = default;

    static AudioSettings fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
