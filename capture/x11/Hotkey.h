#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace recorder {

class X11Connection;

// The global shortcut: a key grab on the root window. Combinations are kept
// in the stored (virtual key code, modifier flags) form of the settings and
// translated to X11 when grabbed.
class Hotkey {
public:
    struct Combo {
        std::uint32_t keyCode = 15;           // R
        std::uint32_t carbonModifiers = 0x1100; // ⌃⌘
        bool operator==(const Combo&) const = default;
    };

    // Modifier flags of the stored form.
    static constexpr std::uint32_t commandFlag = 0x100;
    static constexpr std::uint32_t shiftFlag = 0x200;
    static constexpr std::uint32_t optionFlag = 0x800;
    static constexpr std::uint32_t controlFlag = 0x1000;

    // onPress runs on the hotkey's own thread: the caller hops to its main
    // thread. The display is $DISPLAY when none is given.
    explicit Hotkey(std::function<void()> onPress, std::string display = {});
    ~Hotkey();
    Hotkey(const Hotkey&) = delete;
    Hotkey& operator=(const Hotkey&) = delete;

    // Replaces the present grab. False, with one line in the log, when there
    // is no X server, the key has no X11 equivalent, or another client holds
    // the combination.
    bool registerKey(int keyCode, int modifiers);
    bool registerCombo(const Combo& combo) { return registerKey(int(combo.keyCode), int(combo.carbonModifiers)); }
    void unregister();
    bool isRegistered() const;

    // The stored combination: without a key code the default ⌃⌘R, whatever
    // the modifiers say.
    static Combo storedCombo(std::optional<int> keyCode, std::optional<int> modifiers);
    // "⌃⌘R": modifiers in the order ⌃ ⌥ ⇧ ⌘, then the key; "?" for a key
    // with no name.
    static std::string displayString(const Combo& combo);

private:
    struct Grab {
        std::uint8_t keycode = 0;
        std::uint16_t modifiers = 0;
        std::uint16_t numLock = 0;
    };

    bool connect();
    bool fail(const std::string& why);
    std::optional<std::uint8_t> keycodeFor(std::uint32_t keysym) const;
    std::uint16_t numLockMask() const;
    std::vector<std::uint16_t> lockVariants(std::uint16_t numLock) const;
    bool matches(std::uint8_t keycode, std::uint16_t state) const;
    void listen();

    std::function<void()> onPress_;
    std::string display_;
    std::unique_ptr<X11Connection> connection_;
    mutable std::mutex lock_;
    std::optional<Grab> grab_;
    bool loggedFailure_ = false;
    int wakeFds_[2] = {-1, -1};
    std::thread thread_;
};

} // namespace recorder
