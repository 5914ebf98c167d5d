#pragma once

#include "model/BackgroundStyle.h"

namespace recorder {

enum class DeviceFrame { none, macbook, browser };

template <>
struct EnumNames<DeviceFrame> {
    static constexpr std::array<std::string_view, 3> names{"none", "macbook", "browser"};
};

struct StyleSettings {
    BackgroundStyle background = BackgroundStyle::defaultGradient();
    double padding = 0.08;
    double cornerRadius = 16;
    double shadowOpacity = 0.45;
    double shadowRadius = 40;
    double shadowOffsetY = 20;
    DeviceFrame deviceFrame = DeviceFrame::none;
    double motionBlur = 0.5;

    bool operator==(const StyleSettings&) const = default;

    static StyleSettings fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

} // namespace recorder
