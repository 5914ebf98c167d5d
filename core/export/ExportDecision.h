#pragma once

#include "export/ExportPreset.h"
#include "model/Project.h"
#include "model/WatermarkSettings.h"
#include "model/WatermarkSpec.h"

#include <optional>
#include <string>

namespace recorder {

// What one export does: its marks, its length and its size.
struct ExportDecision {
    std::optional<WatermarkSpec> watermark;
    std::optional<WatermarkSettings> customWatermark;
    double durationSeconds = 0;
    int width = 0;
    int height = 0;

    bool operator==(const ExportDecision&) const = default;

    // The preset's size, or the canvas for "source", made even: the
    // encoders store colour at half resolution in both directions.
    // `brandDisplay` is the product's display name for its mark.
    static ExportDecision forProject(const Project& project, const ExportPreset& preset,
                                     const std::string& brandDisplay);
};

} // namespace recorder
