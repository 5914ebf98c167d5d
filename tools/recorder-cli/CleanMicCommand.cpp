#include "CliCommands.h"
#include "OpenPackage.h"

#include "audio/MicCleaner.h"
#include "package/ProjectPackage.h"

#include <cstdio>
#include <iostream>

extern "C" {
#include <libavutil/log.h>
}
#include <unistd.h>

namespace recorder::cli {

// Makes the cleaned microphone file that the project's switches ask for,
// the one the mix and export then play.
int runCleanMic(const Arguments& args) {
    av_log_set_level(AV_LOG_ERROR); // FFmpeg's progress chatter isn't for the person
    if (args.size() != 1) {
        std::cerr << "Give one package folder: recorder-cli clean-mic PACKAGE\n";
        return 2;
    }
    std::filesystem::path package = args[0];
    auto project = openPackage(package);
    if (!project) return 1;
    const Asset* microphone = project->asset(AssetKind::microphone);
    if (!microphone) {
        std::cerr << "This project has no microphone recording, so there is nothing to clean up.\n";
        return 1;
    }
    auto cleanedName = project->audio.cleanedMicFileName();
    if (!cleanedName) {
        std::cerr << "Both microphone switches of this project are off. Turn on noise removal or levelling "
                     "(micNoiseRemoval or micLeveling) first.\n";
        return 1;
    }
    auto input = ProjectPackage::assetURL(*microphone, package);
    auto output = input.parent_path() / *cleanedName;
    bool terminal = isatty(STDERR_FILENO);
    try {
        MicCleaner::clean(input, output, project->audio.micNoiseRemoval, project->audio.micLeveling,
                          [terminal](double progress) {
                              if (terminal) std::fprintf(stderr, "\rCleaning up the microphone… %3d%%", int(progress * 100));
                          });
    } catch (const MicCleaner::Failure& failure) {
        if (terminal) std::fprintf(stderr, "\n");
        std::cerr << failure.what() << " The original recording stays in use.\n";
        return 1;
    }
    if (terminal) std::fprintf(stderr, "\n");
    std::cout << output.string() << "\n";
    return 0;
}

} // namespace recorder::cli
