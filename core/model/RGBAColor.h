#pragma once

#include "json/JsonReader.h"

#include <optional>
#include <string>
#include <string_view>

namespace recorder {

struct RGBAColor {
    double r = 0;
    double g = 0;
    double b = 0;
    double a = 1;

    // "#RRGGBB" or "#RRGGBBAA", either case, blanks around and the "#" optional.
    static std::optional<RGBAColor> fromHex(std::string_view text);
    // "#RRGGBB": alpha is not written.
    std::string hex() const;

    bool operator==(const RGBAColor&) const = default;

    static RGBAColor fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
