#pragma once

#include <string>
#include <string_view>
#include <vector>

// Just enough Unicode for file names: code points, control and blank
// characters, and removing the last user-perceived character.
namespace recorder::Utf8Text {

std::vector<char32_t> decode(std::string_view text);
std::string encode(const std::vector<char32_t>& codePoints);

bool isControl(char32_t c);
bool isBlank(char32_t c);

std::vector<char32_t> trimmedBlanks(const std::vector<char32_t>& text);
// Drops a whole character: a base with its combining marks, variation
// selectors, skin tones and joined emoji, or a flag's pair of letters.
void removeLastCharacter(std::vector<char32_t>& text);

} // namespace recorder::Utf8Text
