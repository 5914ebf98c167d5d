#include "CliCommands.h"

#include "brand/Brand.h"
#include "package/ProjectPackage.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace recorder::cli {

namespace {

constexpr const char* usageLine = "Usage: recorder-cli new-project FOLDER NAME [--canvas WxH] [--fps N]";

bool parseCanvas(const std::string& text, CanvasSettings& canvas) {
    int width = 0, height = 0;
    char x = 0, extra = 0;
    if (std::sscanf(text.c_str(), "%d%c%d%c", &width, &x, &height, &extra) != 3 || (x != 'x' && x != 'X')) return false;
    if (width < 2 || height < 2 || width > 16384 || height > 16384) return false;
    canvas.width = width;
    canvas.height = height;
    return true;
}

std::filesystem::path freePackagePath(const std::filesystem::path& folder, const std::string& name) {
    std::string stem = ProjectPackage::fileStem(name);
    std::string extension = "." + Brand::shared().documentExtension;
    auto path = folder / (stem + extension);
    for (int n = 2; std::filesystem::exists(path); ++n) path = folder / (stem + " " + std::to_string(n) + extension);
    return path;
}

} // namespace

// An empty project package, for scripts and demos: no recording in it yet.
int runNewProject(const Arguments& args) {
    if (args.size() < 2) {
        std::cerr << usageLine << "\n";
        return 2;
    }
    CanvasSettings canvas;
    for (std::size_t i = 2; i < args.size(); ++i) {
        bool hasValue = i + 1 < args.size();
        if (args[i] == "--canvas" && hasValue && parseCanvas(args[i + 1], canvas)) {
            ++i;
        } else if (args[i] == "--fps" && hasValue && (args[i + 1] == "30" || args[i + 1] == "60")) {
            canvas.frameRate = std::stoi(args[++i]);
        } else {
            std::cerr << "The option " << args[i] << " isn't understood: --canvas takes WxH (like 1920x1080) and "
                      << "--fps takes 30 or 60.\n" << usageLine << "\n";
            return 2;
        }
    }
    std::filesystem::create_directories(args[0]);
    auto package = freePackagePath(args[0], args[1]);
    ProjectPackage::save(Project(args[1], canvas, Brand::shared().version), package);
    std::cout << package.string() << "\n";
    return 0;
}

} // namespace recorder::cli
