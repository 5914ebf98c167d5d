#pragma once

#include "model/Point.h"

namespace recorder {

// A button press (isDown) or release, in source seconds.
struct ClickEvent {
    enum class Button { left, right, other };

    double time = 0;
    Point position;
    Button button = Button::left;
    bool isDown = true;

    bool operator==(const ClickEvent&) const = default;

    static ClickEvent fromJson(const JsonReader& r);
    nlohmann::json toJson() const;
};

template <>
struct EnumNames<ClickEvent::Button> {
    static constexpr std::array<std::string_view, 3> names{"left", "right", "other"};
};

inline ClickEvent ClickEvent::fromJson(const JsonReader& r) {
    return {r.get<double>("time"), r.get<Point>("position"), r.get<Button>("button"), r.get<bool>("isDown")};
}

inline nlohmann::json ClickEvent::toJson() const {
    return {{"time", time}, {"position", position.toJson()}, {"button", encodeJson(button)}, {"isDown", isDown}};
}

} // namespace recorder
