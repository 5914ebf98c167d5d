#include "x11/X11InputMonitor.h"

#include "sink/CaptureError.h"
#include "x11/X11KeyNames.h"
#include "x11/XcbReply.h"

#include <xcb/xinput.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace recorder {

namespace {

enum Keysym : std::uint32_t {
    shiftLeft = 0xffe1, shiftRight = 0xffe2, controlLeft = 0xffe3, controlRight = 0xffe4, metaLeft = 0xffe7,
    metaRight = 0xffe8, altLeft = 0xffe9, altRight = 0xffea, superLeft = 0xffeb, superRight = 0xffec,
};

struct RawEventMask {
    xcb_input_event_mask_t head;
    std::uint32_t bits;
};

} // namespace

X11InputMonitor::X11InputMonitor(const std::string& display) : x_(display) {
    auto* c = x_.get();
    const xcb_query_extension_reply_t* xinput = xcb_get_extension_data(c, &xcb_input_id);
    XcbReply<xcb_input_xi_query_version_reply_t> version(
        xinput && xinput->present ? xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr)
                                  : nullptr);
    if (!version || version->major_version < 2 || (version->major_version == 2 && version->minor_version < 2))
        throw CaptureError::deviceUnavailable("The X server's XInput 2.2 extension");
    xinputOpcode_ = xinput->major_opcode;
    wakeFd_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    loadKeyboardMapping();
    selectRawEvents();
    watchFocus();
    xcb_flush(c);
}

X11InputMonitor::~X11InputMonitor() {
    if (wakeFd_ >= 0) close(wakeFd_);
}

void X11InputMonitor::selectRawEvents() {
    RawEventMask mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                      XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE |
                          XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    xcb_input_xi_select_events(x_.get(), x_.root(), 1, &mask.head);
}

// Focus changes of a grab reach the old and the new focus window and their
// ancestors, so watching the root and every top-level window sees them all.
void X11InputMonitor::watchFocus() {
    auto* c = x_.get();
    std::uint32_t rootEvents = XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(c, x_.root(), XCB_CW_EVENT_MASK, &rootEvents);
    XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, x_.root()), nullptr));
    if (!tree) return;
    xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) watchFocusOf(children[i]);
}

void X11InputMonitor::watchFocusOf(xcb_window_t window) {
    std::uint32_t events = XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(x_.get(), window, XCB_CW_EVENT_MASK, &events);
}

void X11InputMonitor::loadKeyboardMapping() {
    auto* c = x_.get();
    const xcb_setup_t* setup = xcb_get_setup(c);
    minKeycode_ = setup->min_keycode;
    auto count = std::uint8_t(setup->max_keycode - setup->min_keycode + 1);
    XcbReply<xcb_get_keyboard_mapping_reply_t> mapping(
        xcb_get_keyboard_mapping_reply(c, xcb_get_keyboard_mapping(c, setup->min_keycode, count), nullptr));
    if (!mapping) return;
    keysymsPerKeycode_ = mapping->keysyms_per_keycode;
    xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
    keysyms_.assign(keysyms, keysyms + xcb_get_keyboard_mapping_keysyms_length(mapping.get()));
}

std::uint32_t X11InputMonitor::keysym(std::uint32_t keycode, int level) const {
    if (keycode < minKeycode_ || level >= keysymsPerKeycode_) return 0;
    std::size_t index = std::size_t(keycode - minKeycode_) * std::size_t(keysymsPerKeycode_) + std::size_t(level);
    return index < keysyms_.size() ? keysyms_[index] : 0;
}

std::optional<Point> X11InputMonitor::pointerLocation() {
    auto* c = x_.get();
    XcbReply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(c, xcb_query_pointer(c, x_.root()), nullptr));
    if (!pointer) return std::nullopt;
    return Point{double(pointer->root_x), double(pointer->root_y)};
}

void X11InputMonitor::waitForEvents(std::chrono::nanoseconds timeout, const Handlers& handlers) {
    // Replies read since the last wait may have left events in xcb's queue,
    // where polling the socket would not see them.
    handleQueued(handlers);
    if (timeout.count() > 0) {
        pollfd fds[2] = {{xcb_get_file_descriptor(x_.get()), POLLIN, 0}, {wakeFd_, POLLIN, 0}};
        timespec wait{timeout.count() / 1'000'000'000, timeout.count() % 1'000'000'000};
        ppoll(fds, 2, &wait, nullptr);
        std::uint64_t ignored = 0;
        if (fds[1].revents & POLLIN) [[maybe_unused]] auto n = read(wakeFd_, &ignored, sizeof ignored);
    }
    handleQueued(handlers);
}

void X11InputMonitor::wake() {
    std::uint64_t one = 1;
    [[maybe_unused]] auto n = write(wakeFd_, &one, sizeof one);
}

void X11InputMonitor::handleQueued(const Handlers& handlers) {
    while (xcb_generic_event_t* event = xcb_poll_for_event(x_.get())) {
        handle(*event, handlers);
        free(event);
    }
}

void X11InputMonitor::handle(const xcb_generic_event_t& event, const Handlers& handlers) {
    switch (event.response_type & 0x7f) {
    case XCB_GE_GENERIC:
        handleRaw(event, handlers);
        break;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT: {
        auto mode = reinterpret_cast<const xcb_focus_in_event_t&>(event).mode;
        if (mode == XCB_NOTIFY_MODE_GRAB) keyboardGrabbed_ = true;
        if (mode == XCB_NOTIFY_MODE_UNGRAB) keyboardGrabbed_ = false;
        break;
    }
    case XCB_CREATE_NOTIFY: {
        const auto& created = reinterpret_cast<const xcb_create_notify_event_t&>(event);
        if (created.parent == x_.root()) watchFocusOf(created.window);
        xcb_flush(x_.get());
        break;
    }
    case XCB_MAPPING_NOTIFY:
        loadKeyboardMapping();
        break;
    default:
        break;
    }
}

void X11InputMonitor::handleRaw(const xcb_generic_event_t& event, const Handlers& handlers) {
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != xinputOpcode_) return;
    // The raw button and key events share one layout.
    const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    switch (generic.event_type) {
    case XCB_INPUT_RAW_BUTTON_PRESS: handleButton(raw.detail, true, handlers); break;
    case XCB_INPUT_RAW_BUTTON_RELEASE: handleButton(raw.detail, false, handlers); break;
    case XCB_INPUT_RAW_KEY_PRESS:
        handleKey(raw.detail, true, (raw.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0, handlers);
        break;
    case XCB_INPUT_RAW_KEY_RELEASE: handleKey(raw.detail, false, false, handlers); break;
    default: break;
    }
}

// Buttons 4 to 7 are the wheel, one step a press: up, down, left, right.
void X11InputMonitor::handleButton(std::uint32_t button, bool isDown, const Handlers& handlers) {
    if (pointerIsOverOwnPanel()) return;
    if (button >= 4 && button <= 7) {
        if (!isDown || !handlers.scroll) return;
        Scroll scroll;
        if (button == 4) scroll.deltaY = 1;
        if (button == 5) scroll.deltaY = -1;
        if (button == 6) scroll.deltaX = 1;
        if (button == 7) scroll.deltaX = -1;
        handlers.scroll(scroll);
        return;
    }
    ClickEvent::Button which = button == 1 ? ClickEvent::Button::left
                               : button == 3 ? ClickEvent::Button::right
                                             : ClickEvent::Button::other;
    if (handlers.click) handlers.click({which, isDown});
}

void X11InputMonitor::handleKey(std::uint32_t keycode, bool isDown, bool isRepeat, const Handlers& handlers) {
    std::uint32_t base = keysym(keycode, 0);
    bool wasDown = keysDown_.count(keycode) > 0;
    if (isDown) keysDown_.insert(keycode);
    else keysDown_.erase(keycode);
    if (X11KeyNames::isModifier(base) || !handlers.key || focusIsOnOwnWindow()) return;
    Key key;
    key.isDown = isDown;
    key.isRepeat = isDown && (isRepeat || wasDown);
    key.modifiers = modifiersHeld();
    key.name = X11KeyNames::name(base);
    std::uint32_t shifted = key.modifiers.shift ? keysym(keycode, 1) : 0;
    key.characters = X11KeyNames::characters(shifted ? shifted : base);
    handlers.key(key);
}

bool X11InputMonitor::pointerIsOverOwnPanel() {
    auto* c = x_.get();
    XcbReply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(c, xcb_query_pointer(c, x_.root()), nullptr));
    if (!pointer || pointer->child == XCB_NONE) return false;
    return ownership(pointer->child, true).value_or(false);
}

bool X11InputMonitor::focusIsOnOwnWindow() {
    auto* c = x_.get();
    XcbReply<xcb_get_input_focus_reply_t> focus(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    if (!focus || focus->focus == XCB_NONE || focus->focus == x_.root() || focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT)
        return false;
    return ownership(focus->focus, false).value_or(false);
}

std::optional<bool> X11InputMonitor::ownership(xcb_window_t window, bool untitledOnly) {
    auto pid = x_.cardinals(window, "_NET_WM_PID");
    if (pid.empty()) {
        // A frame: the client window sits inside it.
        auto* c = x_.get();
        XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, window), nullptr));
        if (!tree || xcb_query_tree_children_length(tree.get()) != 1) return std::nullopt;
        window = xcb_query_tree_children(tree.get())[0];
        pid = x_.cardinals(window, "_NET_WM_PID");
        if (pid.empty()) return std::nullopt;
    }
    if (pid[0] != std::uint32_t(getpid())) return false;
    return !untitledOnly || x_.text(window, "_NET_WM_NAME").value_or(x_.text(window, "WM_NAME").value_or("")).empty();
}

KeyModifiers X11InputMonitor::modifiersHeld() const {
    KeyModifiers held;
    for (std::uint32_t keycode : keysDown_) {
        switch (keysym(keycode, 0)) {
        case controlLeft: case controlRight: held.control = true; break;
        case altLeft: case altRight: case metaLeft: case metaRight: held.option = true; break;
        case shiftLeft: case shiftRight: held.shift = true; break;
        case superLeft: case superRight: held.command = true; break;
        default: break;
        }
    }
    return held;
}

} // namespace recorder
