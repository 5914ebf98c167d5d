#include "CliCommands.h"

#include "AppPaths.h"
#include "look/LookLibrary.h"
#include "package/ProjectPackage.h"

#include <filesystem>
#include <iostream>

namespace recorder::cli {

namespace {

constexpr const char* usageLine =
    "Usage: recorder-cli style list | save NAME PACKAGE | apply NAME PACKAGE | remember PACKAGE | reset PACKAGE";

using Path = std::filesystem::path;

std::string trimmed(const std::string& text) {
    auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

Project loadProject(const Path& package) {
    std::error_code error;
    if (!std::filesystem::is_directory(package, error))
        throw std::runtime_error("There is no project package at " + package.string() +
                                 ". Pass the path of a package folder.");
    return ProjectPackage::load(package);
}

int list(LookLibrary& library) {
    for (const auto& preset : library.presets())
        std::cout << preset.name << "\t" << preset.savedAt.iso8601() << "\t" << preset.id.string() << "\n";
    return 0;
}

// As the editor's "save style": the project then names the style it uses.
int save(LookLibrary& library, const std::string& typedName, const Path& package) {
    std::string name = trimmed(typedName);
    if (name.empty()) {
        std::cerr << "A style needs a name that isn't blank: recorder-cli style save NAME PACKAGE.\n";
        return 2;
    }
    Project project = loadProject(package);
    library.save(name, project, package);
    if (project.styleName != name) {
        project.styleName = name;
        ProjectPackage::save(project, package);
    }
    return 0;
}

int apply(LookLibrary& library, const std::string& name, const Path& package) {
    const LookPreset* preset = library.presetNamed(trimmed(name));
    if (!preset) {
        std::cerr << "There is no style called \"" << name << "\". Run recorder-cli style list to see the saved ones.\n";
        return 1;
    }
    Project project = loadProject(package);
    library.applyStyle(*preset, project, package);
    ProjectPackage::save(project, package);
    return 0;
}

int remember(LookLibrary& library, const Path& package) {
    library.remember(loadProject(package), package);
    return 0;
}

int reset(const Path& package) {
    Project project = loadProject(package);
    LookLibrary::resetStyle(project, package);
    ProjectPackage::save(project, package);
    return 0;
}

} // namespace

// The style library from the command line: the same folder and the same
// operations that the editor's style menu uses.
int runStyle(const Arguments& args) {
    const std::string action = args.empty() ? "" : args[0];
    LookLibrary library(AppPaths::supportFolder());
    if (action == "list" && args.size() == 1) return list(library);
    if (action == "save" && args.size() == 3) return save(library, args[1], args[2]);
    if (action == "apply" && args.size() == 3) return apply(library, args[1], args[2]);
    if (action == "remember" && args.size() == 2) return remember(library, args[1]);
    if (action == "reset" && args.size() == 2) return reset(args[1]);
    std::cerr << usageLine << "\n";
    return 2;
}

} // namespace recorder::cli
