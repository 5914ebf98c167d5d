#include "x11/Hotkey.h"

#include "log/Log.h"
#include "x11/HotkeyKeys.h"
#include "x11/X11Connection.h"
#include "x11/X11KeyNames.h"
#include "x11/XcbReply.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace recorder {

namespace {

constexpr std::uint32_t numLockKeysym = 0xff7f;

} // namespace

Hotkey::Hotkey(std::function<void()> onPress, std::string display)
    : onPress_(std::move(onPress)), display_(std::move(display)) {}

Hotkey::~Hotkey() {
    unregister();
    if (thread_.joinable()) {
        char wake = 1;
        [[maybe_unused]] auto written = write(wakeFds_[1], &wake, 1);
        thread_.join();
    }
    for (int fd : wakeFds_)
        if (fd >= 0) close(fd);
}

bool Hotkey::fail(const std::string& why) {
    // Taken combinations are common and harmless: said once, not on every try.
    if (!loggedFailure_) Log::info("capture", "The global shortcut isn't available: " + why);
    loggedFailure_ = true;
    return false;
}

bool Hotkey::connect() {
    if (connection_) return !connection_->hasFailed();
    try {
        connection_ = std::make_unique<X11Connection>(display_);
    } catch (const std::exception&) {
        return false;
    }
    if (pipe2(wakeFds_, O_CLOEXEC) != 0) {
        connection_.reset();
        return false;
    }
    thread_ = std::thread([this] { listen(); });
    return true;
}

bool Hotkey::registerKey(int keyCode, int modifiers) {
    unregister();
    auto keysym = HotkeyKeys::keysym(std::uint32_t(keyCode));
    if (!keysym) return fail("key code " + std::to_string(keyCode) + " has no X11 key");
    if (!connect()) return fail("no X server");
    auto keycode = keycodeFor(*keysym);
    if (!keycode) return fail("the keyboard has no key for " + displayString({std::uint32_t(keyCode), 0}));
    Grab grab{*keycode, HotkeyKeys::x11Modifiers(std::uint32_t(modifiers)), numLockMask()};
    xcb_connection_t* c = connection_->get();
    // Caps Lock and Num Lock count as modifiers to X: the same combination is
    // grabbed with each of them on, or it would stop working when they are.
    std::vector<xcb_void_cookie_t> cookies;
    for (auto variant : lockVariants(grab.numLock))
        cookies.push_back(xcb_grab_key_checked(c, 1, connection_->root(), std::uint16_t(grab.modifiers | variant),
                                               grab.keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    bool taken = false;
    for (auto cookie : cookies)
        if (XcbReply<xcb_generic_error_t> error{xcb_request_check(c, cookie)}) taken = true;
    if (taken) {
        for (auto variant : lockVariants(grab.numLock))
            xcb_ungrab_key(c, grab.keycode, connection_->root(), std::uint16_t(grab.modifiers | variant));
        xcb_flush(c);
        return fail(displayString({std::uint32_t(keyCode), std::uint32_t(modifiers)}) + " is taken by another program");
    }
    std::lock_guard guard(lock_);
    grab_ = grab;
    return true;
}

void Hotkey::unregister() {
    std::optional<Grab> grab;
    {
        std::lock_guard guard(lock_);
        grab.swap(grab_);
    }
    if (!grab || !connection_) return;
    for (auto variant : lockVariants(grab->numLock))
        xcb_ungrab_key(connection_->get(), grab->keycode, connection_->root(), std::uint16_t(grab->modifiers | variant));
    xcb_flush(connection_->get());
}

bool Hotkey::isRegistered() const {
    std::lock_guard guard(lock_);
    return grab_.has_value();
}

std::vector<std::uint16_t> Hotkey::lockVariants(std::uint16_t numLock) const {
    std::vector<std::uint16_t> variants = {0, XCB_MOD_MASK_LOCK};
    if (numLock) variants.insert(variants.end(), {numLock, std::uint16_t(numLock | XCB_MOD_MASK_LOCK)});
    return variants;
}

std::optional<std::uint8_t> Hotkey::keycodeFor(std::uint32_t keysym) const {
    xcb_connection_t* c = connection_->get();
    const xcb_setup_t* setup = xcb_get_setup(c);
    auto count = std::uint8_t(setup->max_keycode - setup->min_keycode + 1);
    XcbReply<xcb_get_keyboard_mapping_reply_t> reply{
        xcb_get_keyboard_mapping_reply(c, xcb_get_keyboard_mapping(c, setup->min_keycode, count), nullptr)};
    if (!reply || reply->keysyms_per_keycode == 0) return std::nullopt;
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(reply.get());
    int length = xcb_get_keyboard_mapping_keysyms_length(reply.get());
    int perKeycode = reply->keysyms_per_keycode;
    // The unshifted symbol of a key names it; a shifted one only if no key
    // has it unshifted.
    for (int level = 0; level < std::min(perKeycode, 2); ++level)
        for (int i = level; i < length; i += perKeycode)
            if (keysyms[i] == keysym) return std::uint8_t(setup->min_keycode + i / perKeycode);
    return std::nullopt;
}

std::uint16_t Hotkey::numLockMask() const {
    auto keycode = keycodeFor(numLockKeysym);
    if (!keycode) return 0;
    xcb_connection_t* c = connection_->get();
    XcbReply<xcb_get_modifier_mapping_reply_t> reply{xcb_get_modifier_mapping_reply(c, xcb_get_modifier_mapping(c), nullptr)};
    if (!reply) return 0;
    const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(reply.get());
    int perModifier = reply->keycodes_per_modifier;
    for (int modifier = 0; modifier < 8; ++modifier)
        for (int i = 0; i < perModifier; ++i)
            if (keycodes[modifier * perModifier + i] == *keycode) return std::uint16_t(1 << modifier);
    return 0;
}

bool Hotkey::matches(std::uint8_t keycode, std::uint16_t state) const {
    std::lock_guard guard(lock_);
    if (!grab_ || grab_->keycode != keycode) return false;
    auto relevant = std::uint16_t(state & ~(XCB_MOD_MASK_LOCK | grab_->numLock) & 0xff);
    return relevant == grab_->modifiers;
}

void Hotkey::listen() {
    xcb_connection_t* c = connection_->get();
    pollfd fds[2] = {{xcb_get_file_descriptor(c), POLLIN, 0}, {wakeFds_[0], POLLIN, 0}};
    while (!xcb_connection_has_error(c)) {
        while (XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(c)}) {
            if ((event->response_type & 0x7f) != XCB_KEY_PRESS) continue;
            auto* press = reinterpret_cast<xcb_key_press_event_t*>(event.get());
            if (matches(press->detail, press->state) && onPress_) onPress_();
        }
        // Bounded: another thread's round trip may read our events off the
        // socket, leaving them queued with nothing to wake the poll.
        if (poll(fds, 2, 100) < 0 && errno != EINTR) return;
        if (fds[1].revents) return;
    }
}

Hotkey::Combo Hotkey::storedCombo(std::optional<int> keyCode, std::optional<int> modifiers) {
    if (!keyCode) return Combo{};
    return Combo{std::uint32_t(*keyCode), std::uint32_t(modifiers.value_or(int(Combo{}.carbonModifiers)))};
}

std::string Hotkey::displayString(const Combo& combo) {
    std::string out;
    if (combo.carbonModifiers & controlFlag) out += "⌃";
    if (combo.carbonModifiers & optionFlag) out += "⌥";
    if (combo.carbonModifiers & shiftFlag) out += "⇧";
    if (combo.carbonModifiers & commandFlag) out += "⌘";
    auto keysym = HotkeyKeys::keysym(combo.keyCode);
    if (!keysym) return out + "?";
    if (auto name = X11KeyNames::name(*keysym); !name.empty()) return out + name;
    std::string key = X11KeyNames::characters(*keysym);
    if (key.empty()) return out + "?";
    std::transform(key.begin(), key.end(), key.begin(), [](unsigned char ch) { return char(std::toupper(ch)); });
    return out + key;
}

} // namespace recorder
