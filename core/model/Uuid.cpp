#include "model/Uuid.h"

#include <random>

namespace recorder {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isHyphenPosition(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

} // namespace

Uuid Uuid::random() {
    thread_local std::mt19937_64 engine{std::random_device{}()};
    Uuid id;
    for (std::size_t i = 0; i < 16; i += 8) {
        std::uint64_t word = engine();
        for (std::size_t j = 0; j < 8; ++j) id.bytes_[i + j] = static_cast<std::uint8_t>(word >> (8 * j));
    }
    id.bytes_[6] = static_cast<std::uint8_t>((id.bytes_[6] & 0x0F) | 0x40);
    id.bytes_[8] = static_cast<std::uint8_t>((id.bytes_[8] & 0x3F) | 0x80);
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    Uuid id;
    std::size_t byte = 0;
    for (std::size_t i = 0; i < 36;) {
        if (isHyphenPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            ++i;
            continue;
        }
        int high = hexValue(text[i]);
        int low = hexValue(text[i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        id.bytes_[byte++] = static_cast<std::uint8_t>(high * 16 + low);
        i += 2;
    }
    return id;
}

std::string Uuid::string() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(36);
    for (std::size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        out += digits[bytes_[i] >> 4];
        out += digits[bytes_[i] & 0x0F];
    }
    return out;
}

bool Uuid::isNull() const {
    for (auto b : bytes_)
        if (b != 0) return false;
    return true;
}

} // namespace recorder
