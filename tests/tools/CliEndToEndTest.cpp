#include "support/CliRunner.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <sstream>
#include <sys/wait.h>
#include <thread>

using nlohmann::json;
using recorder::test::readText;
using recorder::test::TempDir;
using recorder::test::writeText;

namespace {

using recorder::test::CliRun;

// Runs the real recorder-cli with its own home and settings folder.
CliRun cli(const std::string& arguments, const std::string& input, const TempDir& dir) {
    std::string environment = "HOME='" + dir.path().string() + "' XDG_CONFIG_HOME='" + (dir / "config").string() + "'";
    return recorder::test::runCli(arguments, dir, input, environment);
}

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

} // namespace

TEST(CliAgent, ListsPackagesMadeByTheCodeNewestFirst) {
    TempDir dir;
    auto recordings = dir / "Recordings";
    for (const char* name : {"First take", "Second take", "Third: final"}) {
        ASSERT_EQ(cli("new-project " + quoted(recordings) + " '" + name + "'", "", dir).status, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    CliRun run = cli("agent --projects-dir " + quoted(recordings),
                  "{\"command\":\"tools/call\",\"name\":\"list_projects\"}\n\n{\"id\":2,\"command\":\"tools/list\"}\n",
                  dir);
    ASSERT_EQ(run.status, 0) << run.err;
    std::istringstream lines(run.out);
    std::string first, second, extra;
    ASSERT_TRUE(std::getline(lines, first));
    ASSERT_TRUE(std::getline(lines, second));
    EXPECT_FALSE(std::getline(lines, extra)) << "an empty line gets no reply";
    json projects = json::parse(first)["result"]["projects"];
    ASSERT_EQ(projects.size(), 3u);
    EXPECT_EQ(projects[0]["name"], "Third- final");
    EXPECT_EQ(projects[1]["name"], "Second take");
    EXPECT_EQ(projects[2]["name"], "First take");
    EXPECT_EQ(projects[0]["duration_seconds"], 0);
    EXPECT_EQ(json::parse(second)["id"], 2);
}

TEST(CliAgent, AnswersGarbageWithBadRequestAndCarriesOn) {
    TempDir dir;
    std::string huge(3 << 20, 'x');
    CliRun run = cli("agent --projects-dir " + quoted(dir / "none"), huge + "\n{\"command\":\"tools/list\"}\n", dir);
    ASSERT_EQ(run.status, 0);
    auto firstReply = json::parse(firstLine(run.out));
    EXPECT_EQ(firstReply["error"]["code"], "bad_request");
    EXPECT_NE(run.out.find("\"ok\":true"), std::string::npos);
}

TEST(CliMigrate, PrintsTheCurrentProjectAndChangesNothing) {
    TempDir dir;
    std::string old = R"({"schemaVersion":9,"id":"6E1F3A34-3B1C-4F8A-9C55-2A7B1E0D9F11","name":"Old","createdAt":"2026-11-15T16:14:47Z",
      "modifiedAt":"2026-11-15T16:14:47Z","appVersion":"0.9","canvas":{"width":1920,"height":1080,"frameRate":60},
      "assets":[],"clips":[],"zooms":[],"screenStart":0,"tracks":{"screen":{"hidden":false,"locked":false},
      "zooms":{"hidden":false,"locked":false},"camera":{"hidden":false,"locked":false}},
      "style":{"background":{"solid":{"_0":{"r":0,"g":0,"b":0,"a":1}}},"padding":0.08,"cornerRadius":16,
      "shadowOpacity":0.45,"shadowRadius":40,"shadowOffsetY":20,"deviceFrame":"none","motionBlur":0.5},
      "cursor":{"visible":true,"size":3,"style":"arrow","smoothing":0.6,"clickRipples":true,
      "clickHighlightColor":{"r":1,"g":0.75,"b":0.1,"a":1},"hideWhenIdleAfter":0},
      "camera":{"layout":"hidden","keyframes":[],"bubbleSize":0.24,"bubbleShape":"circle","mirrored":true,
      "borderWidth":0,"shadow":true},"media":[],"audio":{"micVolume":1,"systemVolume":1,"micMuted":false,"systemMuted":false}})";
    auto package = dir / "Old.tidereel";
    writeText(package / "manifest.json", old);
    for (auto target : {package, package / "manifest.json"}) {
        CliRun run = cli("migrate " + quoted(target), "", dir);
        ASSERT_EQ(run.status, 0) << run.err;
        json project = json::parse(run.out);
        EXPECT_EQ(project["schemaVersion"], 12);
        EXPECT_EQ(project["camera"]["showAvatar"], false);
        EXPECT_EQ(project["audio"]["duckLevel"], 0.25);
        EXPECT_EQ(project["cursor"]["clickHighlightColor"]["g"], 0.75) << "only files older than 3 lose the old colour";
        EXPECT_NE(run.out.find("\"appVersion\" : \"0.9\""), std::string::npos);
    }
    EXPECT_EQ(readText(package / "manifest.json"), old);
    EXPECT_FALSE(std::filesystem::exists(package / "assets"));
}

TEST(CliMigrate, FailsWithTheSentenceOnTheFirstLineOfStandardError) {
    TempDir dir;
    writeText(dir / "newer.json", R"({"schemaVersion":13,"appVersion":"2.0"})");
    writeText(dir / "foreign.json", R"({"schemaVersion":"12"})");
    writeText(dir / "truncated.json", R"({"schemaVersion":12,"name":"x)");
    writeText(dir / "missing-key.json", R"({"schemaVersion":12})");
    struct Case {
        const char* file;
        std::string sentence;
    } cases[] = {
        {"newer.json", "It was saved with Tidereel 2.0, which added things this version can't show. Update Tidereel to open it."},
        {"foreign.json", "This isn't a Tidereel project file, or it's damaged."},
        {"truncated.json", "The data couldn't be read because it isn't in the correct format."},
        {"missing-key.json", "The data couldn't be read because \"id\" is missing."},
    };
    for (const auto& c : cases) {
        CliRun run = cli("migrate " + quoted(dir / c.file), "", dir);
        EXPECT_EQ(run.status, 1) << c.file;
        EXPECT_EQ(run.out, "") << c.file;
        EXPECT_EQ(firstLine(run.err), c.sentence) << c.file;
    }
    CliRun missing = cli("migrate " + quoted(dir / "nothing-here"), "", dir);
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(firstLine(missing.err).find("nothing-here"), std::string::npos);
}

TEST(CliMcpHttpBody, PrintsTheReplyOrNothing) {
    TempDir dir;
    CliRun reply = cli("mcp-http-body", R"({"jsonrpc":"2.0","id":3,"method":"ping"})", dir);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(json::parse(reply.out), (json{{"jsonrpc", "2.0"}, {"id", 3}, {"result", json::object()}}));
    CliRun notification = cli("mcp-http-body", R"({"jsonrpc":"2.0","method":"notifications/initialized"})", dir);
    EXPECT_EQ(notification.status, 0);
    EXPECT_EQ(notification.out, "");
    CliRun garbage = cli("mcp-http-body", "}{", dir);
    EXPECT_EQ(json::parse(garbage.out)["error"]["code"], -32700);
}

TEST(CliUsage, UnknownCommandsSayWhatToDo) {
    TempDir dir;
    CliRun run = cli("fly", "", dir);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(firstLine(run.err), "There is no command called fly. Run recorder-cli --help for the list.");
}
