#pragma once

#include "model/Asset.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// The background pictures that ship with the application, all our own,
// made by tools/make-backgrounds. The first is the default background of a
// new recording when no last look exists.
namespace recorder::BundledBackgrounds {

struct Background {
    std::string id;
    std::string credit;
    std::string fileName;

    bool operator==(const Background&) const = default;
};

const std::vector<Background>& all();
const Background& defaultBackground();
const Background* find(std::string_view id);

// <exe dir>/../share/recorder/backgrounds: where an install puts them, and
// where the build copies them beside bin/.
std::filesystem::path folder();
std::filesystem::path url(const Background& background);

// Copies the picture into the package's assets; the caller appends the asset
// it returns. Throws when the picture is missing or the copy fails.
Asset importInto(const Background& background, const std::filesystem::path& package);

} // namespace recorder::BundledBackgrounds
