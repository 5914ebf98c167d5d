#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

// A random identifier, written upper case and hyphenated as files expect.
class Uuid {
public:
    Uuid() = default;

    static Uuid random();
    static std::optional<Uuid> parse(std::string_view text);

    std::string string() const;
    bool isNull() const;

    auto operator<=>(const Uuid&) const = default;

private:
    std::array<std::uint8_t, 16> bytes_{};
};

} // namespace recorder
