#include "x11/X11Connection.h"

#include "sink/CaptureError.h"
#include "x11/XcbReply.h"

namespace recorder {

X11Connection::X11Connection(const std::string& display) {
    int screenNumber = 0;
    connection_ = xcb_connect(display.empty() ? nullptr : display.c_str(), &screenNumber);
    if (xcb_connection_has_error(connection_)) {
        xcb_disconnect(connection_);
        throw CaptureError::noContent();
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (int i = 0; i < screenNumber && screens.rem; ++i) xcb_screen_next(&screens);
    screen_ = screens.data;
}

X11Connection::~X11Connection() { xcb_disconnect(connection_); }

xcb_atom_t X11Connection::atom(const std::string& name) {
    auto known = atoms_.find(name);
    if (known != atoms_.end()) return known->second;
    auto cookie = xcb_intern_atom(connection_, 0, std::uint16_t(name.size()), name.c_str());
    XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    atoms_[name] = value;
    return value;
}

std::vector<std::uint8_t> X11Connection::bytes(xcb_window_t window, xcb_atom_t property) {
    auto cookie = xcb_get_property(connection_, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 16);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) return {};
    auto* data = static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get()));
    int length = xcb_get_property_value_length(reply.get());
    return {data, data + length};
}

std::optional<std::string> X11Connection::text(xcb_window_t window, const std::string& property) {
    auto cookie = xcb_get_property(connection_, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 16);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE || reply->format != 8) return std::nullopt;
    auto* data = static_cast<const char*>(xcb_get_property_value(reply.get()));
    return std::string(data, std::size_t(xcb_get_property_value_length(reply.get())));
}

std::vector<std::uint32_t> X11Connection::cardinals(xcb_window_t window, const std::string& property) {
    auto cookie = xcb_get_property(connection_, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 16);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply || reply->format != 32) return {};
    auto* data = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {data, data + reply->value_len};
}

} // namespace recorder
