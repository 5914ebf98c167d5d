#include "model/Date.h"

#include <chrono>
#include <cstdio>

namespace recorder {

namespace {

bool readDigits(std::string_view text, std::size_t at, std::size_t count, int& out) {
    if (at + count > text.size()) return false;
    out = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        out = out * 10 + (text[i] - '0');
    }
    return true;
}

std::optional<std::int64_t> offsetSeconds(std::string_view zone) {
    if (zone == "Z") return 0;
    if (zone.size() != 6 && zone.size() != 5) return std::nullopt;
    if (zone[0] != '+' && zone[0] != '-') return std::nullopt;
    int hours = 0, minutes = 0;
    std::size_t minuteAt = zone.size() == 6 ? 4 : 3;
    if (zone.size() == 6 && zone[3] != ':') return std::nullopt;
    if (!readDigits(zone, 1, 2, hours) || !readDigits(zone, minuteAt, 2, minutes)) return std::nullopt;
    if (hours > 23 || minutes > 59) return std::nullopt;
    std::int64_t seconds = hours * 3600 + minutes * 60;
    return zone[0] == '-' ? -seconds : seconds;
}

} // namespace

Date Date::now() {
    using namespace std::chrono;
    return Date(duration_cast<seconds>(system_clock::now().time_since_epoch()).count());
}

std::optional<Date> Date::fromIso8601(std::string_view text) {
    using namespace std::chrono;
    int y, mo, d, h, mi, s;
    if (text.size() < 20 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':' || text[16] != ':')
        return std::nullopt;
    if (!readDigits(text, 0, 4, y) || !readDigits(text, 5, 2, mo) || !readDigits(text, 8, 2, d) ||
        !readDigits(text, 11, 2, h) || !readDigits(text, 14, 2, mi) || !readDigits(text, 17, 2, s))
        return std::nullopt;
    year_month_day day{year{y}, month{static_cast<unsigned>(mo)}, std::chrono::day{static_cast<unsigned>(d)}};
    if (!day.ok() || h > 23 || mi > 59 || s > 60) return std::nullopt;
    auto offset = offsetSeconds(text.substr(19));
    if (!offset) return std::nullopt;
    std::int64_t days = sys_days(day).time_since_epoch().count();
    return Date(days * 86400 + h * 3600 + mi * 60 + s - *offset);
}

std::string Date::iso8601() const {
    using namespace std::chrono;
    std::int64_t days = seconds_ / 86400;
    std::int64_t rest = seconds_ % 86400;
    if (rest < 0) { rest += 86400; --days; }
    year_month_day day{sys_days{std::chrono::days{days}}};
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), static_cast<int>(rest / 3600),
                  static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60));
    return buffer;
}

} // namespace recorder
