#pragma once

#include "look/LookPreset.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace recorder {

// The saved styles: "Styles/" in the support folder, one folder per preset
// named by its id, with copies of the files its look refers to, and "last"
// for the look used last. One for the whole application, on the main thread.
class LookLibrary {
public:
    using Path = std::filesystem::path;

    struct BroughtIn {
        AssetMap assetMap;
        std::vector<Asset> assets;
    };

    explicit LookLibrary(Path supportFolder);

    // Sorted by name as a file manager sorts: numbers as numbers, case ignored.
    const std::vector<LookPreset>& presets() const { return presets_; }
    // The first preset of that name, case ignored.
    const LookPreset* presetNamed(const std::string& name) const;

    Path stylesFolder() const;
    Path folder(const LookPreset& preset) const;
    Path lastFolder() const;
    std::optional<LookPreset> lastPreset() const;

    void reload();
    // Creates or overwrites the style of that name; throws StyleError.
    LookPreset save(const std::string& name, const Project& project, const Path& package);
    // Stores the look used last; a failure is only logged.
    void remember(const Project& project, const Path& package);
    // Throws StyleError when the folder can't be removed.
    void deletePreset(const LookPreset& preset);
    // Copies the preset's files into the package as new image assets.
    BroughtIn bringIn(const LookPreset& preset, const Path& presetFolder, const Project& project,
                      const Path& package) const;
    // Whether a last look existed and was applied.
    bool applyLast(Project& project, const Path& package, Look::Parts parts) const;

    // What the editor's "Apply style" and "Reset style" do to a project.
    void applyStyle(const LookPreset& preset, Project& project, const Path& package) const;
    static void resetStyle(Project& project, const Path& package);

    // Called after every reload, for views that show the list.
    std::function<void()> onPresetsChanged;

private:
    LookPreset writePreset(LookPreset preset, const Path& presetFolder, const Project& project,
                           const Path& package) const;
    std::string copyIntoPreset(const Asset& asset, const Path& presetFolder, const Path& package) const;

    Path supportFolder_;
    std::vector<LookPreset> presets_;
};

} // namespace recorder
