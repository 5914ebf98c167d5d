#pragma once

#include <functional>
#include <string>

namespace recorder {

// Where the sound code tells of a failure it swallowed: one line each.
using AudioLog = std::function<void(const std::string& line)>;

// Writes the line to the standard error.
void logToStandardError(const std::string& line);

} // namespace recorder
