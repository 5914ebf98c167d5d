#pragma once

#include "model/Project.h"

#include <filesystem>
#include <optional>
#include <string>

// File operations on a project package: a folder holding "manifest.json" and
// "assets/". Stateless; every caller that reads or writes a project comes here.
namespace recorder::ProjectPackage {

using Path = std::filesystem::path;

// How a project's name and its package's file name relate.
struct NameSync {
    enum class Kind { adoptFileName, inSync, renameFile };
    Kind kind = Kind::inSync;
    std::string name; // with adoptFileName: the name to take over

    bool operator==(const NameSync&) const = default;
};

Path manifestURL(const Path& package);
Path assetsURL(const Path& package);
Path assetURL(const Asset& asset, const Path& package);

// The manifest's bytes: the one JSON form every file of ours uses.
std::string encode(const Project& project);

void createAssetsFolder(const Path& package);
// Writes a temporary manifest and renames it over the old one, so a failure
// at any step leaves the previous manifest whole.
void save(Project project, const Path& package);
Project load(const Path& package);

// 11 unless the project uses what 12 brought (shapes, the draw animation).
int lowestSchemaVersion(const Project& project);

NameSync nameSync(const Project& project, const std::string& stem);
std::string fileStem(const std::string& name);
std::string displayName(const std::string& stem);
Path rename(const Path& package, const std::string& name);

std::string importAsset(const Path& source, const Path& package, const std::optional<std::string>& preferredName);
void removeOrphanAssets(const Path& package, const Project& project);

} // namespace recorder::ProjectPackage
