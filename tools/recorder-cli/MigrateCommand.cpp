#include "CliCommands.h"

#include "json/JsonText.h"
#include "package/PackageError.h"
#include "package/ProjectMigrator.h"
#include "package/ProjectPackage.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace recorder::cli {

namespace {

std::string readManifest(const std::filesystem::path& path) {
    std::error_code error;
    auto manifest = std::filesystem::is_directory(path, error) ? ProjectPackage::manifestURL(path) : path;
    std::ifstream in(manifest, std::ios::binary);
    if (!in) throw PackageError("read", manifest, std::error_code(errno, std::generic_category()));
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

} // namespace

// Shows what a package holds once brought to the current schema; writes nothing.
int runMigrate(const Arguments& args) {
    if (args.size() != 1) {
        std::cerr << "Give one package folder or manifest file: recorder-cli migrate PATH\n";
        return 2;
    }
    try {
        Project project = ProjectMigrator::migrate(readManifest(args[0]));
        std::cout << ProjectPackage::encode(project) << "\n";
        return 0;
    } catch (const JsonParseError& error) {
        std::cerr << error.what() << "\n" << error.detail() << "\n";
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
    }
    return 1;
}

} // namespace recorder::cli
