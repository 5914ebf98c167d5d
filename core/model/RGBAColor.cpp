#include "model/RGBAColor.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace recorder {

namespace {

std::string_view trimmed(std::string_view text) {
    auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

int channelByte(double value) { return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255)); }

} // namespace

std::optional<RGBAColor> RGBAColor::fromHex(std::string_view text) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '#') text.remove_prefix(1);
    if (text.size() != 6 && text.size() != 8) return std::nullopt;
    double channels[4] = {0, 0, 0, 1};
    for (std::size_t i = 0; i < text.size(); i += 2) {
        int high = hexDigit(text[i]);
        int low = hexDigit(text[i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        channels[i / 2] = (high * 16 + low) / 255.0;
    }
    return RGBAColor{channels[0], channels[1], channels[2], channels[3]};
}

std::string RGBAColor::hex() const {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X", channelByte(r), channelByte(g), channelByte(b));
    return buffer;
}

RGBAColor RGBAColor::fromJson(const JsonReader& r) {
    return {r.get<double>("r"), r.get<double>("g"), r.get<double>("b"), r.get<double>("a")};
}

nlohmann::json RGBAColor::toJson() const { return {{"r", r}, {"g", g}, {"b", b}, {"a", a}}; }

} // namespace recorder
