#include "CliCommands.h"
#include "OpenPackage.h"

#include "audio/AudioMixBuilder.h"
#include "audio/AudioTimeline.h"
#include "audio/WavFileWriter.h"

#include <algorithm>
#include <iostream>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

namespace recorder::cli {

// Writes the project's whole sound, as export hears it, to a WAV file:
// 48 kHz, stereo, 16-bit, as long as the finished video.
int runMix(const Arguments& args) {
    av_log_set_level(AV_LOG_ERROR); // FFmpeg's progress chatter isn't for the person
    if (args.size() != 3 || args[1] != "--out") {
        std::cerr << "Give one package folder and the WAV file to write: recorder-cli mix PACKAGE --out FILE.wav\n";
        return 2;
    }
    std::filesystem::path package = args[0];
    auto project = openPackage(package);
    if (!project) return 1;
    AudioTimeline timeline(AudioMixBuilder::build(*project, package));
    WavFileWriter writer(args[2], AudioTimeline::sampleRate, AudioTimeline::channels);
    std::int64_t total = AudioTimeline::frameAt(project->duration());
    constexpr int block = 8192;
    std::vector<float> samples(std::size_t(block) * AudioTimeline::channels);
    for (std::int64_t frame = 0; frame < total; frame += block) {
        int count = int(std::min<std::int64_t>(block, total - frame));
        timeline.render(frame, samples.data(), count);
        writer.write(samples.data(), count);
    }
    writer.finish();
    std::cout << args[2] << "\n";
    return 0;
}

} // namespace recorder::cli
