#include "model/ShapeSpec.h"

namespace recorder {

ShapeSpec ShapeSpec::fromJson(const JsonReader& r) {
    ShapeSpec s;
    s.kind = r.get<ShapeKind>("kind");
    s.color = r.get<RGBAColor>("color");
    s.strokeWidth = r.get<double>("strokeWidth");
    s.direction = r.get<ShapeDirection>("direction");
    s.headSize = r.get<double>("headSize");
    s.filled = r.get<bool>("filled");
    s.fillOpacity = r.get<double>("fillOpacity");
    s.strokeless = r.get<bool>("strokeless");
    s.cornerRadius = r.get<double>("cornerRadius");
    s.outline = r.get<bool>("outline");
    s.shadow = r.get<bool>("shadow");
    return s;
}

nlohmann::json ShapeSpec::toJson() const {
    return {{"kind", encodeJson(kind)},       {"color", color.toJson()},   {"strokeWidth", strokeWidth},
            {"direction", encodeJson(direction)}, {"headSize", headSize},  {"filled", filled},
            {"fillOpacity", fillOpacity},     {"strokeless", strokeless}, {"cornerRadius", cornerRadius},
            {"outline", outline},             {"shadow", shadow}};
}

} // namespace recorder
