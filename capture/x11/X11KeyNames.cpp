#include "x11/X11KeyNames.h"

#include <map>

namespace recorder::X11KeyNames {

namespace {

const std::map<std::uint32_t, std::string>& names() {
    static const std::map<std::uint32_t, std::string> table = {
        {0xff0d, "Return"}, {0xff09, "Tab"},  {0x0020, "Space"}, {0xff08, "Delete"}, {0xff1b, "Esc"},
        {0xff51, "←"},      {0xff53, "→"},    {0xff54, "↓"},     {0xff52, "↑"},      {0xffff, "⌦"},
        {0xff50, "Home"},   {0xff57, "End"},  {0xff55, "PgUp"},  {0xff56, "PgDn"},   {0xffbe, "F1"},
        {0xffbf, "F2"},     {0xffc0, "F3"},   {0xffc1, "F4"},    {0xffc2, "F5"},     {0xffc3, "F6"},
        {0xffc4, "F7"},     {0xffc5, "F8"},   {0xffc6, "F9"},    {0xffc7, "F10"},    {0xffc8, "F11"},
        {0xffc9, "F12"},
    };
    return table;
}

std::string utf8(std::uint32_t codepoint) {
    std::string out;
    if (codepoint < 0x80) {
        out += char(codepoint);
    } else if (codepoint < 0x800) {
        out += char(0xc0 | (codepoint >> 6));
        out += char(0x80 | (codepoint & 0x3f));
    } else if (codepoint < 0x10000) {
        out += char(0xe0 | (codepoint >> 12));
        out += char(0x80 | ((codepoint >> 6) & 0x3f));
        out += char(0x80 | (codepoint & 0x3f));
    } else {
        out += char(0xf0 | (codepoint >> 18));
        out += char(0x80 | ((codepoint >> 12) & 0x3f));
        out += char(0x80 | ((codepoint >> 6) & 0x3f));
        out += char(0x80 | (codepoint & 0x3f));
    }
    return out;
}

} // namespace

std::string name(std::uint32_t keysym) {
    auto found = names().find(keysym);
    return found == names().end() ? std::string() : found->second;
}

std::string characters(std::uint32_t keysym) {
    // Latin-1 keysyms are their own code points; Unicode keysyms carry
    // theirs plus 0x1000000; keypad digits and operators type plain ones.
    if ((keysym >= 0x20 && keysym <= 0x7e) || (keysym >= 0xa0 && keysym <= 0xff)) return utf8(keysym);
    if (keysym >= 0x1000100 && keysym <= 0x110ffff) return utf8(keysym - 0x1000000);
    if (keysym >= 0xffb0 && keysym <= 0xffb9) return utf8('0' + (keysym - 0xffb0));
    switch (keysym) {
    case 0xffaa: return "*";
    case 0xffab: return "+";
    case 0xffad: return "-";
    case 0xffae: return ".";
    case 0xffaf: return "/";
    case 0xffbd: return "=";
    default: return {};
    }
}

bool isModifier(std::uint32_t keysym) {
    // Shift_L…Hyper_R, the ISO level shifts and locks, Mode_switch, Num_Lock.
    return (keysym >= 0xffe1 && keysym <= 0xffee) || (keysym >= 0xfe01 && keysym <= 0xfe13) || keysym == 0xff7e ||
           keysym == 0xff7f;
}

} // namespace recorder::X11KeyNames
