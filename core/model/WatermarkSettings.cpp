#include "model/WatermarkSettings.h"

namespace recorder {

WatermarkSettings WatermarkSettings::fromJson(const JsonReader& r) {
    WatermarkSettings w;
    w.enabled = r.get<bool>("enabled");
    w.text = r.get<std::string>("text");
    w.imageAssetID = r.getOptional<Uuid>("imageAssetID");
    w.fontName = r.getOptional<std::string>("fontName");
    w.size = r.get<double>("size");
    w.bold = r.get<bool>("bold");
    w.italic = r.get<bool>("italic");
    w.uppercase = r.get<bool>("uppercase");
    w.textColor = r.get<RGBAColor>("textColor");
    w.shadow = r.get<bool>("shadow");
    w.opacity = r.get<double>("opacity");
    w.boxEnabled = r.get<bool>("boxEnabled");
    w.boxColor = r.get<RGBAColor>("boxColor");
    w.boxOpacity = r.get<double>("boxOpacity");
    w.placement = r.get<WatermarkPlacement>("placement");
    w.showBrand = r.get<bool>("showBrand");
    w.brandPlacement = r.getOptional<WatermarkPlacement>("brandPlacement");
    w.position = r.getOptional<Point>("position");
    w.brandPosition = r.getOptional<Point>("brandPosition");
    return w;
}

nlohmann::json WatermarkSettings::toJson() const {
    nlohmann::json j{{"enabled", enabled},
                     {"text", text},
                     {"size", size},
                     {"bold", bold},
                     {"italic", italic},
                     {"uppercase", uppercase},
                     {"textColor", textColor.toJson()},
                     {"shadow", shadow},
                     {"opacity", opacity},
                     {"boxEnabled", boxEnabled},
                     {"boxColor", boxColor.toJson()},
                     {"boxOpacity", boxOpacity},
                     {"placement", encodeJson(placement)},
                     {"showBrand", showBrand}};
    putOptional(j, "imageAssetID", imageAssetID);
    putOptional(j, "fontName", fontName);
    putOptional(j, "brandPlacement", brandPlacement);
    putOptional(j, "position", position);
    putOptional(j, "brandPosition", brandPosition);
    return j;
}

} // namespace recorder
