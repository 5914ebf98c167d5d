#include "model/MediaItem.h"

#include <algorithm>

namespace recorder {

double MediaItem::length() const { return std::max(0.0, end - start); }

double MediaItem::gain(double t) const {
    if (muted) return 0;
    double g = volume;
    if (fadeIn > 0) g *= std::clamp((t - start) / fadeIn, 0.0, 1.0);
    if (fadeOut > 0) g *= std::clamp((end - t) / fadeOut, 0.0, 1.0);
    return g;
}

MediaItem MediaItem::shifted(double delta) const {
    MediaItem moved = *this;
    moved.start += delta;
    moved.end += delta;
    return moved;
}

MediaItem MediaItem::fromJson(const JsonReader& r) {
    MediaItem m;
    m.id = r.get<Uuid>("id");
    m.assetID = r.get<Uuid>("assetID");
    m.kind = r.get<AssetKind>("kind");
    m.name = r.get<std::string>("name");
    m.start = r.get<double>("start");
    m.end = r.get<double>("end");
    m.frame = r.get<Rect>("frame");
    m.rotation = r.get<double>("rotation");
    m.opacity = r.get<double>("opacity");
    m.inAnimation = r.get<MediaAnimation>("inAnimation");
    m.outAnimation = r.get<MediaAnimation>("outAnimation");
    m.animationDuration = r.get<double>("animationDuration");
    m.shadow = r.get<bool>("shadow");
    m.borderWidth = r.get<double>("borderWidth");
    m.borderColor = r.get<RGBAColor>("borderColor");
    m.cornerRadius = r.get<double>("cornerRadius");
    m.volume = r.get<double>("volume");
    m.fadeIn = r.get<double>("fadeIn");
    m.fadeOut = r.get<double>("fadeOut");
    m.sourceOffset = r.get<double>("sourceOffset");
    m.zIndex = r.get<int>("zIndex");
    m.loops = r.get<bool>("loops");
    m.hidden = r.get<bool>("hidden");
    m.locked = r.get<bool>("locked");
    m.muted = r.get<bool>("muted");
    m.speed = r.get<double>("speed");
    m.text = r.getOptional<std::string>("text");
    m.textColor = r.getOptional<RGBAColor>("textColor");
    m.textStyle = r.getOptional<TextStyle>("textStyle");
    m.shape = r.getOptional<ShapeSpec>("shape");
    m.blurStyle = r.getOptional<std::string>("blurStyle");
    m.blurAmount = r.getOptional<double>("blurAmount");
    return m;
}

nlohmann::json MediaItem::toJson() const {
    nlohmann::json j{{"id", encodeJson(id)},
                     {"assetID", encodeJson(assetID)},
                     {"kind", encodeJson(kind)},
                     {"name", name},
                     {"start", start},
                     {"end", end},
                     {"frame", frame.toJson()},
                     {"rotation", rotation},
                     {"opacity", opacity},
                     {"inAnimation", encodeJson(inAnimation)},
                     {"outAnimation", encodeJson(outAnimation)},
                     {"animationDuration", animationDuration},
                     {"shadow", shadow},
                     {"borderWidth", borderWidth},
                     {"borderColor", borderColor.toJson()},
                     {"cornerRadius", cornerRadius},
                     {"volume", volume},
                     {"fadeIn", fadeIn},
                     {"fadeOut", fadeOut},
                     {"sourceOffset", sourceOffset},
                     {"zIndex", zIndex},
                     {"loops", loops},
                     {"hidden", hidden},
                     {"locked", locked},
                     {"muted", muted},
                     {"speed", speed}};
    putOptional(j, "text", text);
    putOptional(j, "textColor", textColor);
    putOptional(j, "textStyle", textStyle);
    putOptional(j, "shape", shape);
    putOptional(j, "blurStyle", blurStyle);
    putOptional(j, "blurAmount", blurAmount);
    return j;
}

} // namespace recorder
