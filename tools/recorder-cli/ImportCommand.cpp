#include "CliCommands.h"

#include "AppPaths.h"
#include "Settings.h"
#include "VideoImport.h"
#include "look/LookLibrary.h"

#include <iostream>

extern "C" {
#include <libavutil/log.h>
}
#include <optional>

namespace recorder::cli {

// Makes a project from a video file in the recordings folder and prints the
// package's path.
int runImport(const Arguments& args) {
    av_log_set_level(AV_LOG_ERROR); // FFmpeg's progress chatter isn't for the person
    std::optional<std::string> name;
    if (args.size() == 3 && args[1] == "--name") name = args[2];
    if (args.empty() || (args.size() != 1 && !name)) {
        std::cerr << "Give one video file, and --name to choose the project's name: "
                     "recorder-cli import VIDEO [--name NAME]\n";
        return 2;
    }
    LookLibrary looks(AppPaths::supportFolder());
    try {
        auto imported = VideoImport::importVideo(args[0], Settings().projectsDirectory(), name, &looks,
                                                 [](const std::string& line) { std::cerr << line << "\n"; });
        std::cout << imported.package.string() << "\n";
    } catch (const VideoImport::Failure& failure) {
        std::cerr << failure.what() << " Choose a movie file, such as an .mp4 or .mov.\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << "The video could not be imported: " << error.what()
                  << ". Check that the recordings folder can be written to.\n";
        return 1;
    }
    return 0;
}

} // namespace recorder::cli
