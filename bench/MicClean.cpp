// Cleaning a 10-minute microphone recording with noise removal and levelling
// on. The baseline of the real-time factor is the recording's own length.
#include "audio/AacFileWriter.h"
#include "audio/MicCleaner.h"
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

constexpr double seconds = 600;

// Speech-like bursts (a buzzy vowel, 3 syllables a second, 4 s on, 2 s off)
// over pink-ish room noise at -40 dBFS, written once and kept.
const fs::path& microphoneFile() {
    static const fs::path file = [] {
        fs::path folder = fs::temp_directory_path() / "recorder-bench-sound";
        fs::create_directories(folder);
        fs::path path = folder / "mic-10min.m4a";
        if (fs::exists(path)) return path;
        auto partial = folder / ".mic-10min.m4a";
        std::mt19937 random(2);
        std::normal_distribution<float> white(0, 1);
        float brown = 0;
        AacFileWriter writer(partial, 48000, 1, 128000);
        std::vector<float> block(4800);
        for (int start = 0; start < int(seconds * 48000); start += 4800) {
            for (int i = 0; i < 4800; ++i) {
                double t = double(start + i) / 48000;
                double envelope = std::fmod(t, 6) < 4 ? 0.5 - 0.5 * std::cos(2 * std::numbers::pi * 3 * t) : 0;
                double voice = std::sin(2 * std::numbers::pi * 140 * t) + 0.5 * std::sin(2 * std::numbers::pi * 420 * t);
                brown = 0.98f * brown + 0.02f * white(random);
                block[std::size_t(i)] = float(0.2 * envelope * voice) + 0.05f * brown + 0.003f * white(random);
            }
            writer.write(block.data(), 4800);
        }
        writer.finish();
        fs::rename(partial, path);
        return path;
    }();
    return file;
}

void CleanTenMinutes(benchmark::State& state) {
    auto output = microphoneFile().parent_path() / "mic.clean-nl.m4a";
    for (auto _ : state) MicCleaner::clean(microphoneFile(), output, true, true);
}

} // namespace

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_ERROR);
    microphoneFile();
    benchmark::RegisterBenchmark("CleanTenMinutes", CleanTenMinutes)->Unit(benchmark::kMillisecond)->Iterations(2);
    benchmark::Initialize(&argc, argv);
    recorder::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    double milliseconds = reporter.milliseconds("CleanTenMinutes/iterations:2");
    if (milliseconds > 0)
        std::printf("cleaning 10 minutes, noise removal and levelling: %.0f ms = real-time factor %.4f "
                    "(target <= 0.1, %.0fx faster than real time)\n",
                    milliseconds, milliseconds / 1000 / seconds, seconds * 1000 / milliseconds);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak resident memory: %ld MB\n", usage.ru_maxrss / 1024);
    benchmark::Shutdown();
}
