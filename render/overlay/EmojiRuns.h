#pragma once

#include <QString>

#include <utility>
#include <vector>

// Where a text's emoji are, so they can be set in the colour emoji font:
// the sans face has black-and-white drawings of many of them, which font
// fallback would otherwise pick.
namespace recorder::EmojiRuns {

// Each run as (start, length) in UTF-16 units, in order. A run holds one
// emoji or a joined sequence (ZWJ, skin tones, variation selectors, flags).
std::vector<std::pair<int, int>> find(const QString& text);

// Shown as a picture by default, without a variation selector.
bool isEmoji(char32_t c);

} // namespace recorder::EmojiRuns
