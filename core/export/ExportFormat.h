#pragma once

#include "json/EnumNames.h"

#include <array>
#include <string_view>

namespace recorder {

enum class ExportFormat { mp4H264, mp4HEVC, gif };

template <>
struct EnumNames<ExportFormat> {
    static constexpr std::array<std::string_view, 3> names{"mp4H264", "mp4HEVC", "gif"};
};

// "mp4" or "gif": the file's extension.
std::string_view fileExtension(ExportFormat format);

} // namespace recorder
