#pragma once

#include <cstdint>
#include <optional>

namespace recorder {

// The stored form of a shortcut is the one settings have always kept:
// virtual key codes of a US keyboard and the modifier flags ⌘ 0x100,
// ⇧ 0x200, ⌥ 0x800, ⌃ 0x1000. These translate it to X11.
namespace HotkeyKeys {

// The keysym of a virtual key code: letters, digits, punctuation and the
// special keys; none for a code with no equivalent.
std::optional<std::uint32_t> keysym(std::uint32_t keyCode);
// The X11 modifier mask: ⌘ is Super (Mod4), ⌃ Control, ⌥ Alt (Mod1), ⇧ Shift.
std::uint16_t x11Modifiers(std::uint32_t carbonModifiers);

} // namespace HotkeyKeys
} // namespace recorder
