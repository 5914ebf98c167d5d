#pragma once

#include "look/CameraLook.h"
#include "model/Project.h"

#include <map>
#include <optional>
#include <vector>

namespace recorder {

// Which asset of the project stands for each asset id a look refers to.
using AssetMap = std::map<Uuid, Uuid>;

// Everything about a project's appearance and sound that doesn't depend on
// its content, so that it can be saved by name and put on another project.
struct Look {
    struct Parts {
        int rawValue = 0;

        static const Parts frame;     // style, cursor, camera, audio
        static const Parts captions;  // caption style
        static const Parts watermark;
        static const Parts all;

        constexpr bool contains(Parts other) const { return (rawValue & other.rawValue) == other.rawValue; }
        constexpr Parts operator|(Parts other) const { return {rawValue | other.rawValue}; }
        bool operator==(const Parts&) const = default;
    };

    StyleSettings style;
    CursorSettings cursor;
    CameraLook camera;
    AudioSettings audio;
    std::optional<CaptionStyle> captionStyle;
    std::optional<WatermarkSettings> watermark;

    Look() = default;
    explicit Look(const Project& project);

    // Background image, watermark image, avatar: the files a look carries.
    std::vector<Uuid> assetIDs() const;
    void apply(Project& project, Parts parts, const AssetMap& assetMap) const;

    bool operator==(const Look&) const = default;

    static Look fromJson(const JsonReader& r);
    nlohmann::json toJson() const;

private:
    void applyFrame(Project& project, const AssetMap& assetMap) const;
    void applyCamera(CameraSettings& target, const AssetMap& assetMap) const;
    void applyCaptions(Project& project) const;
    void applyWatermark(Project& project, const AssetMap& assetMap) const;
    BackgroundStyle backgroundFor(const Project& project, const AssetMap& assetMap) const;
};

inline constexpr Look::Parts Look::Parts::frame{1};
inline constexpr Look::Parts Look::Parts::captions{2};
inline constexpr Look::Parts Look::Parts::watermark{4};
inline constexpr Look::Parts Look::Parts::all{7};

} // namespace recorder
