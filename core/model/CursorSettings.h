#pragma once

#include "model/RGBAColor.h"

#include <optional>

namespace recorder {

enum class CursorStyle { arrow, dot, ring };

template <>
struct EnumNames<CursorStyle> {
    static constexpr std::array<std::string_view, 3> names{"arrow", "dot", "ring"};
};

struct CursorSettings {
    bool visible = true;
    double size = 3;
    CursorStyle style = CursorStyle::arrow;
    double smoothing = 0.6;
    bool clickRipples = true;
    RGBAColor clickHighlightColor{0.588, 0.902, 0.631, 0.85};
    double hideWhenIdleAfter = 0; // seconds; 0 never hides
    std::optional<RGBAColor> tint;

    bool operator==(const CursorSettings&) const = default;

    static CursorSettings fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
