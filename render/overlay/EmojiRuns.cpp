#include "overlay/EmojiRuns.h"

#include <algorithm>
#include <array>

namespace recorder::EmojiRuns {

namespace {

// Symbols below U+1F000 that are pictures by default.
constexpr std::array<char32_t, 62> pictureSymbols{
    0x231A, 0x231B, 0x23E9, 0x23EA, 0x23EB, 0x23EC, 0x23F0, 0x23F3, 0x25FD, 0x25FE, 0x2614, 0x2615, 0x2648,
    0x2649, 0x264A, 0x264B, 0x264C, 0x264D, 0x264E, 0x264F, 0x2650, 0x2651, 0x2652, 0x2653, 0x267F, 0x2693,
    0x26A1, 0x26AA, 0x26AB, 0x26BD, 0x26BE, 0x26C4, 0x26C5, 0x26CE, 0x26D4, 0x26EA, 0x26F2, 0x26F3, 0x26F4,
    0x26F5, 0x26FA, 0x26FD, 0x2705, 0x270A, 0x270B, 0x2728, 0x274C, 0x274E, 0x2753, 0x2754, 0x2755, 0x2757,
    0x2795, 0x2796, 0x2797, 0x27B0, 0x27BF, 0x2B1B, 0x2B1C, 0x2B50, 0x2B55, 0x3299};

constexpr char32_t zeroWidthJoiner = 0x200D;
constexpr char32_t pictureSelector = 0xFE0F;

// Marks that belong to the emoji before them.
bool extends(char32_t c) {
    return c == pictureSelector || c == 0x20E3 || (c >= 0x1F3FB && c <= 0x1F3FF) || (c >= 0xE0020 && c <= 0xE007F);
}

bool regionalLetter(char32_t c) { return c >= 0x1F1E6 && c <= 0x1F1FF; }

// A text symbol asked to show as a picture.
bool symbol(char32_t c) { return (c >= 0x2000 && c <= 0x2BFF) || c == 0x3030 || c == 0x303D || c == 0x3297; }

struct Reader {
    const QString& text;
    int at = 0;

    bool done() const { return at >= text.size(); }
    char32_t peek(int offset = 0) const {
        int i = at + offset;
        if (i >= text.size()) return 0;
        QChar high = text[i];
        if (high.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            return QChar::surrogateToUcs4(high, text[i + 1]);
        return high.unicode();
    }
    int width(char32_t c) const { return c > 0xFFFF ? 2 : 1; }
    void skip() { at += width(peek()); }
};

bool startsEmoji(const Reader& reader) {
    char32_t c = reader.peek();
    if (isEmoji(c)) return true;
    char32_t next = reader.peek(reader.width(c));
    return next == pictureSelector && symbol(c);
}

} // namespace

bool isEmoji(char32_t c) {
    return (c >= 0x1F000 && c <= 0x1FAFF) || std::find(pictureSymbols.begin(), pictureSymbols.end(), c) != pictureSymbols.end();
}

std::vector<std::pair<int, int>> find(const QString& text) {
    std::vector<std::pair<int, int>> runs;
    Reader reader{text};
    while (!reader.done()) {
        if (!startsEmoji(reader)) {
            reader.skip();
            continue;
        }
        int start = reader.at;
        char32_t first = reader.peek();
        reader.skip();
        if (regionalLetter(first) && regionalLetter(reader.peek())) reader.skip(); // a flag is two letters
        for (;;) {
            char32_t c = reader.peek();
            if (extends(c)) {
                reader.skip();
            } else if (c == zeroWidthJoiner && reader.peek(1) != 0) {
                reader.skip();
                reader.skip();
            } else {
                break;
            }
        }
        runs.emplace_back(start, reader.at - start);
    }
    return runs;
}

} // namespace recorder::EmojiRuns
