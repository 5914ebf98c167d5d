#pragma once

#include "look/Look.h"

#include <map>
#include <string>

namespace recorder {

// A look saved by name. Its folder is named by `id`; `files` gives, for each
// asset the look refers to, the path of its copy relative to that folder.
struct LookPreset {
    Uuid id;
    std::string name;
    Date savedAt;
    Look look;
    std::map<Uuid, std::string> files;

    bool operator==(const LookPreset&) const = default;

    static LookPreset fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
