#include "x11/X11ShareableContent.h"

#include "x11/X11Connection.h"
#include "x11/X11Monitor.h"
#include "x11/XcbReply.h"

#include <algorithm>
#include <unistd.h>

namespace recorder {

namespace {

constexpr double minimumWidth = 80;
constexpr double minimumHeight = 60;

bool contains(const std::vector<std::uint32_t>& list, std::uint32_t value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

// WM_CLASS holds two strings: the instance name and the class name.
std::pair<std::string, std::string> windowClass(X11Connection& x, xcb_window_t window) {
    auto value = x.text(window, "WM_CLASS");
    if (!value) return {};
    std::string instance = value->substr(0, value->find('\0'));
    std::string rest = instance.size() < value->size() ? value->substr(instance.size() + 1) : "";
    return {instance, rest.substr(0, rest.find('\0'))};
}

} // namespace

ShareableContent X11ShareableContent::load(X11Connection& x) {
    ShareableContent content;
    for (const auto& monitor : X11Monitor::list(x))
        content.displays.push_back({monitor.id, monitor.name, monitor.frame, int(monitor.frame.width), int(monitor.frame.height)});
    for (xcb_window_t window : topLevelWindows(x)) {
        auto described = describe(x, window);
        if (described && isOffered(x, window, *described)) content.windows.push_back(*described);
    }
    return content;
}

// The window manager's stacking list when there is one, else the root's
// children; both run bottom to top, and the list is wanted front first.
std::vector<xcb_window_t> X11ShareableContent::topLevelWindows(X11Connection& x) {
    std::vector<xcb_window_t> windows = x.cardinals(x.root(), "_NET_CLIENT_LIST_STACKING");
    if (windows.empty()) {
        auto* c = x.get();
        XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, x.root()), nullptr));
        if (tree) {
            xcb_window_t* children = xcb_query_tree_children(tree.get());
            windows.assign(children, children + xcb_query_tree_children_length(tree.get()));
        }
    }
    std::reverse(windows.begin(), windows.end());
    return windows;
}

std::optional<ShareableContent::Window> X11ShareableContent::describe(X11Connection& x, xcb_window_t window,
                                                                      bool onScreenOnly) {
    auto* c = x.get();
    auto attributesCookie = xcb_get_window_attributes(c, window);
    auto geometryCookie = xcb_get_geometry(c, window);
    auto placeCookie = xcb_translate_coordinates(c, window, x.root(), 0, 0);
    XcbReply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(c, attributesCookie, nullptr));
    XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, geometryCookie, nullptr));
    XcbReply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(c, placeCookie, nullptr));
    if (!attributes || !geometry || !place) return std::nullopt;
    if (onScreenOnly && attributes->map_state != XCB_MAP_STATE_VIEWABLE) return std::nullopt;
    auto [instance, className] = windowClass(x, window);
    std::string title = x.text(window, "_NET_WM_NAME").value_or(x.text(window, "WM_NAME").value_or(""));
    ShareableContent::Window described;
    described.id = window;
    described.title = title;
    described.app = className.empty() ? instance : className;
    described.bundleID = instance;
    described.frame = {double(place->dst_x), double(place->dst_y), double(geometry->width), double(geometry->height)};
    return described;
}

bool X11ShareableContent::isOffered(X11Connection& x, xcb_window_t window, const ShareableContent::Window& w) {
    auto* c = x.get();
    XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr));
    // On screen, and not a menu or tooltip (override-redirect).
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE || attributes->override_redirect) return false;
    if (w.app.empty()) return false;
    auto pid = x.cardinals(window, "_NET_WM_PID");
    if (!pid.empty() && pid[0] == std::uint32_t(getpid()) && w.title.empty()) return false;
    if (w.frame.width < minimumWidth || w.frame.height < minimumHeight) return false;
    // Normal windows only: docks, panels, notifications and windows kept
    // above the others stand in other layers.
    auto types = x.cardinals(window, "_NET_WM_WINDOW_TYPE");
    if (!types.empty() && !contains(types, x.atom("_NET_WM_WINDOW_TYPE_NORMAL"))) return false;
    auto states = x.cardinals(window, "_NET_WM_STATE");
    return !contains(states, x.atom("_NET_WM_STATE_ABOVE")) && !contains(states, x.atom("_NET_WM_STATE_HIDDEN"));
}

} // namespace recorder
