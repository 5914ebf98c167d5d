#include "model/CursorSettings.h"

namespace recorder {

CursorSettings CursorSettings::fromJson(const JsonReader& r) {
    CursorSettings c;
    c.visible = r.get<bool>("visible");
    c.size = r.get<double>("size");
    c.style = r.get<CursorStyle>("style");
    c.smoothing = r.get<double>("smoothing");
    c.clickRipples = r.get<bool>("clickRipples");
    c.clickHighlightColor = r.get<RGBAColor>("clickHighlightColor");
    c.hideWhenIdleAfter = r.get<double>("hideWhenIdleAfter");
    c.tint = r.getOptional<RGBAColor>("tint");
    return c;
}

nlohmann::json CursorSettings::toJson() const {
    nlohmann::json j{{"visible", visible},
                     {"size", size},
                     {"style", encodeJson(style)},
                     {"smoothing", smoothing},
                     {"clickRipples", clickRipples},
                     {"clickHighlightColor", clickHighlightColor.toJson()},
                     {"hideWhenIdleAfter", hideWhenIdleAfter}};
    putOptional(j, "tint", tint);
    return j;
}

} // namespace recorder
