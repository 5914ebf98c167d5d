#pragma once

#include "json/JsonReader.h"

#include <string>

namespace recorder {

// `display` is the key as it is shown, modifiers included.
struct KeyEvent {
    double time = 0;
    std::string display;
    bool isDown = true;

    bool operator==(const KeyEvent&) const = default;

    static KeyEvent fromJson(const JsonReader& r) {
        return {r.get<double>("time"), r.get<std::string>("display"), r.get<bool>("isDown")};
    }
    nlohmann::json toJson() const { return {{"time", time}, {"display", display}, {"isDown", isDown}}; }
};

} // namespace recorder
