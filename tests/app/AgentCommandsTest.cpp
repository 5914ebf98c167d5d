#include "Settings.h"
#include "agent/AgentCommands.h"
#include "agent/AgentLog.h"
#include "json/JsonText.h"
#include "package/ProjectPackage.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <utime.h>

using namespace recorder;
using nlohmann::json;
using recorder::test::TempDir;
using recorder::test::writeText;

namespace {

struct AgentSocket : ::testing::Test {
    TempDir dir;
    Settings settings{dir / "settings.conf"};
    AgentLog log;
    AgentCommands commands{settings, log};
    std::filesystem::path recordings = dir / "Recordings";

    AgentSocket() {
        std::filesystem::create_directories(recordings);
        commands.setProjectsDirectory(recordings);
    }

    json send(const std::string& line) {
        auto reply = commands.handle(line);
        EXPECT_TRUE(reply);
        EXPECT_EQ(reply->back(), '\n');
        EXPECT_EQ(std::count(reply->begin(), reply->end(), '\n'), 1);
        return JsonText::parse(*reply);
    }

    std::filesystem::path makePackage(const std::string& name, double seconds, long modified) {
        Project project(name, {}, "1.0");
        project.clips.push_back({Uuid::random(), Uuid::random(), 0, seconds, 1});
        auto package = recordings / (name + ".tidereel");
        ProjectPackage::save(project, package);
        timespec times[2] = {{modified, 0}, {modified, 0}};
        ::utimensat(AT_FDCWD, package.c_str(), times, 0);
        return package;
    }

    json listProjects(const std::string& arguments = "{}") {
        return send(R"({"id":1,"command":"tools/call","name":"list_projects","arguments":)" + arguments + "}");
    }
};

} // namespace

TEST_F(AgentSocket, ALineThatIsNotAJsonObjectIsABadRequestWithNullId) {
    for (std::string line : std::vector<std::string>{"not json", "[1,2]", "42", "\"text\"", "{\"id\":", std::string(1 << 20, '{')}) {
        json reply = send(line);
        EXPECT_TRUE(reply["id"].is_null());
        EXPECT_EQ(reply["ok"], false);
        EXPECT_EQ(reply["error"], (json{{"code", "bad_request"}, {"message", "The request was not a JSON object."}}));
    }
}

TEST_F(AgentSocket, AnUnknownOrMissingCommandIsABadRequestThatKeepsTheId) {
    for (std::string line : {R"({"id":"x","command":"tools/run"})", R"({"id":"x"})", R"({"id":"x","command":7})"}) {
        json reply = send(line);
        EXPECT_EQ(reply["id"], "x");
        EXPECT_EQ(reply["error"], (json{{"code", "bad_request"}, {"message", "Unknown command."}}));
    }
}

TEST_F(AgentSocket, AReplyHasOnlyIdOkAndResultOrError) {
    json good = send(R"({"id":{"nested":[1]},"command":"tools/list"})");
    EXPECT_EQ(good.size(), 3u);
    EXPECT_EQ(good["id"], (json{{"nested", {1}}}));
    EXPECT_TRUE(good.contains("result"));
    json bad = send(R"({"command":"nope"})");
    EXPECT_EQ(bad.size(), 3u);
    EXPECT_TRUE(bad["id"].is_null());
    EXPECT_FALSE(bad["error"].contains("hint"));
}

TEST_F(AgentSocket, ToolListCarriesToolsAndInstructions) {
    json result = send(R"({"command":"tools/list"})")["result"];
    ASSERT_EQ(result.size(), 2u);
    ASSERT_FALSE(result["tools"].empty());
    EXPECT_EQ(result["tools"][0]["name"], "list_projects");
    EXPECT_EQ(result["tools"][0]["inputSchema"]["type"], "object");
    EXPECT_EQ(result["instructions"].get<std::string>().rfind("Tidereel records the screen", 0), 0u);
}

TEST_F(AgentSocket, ACallWithoutANameIsAnUnknownToolNotAnArgumentError) {
    json reply = send(R"({"command":"tools/call"})");
    EXPECT_EQ(reply["error"]["code"], "unknown_tool");
    EXPECT_EQ(reply["error"]["message"], "There is no tool called .");
    EXPECT_EQ(reply["error"]["hint"], "List the tools again; the app may have been updated.");
    EXPECT_TRUE(log.entries().empty());
}

TEST_F(AgentSocket, ToolNamesAreCaseSensitive) {
    EXPECT_EQ(send(R"({"command":"tools/call","name":"List_Projects"})")["error"]["code"], "unknown_tool");
}

TEST_F(AgentSocket, EveryCallOfAKnownToolIsLoggedWithItsClient) {
    send(R"({"command":"tools/call","name":"list_projects","client":"Claude"})");
    send(R"({"command":"tools/call","name":"list_projects","client":5})");
    ASSERT_EQ(log.entries().size(), 2u);
    EXPECT_EQ(log.entries()[0].client, "An agent");
    EXPECT_EQ(log.entries()[1].client, "Claude");
    EXPECT_EQ(log.entries()[1].tool, "list_projects");
}

TEST_F(AgentSocket, ListProjectsIsNewestFirstWithDurationAndCaptions) {
    makePackage("Old", 12.345, 1'700'000'000);
    makePackage("New", 3.005, 1'800'000'000);
    makePackage("Middle", 61, 1'750'000'000);
    writeText(recordings / "notes.txt", "not a package");
    json projects = listProjects()["result"]["projects"];
    ASSERT_EQ(projects.size(), 3u);
    EXPECT_EQ(projects[0]["name"], "New");
    EXPECT_EQ(projects[1]["name"], "Middle");
    EXPECT_EQ(projects[2]["name"], "Old");
    EXPECT_EQ(projects[2]["duration_seconds"], 12.35);
    EXPECT_EQ(projects[1]["duration_seconds"], 61);
    EXPECT_EQ(projects[0]["has_captions"], false);
    EXPECT_EQ(projects[0]["modified"], "2027-01-15T08:00:00Z");
    EXPECT_EQ(projects[0]["path"], (recordings / "New.tidereel").string());
}

TEST_F(AgentSocket, ListProjectsClampsTheLimit) {
    for (int i = 0; i < 3; ++i) makePackage("P" + std::to_string(i), 1, 1'700'000'000 + i);
    EXPECT_EQ(listProjects(R"({"limit":0})")["result"]["projects"].size(), 1u);
    EXPECT_EQ(listProjects(R"({"limit":-5})")["result"]["projects"].size(), 1u);
    EXPECT_EQ(listProjects(R"({"limit":2.9})")["result"]["projects"].size(), 2u);
    EXPECT_EQ(listProjects(R"({"limit":1000})")["result"]["projects"].size(), 3u);
    EXPECT_EQ(listProjects(R"({"limit":"two"})")["result"]["projects"].size(), 3u);
}

TEST_F(AgentSocket, ListProjectsStopsAtTwoHundred) {
    for (int i = 0; i < 205; ++i) std::filesystem::create_directory(recordings / ("p" + std::to_string(i) + ".tidereel"));
    EXPECT_EQ(listProjects(R"({"limit":1000})")["result"]["projects"].size(), 200u);
    EXPECT_EQ(listProjects()["result"]["projects"].size(), 20u);
}

TEST_F(AgentSocket, ADamagedPackageIsListedWithoutWhatOnlyItsManifestTells) {
    writeText(recordings / "Broken.TIDEREEL" / "manifest.json", "{\"schemaVersion\": 99");
    json projects = listProjects()["result"]["projects"];
    ASSERT_EQ(projects.size(), 1u);
    EXPECT_EQ(projects[0]["name"], "Broken");
    EXPECT_FALSE(projects[0].contains("duration_seconds"));
    EXPECT_FALSE(projects[0].contains("has_captions"));
}

TEST_F(AgentSocket, AMissingRecordingsFolderListsNothing) {
    commands.setProjectsDirectory(dir / "does-not-exist");
    EXPECT_EQ(listProjects()["result"]["projects"], json::array());
}

TEST(AgentLogEntries, KeepTheNewestFifty) {
    AgentLog log;
    for (int i = 0; i < 60; ++i) log.add("client", "tool" + std::to_string(i));
    ASSERT_EQ(log.entries().size(), 50u);
    EXPECT_EQ(log.entries().front().tool, "tool59");
    EXPECT_EQ(log.entries().back().tool, "tool10");
}
