#include "audio/AudioLog.h"

#include <cstdio>

namespace recorder {

void logToStandardError(const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); }

} // namespace recorder
