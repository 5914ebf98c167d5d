#include "export/FilenamePattern.h"

#include <cstdio>
#include <ctime>

namespace recorder::FilenamePattern {

std::string name(std::string_view projectName, Date date, std::string_view extension) {
    std::string base(projectName);
    for (char& c : base)
        if (c == '/' || c == ':') c = '-';
    if (base.empty()) base = "Recording";

    // Digits only, so no locale can change the result.
    std::time_t seconds = static_cast<std::time_t>(date.secondsSince1970());
    std::tm local{};
    localtime_r(&seconds, &local);
    char stamp[40];
    std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d at %02d.%02d", local.tm_year + 1900, local.tm_mon + 1,
                  local.tm_mday, local.tm_hour, local.tm_min);
    return base + " " + stamp + "." + std::string(extension);
}

} // namespace recorder::FilenamePattern
