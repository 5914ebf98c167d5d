#pragma once

#include "compose/SourceImage.h"
#include "model/BackgroundStyle.h"

#include <QImage>

#include <string>

namespace recorder {

// The bottom of every frame, by style and canvas size: one entry, since a
// project shows one background at a time.
class BackgroundCache {
public:
    // `picture` is the loaded file of an `image` or `blurredWallpaper`
    // style, null when it is missing.
    QImage background(const BackgroundStyle& style, int width, int height, const SourceImage& picture);
    void clear();

    // The style's description, the key of the cache.
    static std::string description(const BackgroundStyle& style);

private:
    std::string key_;
    QImage image_;
};

} // namespace recorder
