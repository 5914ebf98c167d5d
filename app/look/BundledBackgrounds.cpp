#include "look/BundledBackgrounds.h"

#include "brand/Brand.h"
#include "package/ProjectPackage.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

namespace recorder::BundledBackgrounds {

namespace {

constexpr std::string_view ids[] = {"tide",     "dawn",   "lagoon", "dusk",    "meadow",
                                    "graphite", "sorbet", "ember",  "glacier", "aurora"};

// Every picture is made at this size by the generator.
constexpr Size pictureSize{3840, 2160};

std::filesystem::path executableDirectory() {
    std::error_code error;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : exe.parent_path();
}

} // namespace

const std::vector<Background>& all() {
    static const std::vector<Background> list = [] {
        std::vector<Background> backgrounds;
        for (auto id : ids)
            backgrounds.push_back({std::string(id), "Generated for " + Brand::shared().display, std::string(id) + ".jpg"});
        return backgrounds;
    }();
    return list;
}

const Background& defaultBackground() {
    return all().front();
}

const Background* find(std::string_view id) {
    const auto& list = all();
    auto it = std::find_if(list.begin(), list.end(), [&](const Background& b) { return b.id == id; });
    return it == list.end() ? nullptr : &*it;
}

std::filesystem::path folder() {
    return (executableDirectory() / ".." / "share" / "recorder" / "backgrounds").lexically_normal();
}

std::filesystem::path url(const Background& background) {
    return folder() / background.fileName;
}

Asset importInto(const Background& background, const std::filesystem::path& package) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(url(background), error))
        throw std::runtime_error("The built-in background picture " + url(background).string() + " is missing. Reinstall " +
                                 Brand::shared().display + " to bring it back.");
    Asset asset;
    asset.id = Uuid::random();
    asset.kind = AssetKind::image;
    asset.relativePath = ProjectPackage::importAsset(url(background), package, background.fileName);
    asset.pixelSize = pictureSize;
    asset.originalFilename = background.fileName;
    return asset;
}

} // namespace recorder::BundledBackgrounds
