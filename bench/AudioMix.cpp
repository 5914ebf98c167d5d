// Mixing a 10-minute project to 48 kHz stereo: microphone, system audio, two
// clips at speeds 1 and 1.5, and two music items ducked under the speech.
// The baseline of the real-time factor is the sound's own length.
#include "audio/AacFileWriter.h"
#include "audio/AudioMixBuilder.h"
#include "audio/AudioTimeline.h"
#include "audio/SpeechRangeCache.h"
#include "package/ProjectPackage.h"
#include "support/RatioReporter.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <numbers>
#include <random>
#include <sys/resource.h>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

using namespace recorder;
namespace fs = std::filesystem;

namespace {

constexpr double outputSeconds = 600;
constexpr double recordingSeconds = 750; // 300 s at speed 1, then 450 s at 1.5

// Speech-like bursts (a buzzy vowel, 3 syllables a second, 4 s on, 2 s off)
// over room noise, or music-like chords: generated, then written as AAC.
float voiceAt(double t, std::mt19937& random) {
    std::normal_distribution<float> noise(0, 0.003f);
    double envelope = std::fmod(t, 6) < 4 ? 0.5 - 0.5 * std::cos(2 * std::numbers::pi * 3 * t) : 0;
    double voice = std::sin(2 * std::numbers::pi * 140 * t) + 0.5 * std::sin(2 * std::numbers::pi * 420 * t);
    return float(0.2 * envelope * voice) + noise(random);
}

float chordAt(double t, double root) {
    return float(0.1 * (std::sin(2 * std::numbers::pi * root * t) + std::sin(2 * std::numbers::pi * root * 1.25 * t) +
                        std::sin(2 * std::numbers::pi * root * 1.5 * t)));
}

template <class Sample>
void writeGenerated(const fs::path& file, double seconds, int channels, Sample sample) {
    if (fs::exists(file)) return;
    auto partial = file.parent_path() / ("." + file.filename().string());
    {
        AacFileWriter writer(partial, 48000, channels, channels == 1 ? 128000 : 192000);
        std::vector<float> block(4800 * std::size_t(channels));
        for (int start = 0; start < int(seconds * 48000); start += 4800) {
            for (int i = 0; i < 4800; ++i) {
                float x = sample(double(start + i) / 48000);
                for (int c = 0; c < channels; ++c) block[std::size_t(i * channels + c)] = x;
            }
            writer.write(block.data(), 4800);
        }
        writer.finish();
    }
    fs::rename(partial, file);
}

Asset addAsset(Project& project, AssetKind kind, const std::string& name) {
    Asset asset;
    asset.id = Uuid::random();
    asset.kind = kind;
    asset.relativePath = name;
    project.assets.push_back(asset);
    return asset;
}

// Made once and kept in the temporary folder: the files take a while to encode.
const std::pair<Project, fs::path>& benchmarkProject() {
    static const auto made = [] {
        fs::path package = fs::temp_directory_path() / "recorder-bench-sound" / "Mix.tidereel";
        fs::path assets = ProjectPackage::assetsURL(package);
        fs::create_directories(assets);
        std::mt19937 random(1);
        writeGenerated(assets / "mic.m4a", recordingSeconds, 1, [&](double t) { return voiceAt(t, random); });
        writeGenerated(assets / "system.m4a", recordingSeconds, 2, [](double t) { return chordAt(t, 330) * 0.5f; });
        writeGenerated(assets / "music-1.m4a", 300, 2, [](double t) { return chordAt(t, 220); });
        writeGenerated(assets / "music-2.m4a", 300, 2, [](double t) { return chordAt(t, 196); });

        Project project("Mix", {1920, 1080, 30}, "1.0");
        Asset screen = addAsset(project, AssetKind::screen, "screen.mov");
        addAsset(project, AssetKind::microphone, "mic.m4a");
        addAsset(project, AssetKind::systemAudio, "system.m4a");
        project.clips = {{Uuid::random(), screen.id, 0, 300, 1}, {Uuid::random(), screen.id, 300, 750, 1.5}};
        for (int i = 0; i < 2; ++i) {
            MediaItem music;
            music.id = Uuid::random();
            music.assetID = addAsset(project, AssetKind::audio, "music-" + std::to_string(i + 1) + ".m4a").id;
            music.kind = AssetKind::audio;
            music.name = "Music " + std::to_string(i + 1);
            music.start = i * 300.0;
            music.end = music.start + 300;
            music.fadeIn = music.fadeOut = 2;
            project.addMedia(music);
        }
        project.audio.duckMusic = true;
        return std::make_pair(project, package);
    }();
    return made;
}

void MixTenMinutes(benchmark::State& state) {
    const auto& [project, package] = benchmarkProject();
    SpeechRangeCache::shared().speechRanges(ProjectPackage::assetsURL(package) / "mic.m4a"); // warm
    std::vector<float> block(4096 * 2);
    for (auto _ : state) {
        AudioTimeline timeline(AudioMixBuilder::build(project, package));
        std::int64_t total = AudioTimeline::frameAt(outputSeconds);
        for (std::int64_t frame = 0; frame < total; frame += 4096) {
            timeline.render(frame, block.data(), int(std::min<std::int64_t>(4096, total - frame)));
            benchmark::DoNotOptimize(block.data());
        }
    }
}

void FindSpeechInTheMicrophone(benchmark::State& state) {
    const auto& [project, package] = benchmarkProject();
    for (auto _ : state) benchmark::DoNotOptimize(SpeechRangeCache::levels(ProjectPackage::assetsURL(package) / "mic.m4a"));
}

void printRealTimeFactor(const bench::RatioReporter& reporter, const char* name, double seconds, const char* label) {
    double milliseconds = reporter.milliseconds(name);
    if (milliseconds > 0)
        std::printf("%s: %.0f ms for %.0f s of sound = real-time factor %.4f (%.0fx faster than real time)\n", label,
                    milliseconds, seconds, milliseconds / 1000 / seconds, seconds * 1000 / milliseconds);
}

} // namespace

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_ERROR);
    benchmarkProject();
    benchmark::RegisterBenchmark("MixTenMinutes", MixTenMinutes)->Unit(benchmark::kMillisecond)->Iterations(3);
    benchmark::RegisterBenchmark("FindSpeechInTheMicrophone", FindSpeechInTheMicrophone)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(3);
    benchmark::Initialize(&argc, argv);
    recorder::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    printRealTimeFactor(reporter, "MixTenMinutes/iterations:3", outputSeconds, "mix of the 10-minute project (target <= 0.02)");
    printRealTimeFactor(reporter, "FindSpeechInTheMicrophone/iterations:3", recordingSeconds,
                        "speech ranges of the 12.5-minute microphone file, once per file and change");
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak resident memory: %ld MB\n", usage.ru_maxrss / 1024);
    benchmark::Shutdown();
}
