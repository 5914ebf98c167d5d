#include "events/EventLog.h"
#include "package/ProjectPackage.h"
#include "support/CliRunner.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/wait.h>

using namespace recorder;
using nlohmann::json;
using recorder::test::readText;
using recorder::test::TempDir;
using recorder::test::writeText;

namespace {

using recorder::test::CliRun;

CliRun zoomsCli(const std::string& arguments, const TempDir& dir) { return recorder::test::runCli("zooms " + arguments, dir); }

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

// A recorded package: one minute of screen, one clip, and the event log beside it.
std::filesystem::path recordedPackage(const TempDir& dir, const std::optional<EventLog>& log) {
    Project project("Demo", CanvasSettings{1920, 1080, 60}, "1.0");
    Asset screen;
    screen.id = Uuid::random();
    screen.relativePath = "screen.mov";
    screen.pixelSize = Size{1920, 1080};
    project.assets.push_back(screen);
    project.clips.push_back({Uuid::random(), screen.id, 0, 60, 1});
    auto package = dir / "Demo.tidereel";
    if (log) {
        Asset events;
        events.id = Uuid::random();
        events.kind = AssetKind::events;
        events.relativePath = "events.json";
        project.assets.push_back(events);
        writeText(package / "assets" / "events.json", log->encoded());
    }
    ProjectPackage::save(project, package);
    return package;
}

EventLog clicksAt(std::initializer_list<double> times) {
    EventLog log;
    for (double t : times) log.clicks.push_back({t, {0.95, 0.5}, ClickEvent::Button::left, true});
    return log;
}

} // namespace

TEST(CliZooms, PrintsTheGeneratedSegmentsInTheProjectFormAndChangesNothing) {
    TempDir dir;
    auto package = recordedPackage(dir, clicksAt({10, 30}));
    std::string manifest = readText(package / "manifest.json");
    CliRun run = zoomsCli(quoted(package), dir);
    ASSERT_EQ(run.status, 0) << run.err;
    json zooms = json::parse(run.out);
    ASSERT_EQ(zooms.size(), 2u);
    EXPECT_NEAR(zooms[0]["start"].get<double>(), 9.28, 1e-12);
    EXPECT_NEAR(zooms[0]["end"].get<double>(), 12.08, 1e-12);
    EXPECT_EQ(zooms[0]["rect"], json::parse(R"({"x":0.5,"y":0.25,"width":0.5,"height":0.5})"));
    EXPECT_EQ(zooms[0]["isAuto"], true);
    EXPECT_EQ(zooms[0]["easing"], "easeInOut");
    EXPECT_EQ(zooms[0]["keyframes"], json::array());
    EXPECT_NE(run.out.find("\"inDuration\" : 1.2,"), std::string::npos) << "the project's encoder form";
    EXPECT_EQ(readText(package / "manifest.json"), manifest);
}

TEST(CliZooms, WriteReplacesOnlyTheAutomaticZoomsAndSavesThePackage) {
    TempDir dir;
    auto package = recordedPackage(dir, clicksAt({10}));
    Project project = ProjectPackage::load(package);
    ZoomSegment manual;
    manual.id = Uuid::random();
    manual.start = 40;
    manual.end = 44;
    manual.rect = {0.1, 0.1, 0.5, 0.5};
    ZoomSegment stale = manual;
    stale.id = Uuid::random();
    stale.start = 1;
    stale.end = 3;
    stale.isAuto = true;
    project.zooms = {stale, manual};
    ProjectPackage::save(project, package);

    CliRun run = zoomsCli(quoted(package) + " --write", dir);
    ASSERT_EQ(run.status, 0) << run.err;
    Project saved = ProjectPackage::load(package);
    ASSERT_EQ(saved.zooms.size(), 2u);
    EXPECT_TRUE(saved.zooms[0].isAuto);
    EXPECT_NEAR(saved.zooms[0].start, 9.28, 1e-12);
    EXPECT_EQ(saved.zooms[1], manual);
    EXPECT_EQ(json::parse(run.out)[0]["id"], saved.zooms[0].id.string());
}

TEST(CliZooms, APackageWithoutALogPrintsAnEmptyListAndSaysSo) {
    TempDir dir;
    auto package = recordedPackage(dir, std::nullopt);
    std::string manifest = readText(package / "manifest.json");
    CliRun run = zoomsCli(quoted(package) + " --write", dir);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "[]\n");
    EXPECT_NE(run.err.find("no click log"), std::string::npos) << run.err;
    EXPECT_EQ(readText(package / "manifest.json"), manifest) << "nothing to regenerate from, nothing written";
}

TEST(CliZooms, ADamagedOrMissingLogFileCountsAsNoLog) {
    TempDir dir;
    auto package = recordedPackage(dir, clicksAt({10}));
    writeText(package / "assets" / "events.json", R"({"version":1,"samples":[],"clicks":[],"scrolls":[]})");
    CliRun damaged = zoomsCli(quoted(package), dir);
    EXPECT_EQ(damaged.status, 0);
    EXPECT_EQ(damaged.out, "[]\n");
    std::filesystem::remove(package / "assets" / "events.json");
    EXPECT_EQ(zoomsCli(quoted(package), dir).out, "[]\n");
}

TEST(CliZooms, ANonPackageOrWrongArgumentsFailWithASentence) {
    TempDir dir;
    CliRun missing = zoomsCli(quoted(dir / "nothing.tidereel"), dir);
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("Check that"), std::string::npos) << missing.err;
    EXPECT_TRUE(missing.out.empty());
    CliRun usage = zoomsCli(quoted(dir.path()) + " --overwrite", dir);
    EXPECT_EQ(usage.status, 2);
    EXPECT_NE(usage.err.find("recorder-cli zooms PACKAGE [--write]"), std::string::npos);
}
