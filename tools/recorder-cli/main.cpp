#include "CliCommands.h"

#include <cstdio>
#include <iostream>
#include <string_view>

namespace {

struct Command {
    std::string_view name;
    std::string_view usage;
    int (*run)(const recorder::cli::Arguments&);
};

// Keep in step with the README's command reference.
constexpr Command commands[] = {
    {"migrate", "migrate PATH", recorder::cli::runMigrate},
    {"agent", "agent [--projects-dir DIR]", recorder::cli::runAgent},
    {"mcp-http-body", "mcp-http-body", recorder::cli::runMcpHttpBody},
    {"new-project", "new-project FOLDER NAME [--canvas WxH] [--fps N]", recorder::cli::runNewProject},
    {"zooms", "zooms PACKAGE [--write]", recorder::cli::runZooms},
    {"frame-info", "frame-info PACKAGE --time T [--size WxH]", recorder::cli::runFrameInfo},
    {"render-frame", "render-frame PACKAGE --time T --out FILE.png [--size WxH]", recorder::cli::runRenderFrame},
    {"style", "style list | save NAME PACKAGE | apply NAME PACKAGE | remember PACKAGE | reset PACKAGE",
     recorder::cli::runStyle},
    {"import", "import VIDEO [--name NAME]", recorder::cli::runImport},
    {"clean-mic", "clean-mic PACKAGE", recorder::cli::runCleanMic},
    {"mix", "mix PACKAGE --out FILE.wav", recorder::cli::runMix},
    {"export", "export PACKAGE [--out FILE] [--format mp4H264|mp4HEVC|gif] [--preset ID] [--fps 30|60]",
     recorder::cli::runExport},
    {"sources", "sources", recorder::cli::runSources},
    {"capture-test", "capture-test --display ID|--window ID|--area X,Y,W,H --seconds N --out DIR [--fps N]",
     recorder::cli::runCaptureTest},
    {"record",
     "record [--display ID | --window ID | --area X,Y,W,H] [--camera ID|none] [--mic ID|none] [--system-audio | "
     "--no-system-audio] [--fps 30|60] [--countdown N] [--max-seconds N] [--projects-dir DIR]",
     recorder::cli::runRecord},
};

int usage(std::ostream& out) {
    out << "Usage: recorder-cli COMMAND [OPTIONS]\nCommands:\n";
    for (const auto& command : commands) out << "  recorder-cli " << command.usage << "\n";
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage(std::cerr);
    std::string_view name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        usage(std::cout);
        return 0;
    }
    for (const auto& command : commands) {
        if (command.name != name) continue;
        recorder::cli::Arguments args(argv + 2, argv + argc);
        try {
            return command.run(args);
        } catch (const std::exception& error) {
            std::cerr << error.what() << "\n";
            return 1;
        }
    }
    std::cerr << "There is no command called " << name << ". Run recorder-cli --help for the list.\n";
    return 2;
}
