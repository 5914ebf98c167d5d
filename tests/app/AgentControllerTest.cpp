#include "Settings.h"
#include "agent/AgentCommands.h"
#include "agent/AgentController.h"
#include "json/JsonText.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace recorder;
using nlohmann::json;
using recorder::test::TempDir;

namespace {

struct McpBody : ::testing::Test {
    TempDir dir;
    Settings settings{dir / "settings.conf"};
    AgentLog log;
    AgentCommands commands{settings, log};
    AgentController controller{&commands};

    McpBody() { commands.setProjectsDirectory(dir / "Recordings"); }

    std::optional<json> post(const std::string& body) {
        auto reply = controller.handleBody(body);
        if (!reply) return std::nullopt;
        return JsonText::parse(*reply);
    }
};

} // namespace

TEST_F(McpBody, ABodyThatIsNotJsonIsAParseError) {
    auto reply = post("{nope");
    ASSERT_TRUE(reply);
    EXPECT_EQ(*reply, (json{{"jsonrpc", "2.0"}, {"id", nullptr}, {"error", {{"code", -32700}, {"message", "Parse error"}}}}));
}

TEST_F(McpBody, NotificationsAndNullIdsGetNoReply) {
    EXPECT_FALSE(post(R"({"jsonrpc":"2.0","method":"notifications/initialized"})"));
    EXPECT_FALSE(post(R"({"jsonrpc":"2.0","id":null,"method":"initialize","params":{}})"));
    EXPECT_FALSE(post(R"({"jsonrpc":"2.0","id":null,"method":"no/such"})"));
}

TEST_F(McpBody, InitializeEchoesAnyRequestedVersionAndNamesTheServer) {
    auto reply = post(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"1999-01-01"}})");
    ASSERT_TRUE(reply);
    json result = (*reply)["result"];
    EXPECT_EQ(result["protocolVersion"], "1999-01-01");
    EXPECT_EQ(result["capabilities"], (json{{"tools", {{"listChanged", false}}}}));
    EXPECT_EQ(result["serverInfo"], (json{{"name", "tidereel"}, {"title", "Tidereel"}, {"version", "0.1.0"}}));
    EXPECT_EQ(post(R"({"jsonrpc":"2.0","id":2,"method":"initialize"})").value()["result"]["protocolVersion"],
              "2025-06-18");
}

TEST_F(McpBody, TheClientNameFromInitializeIsLoggedWithLaterCalls) {
    post(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"clientInfo":{"name":"Inspector"}}})");
    post(R"({"jsonrpc":"2.0","id":2,"method":"tools/call","params":{"name":"list_projects"}})");
    ASSERT_EQ(log.entries().size(), 1u);
    EXPECT_EQ(log.entries()[0].client, "Inspector");
}

TEST_F(McpBody, SimpleMethodsAnswerAndUnknownOnesAreNotFound) {
    EXPECT_EQ(post(R"({"id":1,"method":"ping"})").value()["result"], json::object());
    EXPECT_EQ(post(R"({"id":1,"method":"resources/list"})").value()["result"], (json{{"resources", json::array()}}));
    EXPECT_EQ(post(R"({"id":1,"method":"prompts/list"})").value()["result"], (json{{"prompts", json::array()}}));
    json tools = post(R"({"id":1,"method":"tools/list"})").value()["result"];
    EXPECT_FALSE(tools.contains("instructions"));
    EXPECT_EQ(tools["tools"][0]["name"], "list_projects");
    EXPECT_EQ(post(R"({"id":9,"method":"sing"})").value()["error"],
              (json{{"code", -32601}, {"message", "Method not found: sing"}}));
}

TEST_F(McpBody, AToolCallWithoutANameIsMissingToolName) {
    for (std::string params : {"{}", R"({"name":3})"}) {
        auto reply = post(R"({"id":4,"method":"tools/call","params":)" + params + "}");
        EXPECT_EQ(reply.value()["error"], (json{{"code", -32602}, {"message", "Missing tool name."}}));
    }
    AgentController detached(nullptr);
    auto reply = detached.handleBody(R"({"id":4,"method":"tools/call","params":{"name":"list_projects"}})");
    EXPECT_NE(reply.value().find("Missing tool name."), std::string::npos);
}

TEST_F(McpBody, ASuccessfulToolCallHasTextAndStructuredContent) {
    auto reply = post(R"({"id":"c","method":"tools/call","params":{"name":"list_projects"}})");
    json result = reply.value()["result"];
    EXPECT_EQ(result["isError"], false);
    EXPECT_EQ(result["structuredContent"], (json{{"projects", json::array()}}));
    EXPECT_EQ(result["content"][0]["type"], "text");
    EXPECT_EQ(result["content"][0]["text"], "{\n  \"projects\" : []\n}");
}

TEST_F(McpBody, AFailedToolCallIsAResultWithIsErrorAndNoStructuredContent) {
    auto reply = post(R"({"id":5,"method":"tools/call","params":{"name":"fly"}})");
    json result = reply.value()["result"];
    EXPECT_FALSE(reply.value().contains("error"));
    EXPECT_EQ(result["isError"], true);
    EXPECT_FALSE(result.contains("structuredContent"));
    json text = JsonText::parse(result["content"][0]["text"].get<std::string>());
    EXPECT_EQ(text["error"]["code"], "unknown_tool");
    EXPECT_EQ(text["error"]["message"], "There is no tool called fly.");
}

TEST_F(McpBody, ABatchIsAnsweredInOrderWithoutItsNotifications) {
    auto reply = post(R"([{"id":1,"method":"ping"},{"method":"notifications/x"},{"id":2,"method":"nope"}])");
    ASSERT_TRUE(reply && reply->is_array());
    ASSERT_EQ(reply->size(), 2u);
    EXPECT_EQ((*reply)[0]["id"], 1);
    EXPECT_EQ((*reply)[1]["error"]["code"], -32601);
}

TEST_F(McpBody, BatchesOfNothingAndOtherValuesGetNoReply) {
    EXPECT_FALSE(post("[]"));
    EXPECT_FALSE(post(R"([{"method":"a"},{"method":"b"}])"));
    EXPECT_FALSE(post(R"([{"id":1,"method":"ping"}, 3])"));
    EXPECT_FALSE(post("42"));
    EXPECT_FALSE(post("\"ping\""));
}
