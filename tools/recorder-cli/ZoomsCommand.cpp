#include "CliCommands.h"
#include "OpenPackage.h"

#include "brand/Brand.h"
#include "events/EventLog.h"
#include "json/JsonText.h"
#include "motion/AutoZoomGenerator.h"
#include "package/ProjectPackage.h"

#include <iostream>

namespace recorder::cli {

// Runs the zoom generator on a package's clicks and keys; with --write the
// automatic zooms are replaced, as "Regenerate zooms" does, and saved.
int runZooms(const Arguments& args) {
    bool write = args.size() == 2 && args[1] == "--write";
    if (args.empty() || args.size() > 2 || (args.size() == 2 && !write)) {
        std::cerr << "Give one package folder, and --write to save the zooms: recorder-cli zooms PACKAGE [--write]\n";
        return 2;
    }
    std::filesystem::path package = args[0];
    auto project = openPackage(package);
    if (!project) return 1;
    auto log = EventLog::load(*project, package);
    if (!log) {
        std::cout << "[]\n";
        std::cerr << "This project has no click log to make zooms from (it was not recorded by "
                  << Brand::shared().display << ", or came in as a video)."
                  << (write ? " The project was left as it was." : "") << "\n";
        return 0;
    }
    auto zooms = AutoZoomGenerator{}.generate(*log, *project);
    std::cout << JsonText::pretty(encodeJson(zooms)) << "\n";
    if (!write) return 0;
    project->replaceAutoZooms(std::move(zooms));
    try {
        ProjectPackage::save(*project, package);
    } catch (const std::exception& error) {
        std::cerr << error.what() << " The zooms were not saved; check that the package can be written to.\n";
        return 1;
    }
    return 0;
}

} // namespace recorder::cli
