#include "x11/X11Monitor.h"

#include "x11/X11Connection.h"
#include "x11/XcbReply.h"

#include <xcb/randr.h>

#include <algorithm>

namespace recorder {

namespace {

std::string atomName(xcb_connection_t* c, xcb_atom_t atom) {
    XcbReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(c, xcb_get_atom_name(c, atom), nullptr));
    if (!reply) return {};
    return {xcb_get_atom_name_name(reply.get()), std::size_t(xcb_get_atom_name_name_length(reply.get()))};
}

// The product name a monitor reports in its EDID (descriptor tag 0xFC).
std::string edidName(X11Connection& x, xcb_randr_output_t output) {
    auto* c = x.get();
    auto cookie = xcb_randr_get_output_property(c, output, x.atom("EDID"), XCB_ATOM_ANY, 0, 64, 0, 0);
    XcbReply<xcb_randr_get_output_property_reply_t> reply(xcb_randr_get_output_property_reply(c, cookie, nullptr));
    if (!reply || reply->num_items < 128) return {};
    const std::uint8_t* edid = xcb_randr_get_output_property_data(reply.get());
    for (int offset = 54; offset <= 108; offset += 18) {
        const std::uint8_t* block = edid + offset;
        if (block[0] || block[1] || block[2] || block[3] != 0xFC) continue;
        std::string name(reinterpret_cast<const char*>(block + 5), 13);
        name = name.substr(0, name.find('\n'));
        while (!name.empty() && name.back() == ' ') name.pop_back();
        return name;
    }
    return {};
}

std::vector<X11Monitor> wholeScreen(X11Connection& x) {
    X11Monitor monitor;
    monitor.name = "Display";
    monitor.id = X11Monitor::idForName(monitor.name);
    monitor.frame = {0, 0, double(x.screen()->width_in_pixels), double(x.screen()->height_in_pixels)};
    monitor.primary = true;
    return {monitor};
}

} // namespace

std::uint32_t X11Monitor::idForName(const std::string& name) {
    std::uint32_t hash = 2166136261u; // FNV-1a
    for (unsigned char c : name) hash = (hash ^ c) * 16777619u;
    return hash;
}

std::vector<X11Monitor> X11Monitor::list(X11Connection& x) {
    auto* c = x.get();
    auto version = xcb_randr_query_version_reply(c, xcb_randr_query_version(c, 1, 5), nullptr);
    XcbReply<xcb_randr_query_version_reply_t> versionReply(version);
    if (!version || version->major_version < 1 || (version->major_version == 1 && version->minor_version < 5))
        return wholeScreen(x);
    XcbReply<xcb_randr_get_monitors_reply_t> reply(
        xcb_randr_get_monitors_reply(c, xcb_randr_get_monitors(c, x.root(), 1), nullptr));
    if (!reply) return wholeScreen(x);
    std::vector<X11Monitor> monitors;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem; xcb_randr_monitor_info_next(&it)) {
        const xcb_randr_monitor_info_t* info = it.data;
        X11Monitor monitor;
        std::string randrName = atomName(c, info->name);
        monitor.id = idForName(randrName);
        monitor.frame = {double(info->x), double(info->y), double(info->width), double(info->height)};
        monitor.primary = info->primary;
        monitor.name = randrName;
        if (xcb_randr_monitor_info_outputs_length(info) > 0) {
            std::string product = edidName(x, xcb_randr_monitor_info_outputs(info)[0]);
            if (!product.empty()) monitor.name = product;
        }
        monitors.push_back(monitor);
    }
    if (monitors.empty()) return wholeScreen(x);
    std::stable_partition(monitors.begin(), monitors.end(), [](const X11Monitor& m) { return m.primary; });
    return monitors;
}

} // namespace recorder
