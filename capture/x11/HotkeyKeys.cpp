#include "x11/HotkeyKeys.h"

#include <xcb/xproto.h>

#include <map>

namespace recorder::HotkeyKeys {

namespace {

const std::map<std::uint32_t, std::uint32_t>& keysyms() {
    static const std::map<std::uint32_t, std::uint32_t> table = {
        // Letters and digits, by their place on a US keyboard.
        {0x00, 'a'}, {0x01, 's'}, {0x02, 'd'}, {0x03, 'f'}, {0x04, 'h'}, {0x05, 'g'}, {0x06, 'z'}, {0x07, 'x'},
        {0x08, 'c'}, {0x09, 'v'}, {0x0b, 'b'}, {0x0c, 'q'}, {0x0d, 'w'}, {0x0e, 'e'}, {0x0f, 'r'}, {0x10, 'y'},
        {0x11, 't'}, {0x12, '1'}, {0x13, '2'}, {0x14, '3'}, {0x15, '4'}, {0x16, '6'}, {0x17, '5'}, {0x18, '='},
        {0x19, '9'}, {0x1a, '7'}, {0x1b, '-'}, {0x1c, '8'}, {0x1d, '0'}, {0x1e, ']'}, {0x1f, 'o'}, {0x20, 'u'},
        {0x21, '['}, {0x22, 'i'}, {0x23, 'p'}, {0x25, 'l'}, {0x26, 'j'}, {0x27, '\''}, {0x28, 'k'}, {0x29, ';'},
        {0x2a, '\\'}, {0x2b, ','}, {0x2c, '/'}, {0x2d, 'n'}, {0x2e, 'm'}, {0x2f, '.'}, {0x32, '`'},
        // Keys with names.
        {0x24, 0xff0d}, {0x30, 0xff09}, {0x31, 0x0020}, {0x33, 0xff08}, {0x35, 0xff1b}, {0x75, 0xffff},
        {0x73, 0xff50}, {0x77, 0xff57}, {0x74, 0xff55}, {0x79, 0xff56}, {0x7b, 0xff51}, {0x7c, 0xff53},
        {0x7d, 0xff54}, {0x7e, 0xff52}, {0x7a, 0xffbe}, {0x78, 0xffbf}, {0x63, 0xffc0}, {0x76, 0xffc1},
        {0x60, 0xffc2}, {0x61, 0xffc3}, {0x62, 0xffc4}, {0x64, 0xffc5}, {0x65, 0xffc6}, {0x6d, 0xffc7},
        {0x67, 0xffc8}, {0x6f, 0xffc9},
    };
    return table;
}

} // namespace

std::optional<std::uint32_t> keysym(std::uint32_t keyCode) {
    auto found = keysyms().find(keyCode);
    if (found == keysyms().end()) return std::nullopt;
    return found->second;
}

std::uint16_t x11Modifiers(std::uint32_t carbonModifiers) {
    std::uint16_t mask = 0;
    if (carbonModifiers & 0x100) mask |= XCB_MOD_MASK_4;
    if (carbonModifiers & 0x200) mask |= XCB_MOD_MASK_SHIFT;
    if (carbonModifiers & 0x800) mask |= XCB_MOD_MASK_1;
    if (carbonModifiers & 0x1000) mask |= XCB_MOD_MASK_CONTROL;
    return mask;
}

} // namespace recorder::HotkeyKeys
