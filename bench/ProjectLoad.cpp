// Loading and saving a large project (2,000 zooms and 2,000 media items),
// against a bare nlohmann-json parse of the same bytes.
#include "json/JsonText.h"
#include "package/ProjectMigrator.h"
#include "package/ProjectPackage.h"
#include "support/RatioReporter.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <filesystem>

using namespace recorder;

namespace {

Project largeProject() {
    Project project("Benchmark", {1920, 1080, 60}, "1.0");
    for (int i = 0; i < 2000; ++i) {
        ZoomSegment zoom;
        zoom.id = Uuid::random();
        zoom.start = i * 2.0;
        zoom.end = i * 2.0 + 1.5;
        zoom.rect = {0.1 + i % 7 * 0.01, 0.2, 0.5, 0.5};
        zoom.inDuration = 0.4;
        zoom.outDuration = 0.35;
        zoom.keyframes.push_back({Uuid::random(), i * 2.0 + 0.7, {0.3, 0.3, 0.4, 0.4}});
        project.zooms.push_back(zoom);

        MediaItem item;
        item.id = Uuid::random();
        item.assetID = Uuid::random();
        item.kind = i % 2 ? AssetKind::text : AssetKind::image;
        item.name = "Item " + std::to_string(i);
        item.start = i * 1.3;
        item.end = i * 1.3 + 2.25;
        item.text = "Hello / world " + std::to_string(i);
        item.textStyle = TextStyle{};
        project.media.push_back(item);
    }
    return project;
}

const std::string& manifestBytes() {
    static const std::string bytes = ProjectPackage::encode(largeProject());
    return bytes;
}

void BareParse(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(manifestBytes()));
}

void Load(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(ProjectMigrator::migrate(manifestBytes()));
}

void Save(benchmark::State& state) {
    Project project = largeProject();
    auto package = std::filesystem::temp_directory_path() / "bench-project-save.tidereel";
    for (auto _ : state) ProjectPackage::save(project, package);
    std::filesystem::remove_all(package);
}

void Encode(benchmark::State& state) {
    Project project = largeProject();
    for (auto _ : state) benchmark::DoNotOptimize(ProjectPackage::encode(project));
}

} // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("BareParse", BareParse)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Load", Load)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Encode", Encode)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Save", Save)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    recorder::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("manifest: %zu bytes\n", manifestBytes().size());
    reporter.printRatio("Load", "BareParse", "load (migrate + decode) / bare parse");
    reporter.printRatio("Save", "BareParse", "save (encode + write + fsync + rename) / bare parse");
    benchmark::Shutdown();
}
