#pragma once

#include <optional>
#include <span>
#include <string>

namespace recorder {

// An output size offered by the export sheet and the agent's export tool.
// 0 by 0 means the project's canvas.
struct ExportPreset {
    std::string id;
    std::string name;
    int width = 0;
    int height = 0;
    std::string note;

    bool operator==(const ExportPreset&) const = default;

    static std::span<const ExportPreset> all();
    static const ExportPreset& source();
    static std::optional<ExportPreset> withID(const std::string& id);
};

} // namespace recorder
