#include "model/BackgroundStyle.h"

namespace recorder {

namespace {

template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

BackgroundStyle decodeCase(const std::string& name, const JsonReader& payload) {
    if (name == "solid") return {BackgroundStyle::Solid{payload.get<RGBAColor>("_0")}};
    if (name == "gradient")
        return {BackgroundStyle::Gradient{payload.get<RGBAColor>("from"), payload.get<RGBAColor>("to"),
                                          payload.get<double>("angle")}};
    if (name == "image") return {BackgroundStyle::Image{payload.get<Uuid>("assetID")}};
    if (name == "blurredWallpaper")
        return {BackgroundStyle::BlurredWallpaper{payload.get<Uuid>("assetID"), payload.get<double>("blurRadius")}};
    throw DecodingError::unknownCase(payload.path(), name);
}

} // namespace

BackgroundStyle BackgroundStyle::defaultGradient() {
    return {Gradient{*RGBAColor::fromHex("#D4FC79"), *RGBAColor::fromHex("#96E6A1"), 135}};
}

BackgroundStyle BackgroundStyle::fromJson(const JsonReader& r) {
    if (r.object().size() != 1) throw DecodingError("Invalid number of keys found, expected one.", r.path());
    auto only = r.object().begin();
    return decodeCase(only.key(), JsonReader(only.value(), r.pathOf(only.key())));
}

nlohmann::json BackgroundStyle::toJson() const {
    return std::visit(
        Overloaded{
            [](const Solid& s) -> nlohmann::json { return {{"solid", {{"_0", s.color.toJson()}}}}; },
            [](const Gradient& g) -> nlohmann::json {
                return {{"gradient", {{"from", g.from.toJson()}, {"to", g.to.toJson()}, {"angle", g.angle}}}};
            },
            [](const Image& i) -> nlohmann::json { return {{"image", {{"assetID", encodeJson(i.assetID)}}}}; },
            [](const BlurredWallpaper& w) -> nlohmann::json {
                return {{"blurredWallpaper", {{"assetID", encodeJson(w.assetID)}, {"blurRadius", w.blurRadius}}}};
            },
        },
        value);
}

} // namespace recorder
