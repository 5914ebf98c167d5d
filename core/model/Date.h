#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

// A moment in whole seconds since 1970 UTC: files keep no finer time, so
// neither does memory, and a saved project compares equal to its reload.
class Date {
public:
    constexpr Date() = default;
    constexpr explicit Date(std::int64_t secondsSince1970) : seconds_(secondsSince1970) {}

    static Date now();
    // "2026-11-15T16:14:47Z", or with an offset such as "+01:00".
    static std::optional<Date> fromIso8601(std::string_view text);

    std::string iso8601() const;
    constexpr std::int64_t secondsSince1970() const { return seconds_; }

    auto operator<=>(const Date&) const = default;

private:
    std::int64_t seconds_ = 0;
};

} // namespace recorder
