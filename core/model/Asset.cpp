#include "model/Asset.h"

namespace recorder {

Asset Asset::fromJson(const JsonReader& r) {
    Asset a;
    a.id = r.get<Uuid>("id");
    a.kind = r.get<AssetKind>("kind");
    a.relativePath = r.get<std::string>("relativePath");
    a.duration = r.getOptional<double>("duration");
    a.pixelSize = r.getOptional<Size>("pixelSize");
    a.startOffset = r.get<double>("startOffset");
    a.captureRect = r.getOptional<Rect>("captureRect");
    a.scaleFactor = r.getOptional<double>("scaleFactor");
    a.originalFilename = r.getOptional<std::string>("originalFilename");
    return a;
}

nlohmann::json Asset::toJson() const {
    nlohmann::json j{{"id", encodeJson(id)},
                     {"kind", encodeJson(kind)},
                     {"relativePath", relativePath},
                     {"startOffset", startOffset}};
    putOptional(j, "duration", duration);
    putOptional(j, "pixelSize", pixelSize);
    putOptional(j, "captureRect", captureRect);
    putOptional(j, "scaleFactor", scaleFactor);
    putOptional(j, "originalFilename", originalFilename);
    return j;
}

} // namespace recorder
