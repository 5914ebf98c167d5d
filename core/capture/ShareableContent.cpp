#include "capture/ShareableContent.h"

#include <algorithm>

namespace recorder {

nlohmann::json ShareableContent::Display::toJson() const {
    return {{"id", id}, {"name", name}, {"frame", frame.toJson()}, {"width", width}, {"height", height}};
}

nlohmann::json ShareableContent::Window::toJson() const {
    return {{"id", id}, {"title", title}, {"app", app}, {"bundleID", bundleID}, {"frame", frame.toJson()}};
}

const ShareableContent::Display* ShareableContent::display(std::uint32_t id) const {
    auto found = std::find_if(displays.begin(), displays.end(), [&](const Display& d) { return d.id == id; });
    return found == displays.end() ? nullptr : &*found;
}

const ShareableContent::Window* ShareableContent::window(std::uint32_t id) const {
    auto found = std::find_if(windows.begin(), windows.end(), [&](const Window& w) { return w.id == id; });
    return found == windows.end() ? nullptr : &*found;
}

nlohmann::json ShareableContent::toJson() const {
    nlohmann::json out = {{"displays", nlohmann::json::array()}, {"windows", nlohmann::json::array()}};
    for (const auto& d : displays) out["displays"].push_back(d.toJson());
    for (const auto& w : windows) out["windows"].push_back(w.toJson());
    return out;
}

} // namespace recorder
