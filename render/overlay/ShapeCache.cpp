#include "overlay/ShapeCache.h"

#include "compose/CacheKey.h"
#include "overlay/ShapeRenderer.h"

namespace recorder {

std::uint64_t ShapeCache::hash(const ShapeSpec& spec) {
    // FNV-1a over the shape's JSON text: every field, in a fixed order.
    std::uint64_t h = 14695981039346656037ull;
    for (unsigned char c : spec.toJson().dump()) {
        h ^= c;
        h *= 1099511628211ull;
    }
    return h;
}

std::string ShapeCache::key(const ShapeSpec& spec, int width, int height, double canvasHeight, double progress) {
    return CacheKey::join({std::to_string(hash(spec)), std::to_string(width) + "x" + std::to_string(height),
                           CacheKey::number(canvasHeight), CacheKey::number(progress)},
                          "|");
}

SourceImage ShapeCache::shape(const ShapeSpec& spec, int width, int height, double canvasHeight, double progress) {
    std::string k = key(spec, width, height, canvasHeight, progress);
    auto found = images_.find(k);
    if (found != images_.end()) return found->second;
    if (images_.size() > bound) images_.clear();
    QImage art = ShapeRenderer::raster(spec, width, height, canvasHeight, progress);
    SourceImage made = art.isNull() ? SourceImage() : SourceImage(art);
    images_.emplace(std::move(k), made);
    return made;
}

} // namespace recorder
