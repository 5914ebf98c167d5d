#include "export/ExportDecision.h"

#include <algorithm>

namespace recorder {

namespace {

int evenSize(int pixels) { return std::max(2, pixels - pixels % 2); }

WatermarkPosition cornerOf(WatermarkPlacement placement) {
    switch (placement) {
    case WatermarkPlacement::topLeft: return WatermarkPosition::topLeft;
    case WatermarkPlacement::topRight: return WatermarkPosition::topRight;
    case WatermarkPlacement::bottomLeft: return WatermarkPosition::bottomLeft;
    default: return WatermarkPosition::bottomRight;
    }
}

} // namespace

ExportDecision ExportDecision::forProject(const Project& project, const ExportPreset& preset,
                                          const std::string& brandDisplay) {
    ExportDecision decision;
    bool fromCanvas = preset.width <= 0 || preset.height <= 0;
    decision.width = evenSize(fromCanvas ? project.canvas.width : preset.width);
    decision.height = evenSize(fromCanvas ? project.canvas.height : preset.height);
    decision.durationSeconds = project.duration();
    if (const auto& settings = project.watermark) {
        if (settings->showBrand) {
            WatermarkSpec spec;
            spec.text = "Made with " + brandDisplay;
            spec.placement = settings->brandPlacement;
            if (settings->brandPlacement) spec.position = cornerOf(*settings->brandPlacement);
            spec.center = settings->brandPosition;
            decision.watermark = spec;
        }
        if (settings->enabled) decision.customWatermark = *settings;
    }
    return decision;
}

} // namespace recorder
