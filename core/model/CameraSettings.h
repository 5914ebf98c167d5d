#pragma once

#include "json/JsonReader.h"

#include <optional>
#include <vector>

namespace recorder {

enum class CameraLayout { hidden, bubbleBottomRight, bubbleBottomLeft, bubbleTopRight, bubbleTopLeft, sideBySide, fullScreen };

template <>
struct EnumNames<CameraLayout> {
    static constexpr std::array<std::string_view, 7> names{"hidden",        "bubbleBottomRight", "bubbleBottomLeft",
                                                           "bubbleTopRight", "bubbleTopLeft",     "sideBySide",
                                                           "fullScreen"};
};

enum class BubbleShape { circle, roundedRect };

template <>
struct EnumNames<BubbleShape> {
    static constexpr std::array<std::string_view, 2> names{"circle", "roundedRect"};
};

enum class CameraTransition { instant, smooth, pop, flip, spin, twirl, bounce };

template <>
struct EnumNames<CameraTransition> {
    static constexpr std::array<std::string_view, 7> names{"instant", "smooth", "pop",   "flip",
                                                           "spin",    "twirl",  "bounce"};
};

// From `time` (output seconds) on, `layout` holds.
struct CameraLayoutKeyframe {
    Uuid id;
    double time = 0;
    CameraLayout layout = CameraLayout::bubbleBottomRight;

    bool operator==(const CameraLayoutKeyframe&) const = default;

    static CameraLayoutKeyframe fromJson(const JsonReader& r) {
        return {r.get<Uuid>("id"), r.get<double>("time"), r.get<CameraLayout>("layout")};
    }
    nlohmann::json toJson() const { return {{"id", encodeJson(id)}, {"time", time}, {"layout", encodeJson(layout)}}; }
};

struct CameraSettings {
    CameraLayout layout = CameraLayout::bubbleBottomRight;
    std::vector<CameraLayoutKeyframe> keyframes;
    double bubbleSize = 0.24;
    BubbleShape bubbleShape = BubbleShape::circle;
    bool mirrored = true;
    double borderWidth = 0;
    bool shadow = true;
    std::optional<Uuid> avatarAssetID;
    bool showAvatar = false;
    std::optional<CameraTransition> transition;
    std::optional<double> transitionDuration;

    // What an absent transition or duration means, with the duration's clamp.
    CameraTransition effectiveTransition() const { return transition.value_or(CameraTransition::smooth); }
    double effectiveTransitionDuration() const;

    bool operator==(const CameraSettings&) const = default;

    static CameraSettings fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
