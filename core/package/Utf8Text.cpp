#include "package/Utf8Text.h"

#include <algorithm>

namespace recorder::Utf8Text {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool inRange(char32_t c, char32_t low, char32_t high) { return c >= low && c <= high; }

bool isExtender(char32_t c) {
    return inRange(c, 0x0300, 0x036F) || inRange(c, 0x1AB0, 0x1AFF) || inRange(c, 0x1DC0, 0x1DFF) ||
           inRange(c, 0x20D0, 0x20FF) || inRange(c, 0xFE00, 0xFE0F) || inRange(c, 0xFE20, 0xFE2F) ||
           inRange(c, 0x1F3FB, 0x1F3FF) || inRange(c, 0xE0020, 0xE007F) || inRange(c, 0xE0100, 0xE01EF) ||
           c == 0x200D;
}

bool isRegionalIndicator(char32_t c) { return inRange(c, 0x1F1E6, 0x1F1FF); }

int sequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if ((lead >> 5) == 0x6) return 2;
    if ((lead >> 4) == 0xE) return 3;
    if ((lead >> 3) == 0x1E) return 4;
    return 0;
}

} // namespace

std::vector<char32_t> decode(std::string_view text) {
    std::vector<char32_t> out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        auto lead = static_cast<unsigned char>(text[i]);
        int length = sequenceLength(lead);
        if (length == 0 || i + length > text.size()) {
            out.push_back(replacement);
            ++i;
            continue;
        }
        char32_t c = length == 1 ? lead : lead & (0x7F >> length);
        bool valid = true;
        for (int k = 1; k < length; ++k) {
            auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) valid = false;
            c = (c << 6) | (next & 0x3F);
        }
        out.push_back(valid ? c : replacement);
        i += valid ? length : 1;
    }
    return out;
}

std::string encode(const std::vector<char32_t>& codePoints) {
    std::string out;
    out.reserve(codePoints.size());
    for (char32_t c : codePoints) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

// Control and format characters (general categories Cc and Cf).
bool isControl(char32_t c) {
    return c < 0x20 || inRange(c, 0x7F, 0x9F) || c == 0xAD || inRange(c, 0x600, 0x605) || c == 0x61C ||
           c == 0x6DD || c == 0x70F || c == 0x180E || inRange(c, 0x200B, 0x200F) || inRange(c, 0x202A, 0x202E) ||
           inRange(c, 0x2060, 0x2064) || inRange(c, 0x2066, 0x206F) || c == 0xFEFF || inRange(c, 0xFFF9, 0xFFFB) ||
           c == 0x110BD || c == 0xE0001 || inRange(c, 0xE0020, 0xE007F);
}

bool isBlank(char32_t c) {
    return c == ' ' || c == '\t' || c == 0xA0 || c == 0x1680 || inRange(c, 0x2000, 0x200A) || c == 0x202F ||
           c == 0x205F || c == 0x3000;
}

std::vector<char32_t> trimmedBlanks(const std::vector<char32_t>& text) {
    auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isBlank).base();
    return {first, last};
}

void removeLastCharacter(std::vector<char32_t>& text) {
    while (!text.empty()) {
        while (!text.empty() && isExtender(text.back())) text.pop_back();
        if (text.empty()) return;
        char32_t base = text.back();
        text.pop_back();
        if (isRegionalIndicator(base) && !text.empty() && isRegionalIndicator(text.back())) {
            text.pop_back();
            return;
        }
        if (text.empty() || text.back() != 0x200D) return;
        text.pop_back(); // joined to the character before: that one goes too
    }
}

} // namespace recorder::Utf8Text
