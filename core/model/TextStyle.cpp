#include "model/TextStyle.h"

namespace recorder {

TextStyle TextStyle::fromJson(const JsonReader& r) {
    TextStyle s;
    s.fontName = r.getOptional<std::string>("fontName");
    s.bold = r.get<bool>("bold");
    s.italic = r.get<bool>("italic");
    s.uppercase = r.get<bool>("uppercase");
    s.strokeWidth = r.get<double>("strokeWidth");
    s.strokeColor = r.get<RGBAColor>("strokeColor");
    s.shadow = r.get<bool>("shadow");
    s.boxEnabled = r.get<bool>("boxEnabled");
    s.boxColor = r.get<RGBAColor>("boxColor");
    s.boxOpacity = r.get<double>("boxOpacity");
    s.cornerRadius = r.get<double>("cornerRadius");
    s.padding = r.get<double>("padding");
    return s;
}

nlohmann::json TextStyle::toJson() const {
    nlohmann::json j{{"bold", bold},
                     {"italic", italic},
                     {"uppercase", uppercase},
                     {"strokeWidth", strokeWidth},
                     {"strokeColor", strokeColor.toJson()},
                     {"shadow", shadow},
                     {"boxEnabled", boxEnabled},
                     {"boxColor", boxColor.toJson()},
                     {"boxOpacity", boxOpacity},
                     {"cornerRadius", cornerRadius},
                     {"padding", padding}};
    putOptional(j, "fontName", fontName);
    return j;
}

} // namespace recorder
