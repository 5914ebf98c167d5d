// Reading a one-hour event log (432,000 samples at 120 Hz, 5,000 clicks,
// 20,000 keys) against a bare nlohmann-json parse of the same bytes, and the
// zoom generator on that log.
#include "events/EventLog.h"
#include "json/JsonText.h"
#include "motion/AutoZoomGenerator.h"
#include "support/RatioReporter.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <random>

using namespace recorder;

namespace {

constexpr double hour = 3600;

EventLog oneHourLog() {
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> unit(0, 1);
    EventLog log;
    Point pointer{0.5, 0.5};
    for (int i = 0; i < 432'000; ++i) {
        pointer.x = std::clamp(pointer.x + (unit(random) - 0.5) * 0.01, -0.1, 1.1);
        pointer.y = std::clamp(pointer.y + (unit(random) - 0.5) * 0.01, -0.1, 1.1);
        log.samples.push_back({i / 120.0, pointer});
    }
    // Work comes in bursts: 300 stretches of 4 s with 8 s of quiet between.
    for (int i = 0; i < 5'000; ++i) {
        double t = (i / 2) / 8 * 12.0 + (i / 2) % 8 * 0.5 + (i % 2) * 0.12;
        log.clicks.push_back({t, log.position(t), i % 7 ? ClickEvent::Button::left : ClickEvent::Button::right,
                              i % 2 == 0});
    }
    for (int i = 0; i < 20'000; ++i) {
        double t = (i / 2) / 33 * 12.0 + (i / 2) % 33 * 0.12 + 0.05 + (i % 2) * 0.06;
        log.keys.push_back({t, i % 13 ? "a" : "⌘⇧/", i % 2 == 0});
    }
    for (int i = 0; i < 2'000; ++i) log.scrolls.push_back({i * 1.8, {0.5, 0.5}, 0, -2.5});
    return log;
}

const EventLog& log() {
    static const EventLog value = oneHourLog();
    return value;
}

const std::string& logBytes() {
    static const std::string bytes = log().encoded();
    return bytes;
}

Project oneHourProject() {
    Project project("Benchmark", {1920, 1080, 60}, "1.0");
    project.clips.push_back({Uuid::random(), Uuid::random(), 0, hour, 1});
    return project;
}

void BareParse(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(logBytes()));
}

void Decode(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(EventLog::decode(logBytes()));
}

// The generic road (tree, then keyed reading): what the fast reader replaces.
void GenericDecode(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(EventLog::fromJson(JsonReader(JsonText::parse(logBytes()), "")));
}

void Encode(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(log().encoded());
}

void GenericEncode(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(JsonText::pretty(log().toJson()));
}

void Generate(benchmark::State& state) {
    Project project = oneHourProject();
    std::size_t zooms = 0;
    for (auto _ : state) zooms = AutoZoomGenerator{}.generate(log(), project).size();
    state.counters["zooms"] = double(zooms);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("BareParse", BareParse)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Decode", Decode)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("GenericDecode", GenericDecode)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Encode", Encode)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("GenericEncode", GenericEncode)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Generate", Generate)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    logBytes(); // made once, outside the timings
    recorder::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("event log: %zu bytes, %zu samples, %zu clicks, %zu keys\n", logBytes().size(), log().samples.size(),
                log().clicks.size(), log().keys.size());
    reporter.printRatio("Decode", "BareParse", "decode / bare parse (target <= 2x)");
    reporter.printRatio("GenericDecode", "BareParse", "generic tree decode / bare parse");
    reporter.printRatio("Encode", "GenericEncode", "direct encode / generic tree encode");
    reporter.printRatio("Generate", "Decode", "zoom generator / decode (target: generator under 50 ms)");
    benchmark::Shutdown();
}
