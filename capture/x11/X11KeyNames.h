#pragma once

#include <cstdint>
#include <string>

namespace recorder {

// What the key display calls a key, by X keysym.
namespace X11KeyNames {

// The names of the keys that have one ("Return", "Tab", "Space", "Delete"
// for backspace, "⌦" for forward delete, "Esc", arrows, "Home", "End",
// "PgUp", "PgDn", "F1"…"F12"); empty for any other key.
std::string name(std::uint32_t keysym);
// The text a keysym types, in UTF-8; empty when it types none.
std::string characters(std::uint32_t keysym);
// Shift, Control, Alt, Super and the like: they change other keys.
bool isModifier(std::uint32_t keysym);

} // namespace X11KeyNames
} // namespace recorder
