#pragma once

#include "model/Date.h"

#include <string>
#include <string_view>

namespace recorder {

// Names of exported files: "{name} yyyy-MM-dd 'at' HH.mm.{ext}", the same in
// every language.
namespace FilenamePattern {

// The date is shown in the local time zone.
std::string name(std::string_view projectName, Date date, std::string_view extension);

} // namespace FilenamePattern

} // namespace recorder
