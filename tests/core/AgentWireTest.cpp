#include "agent/AgentArguments.h"
#include "agent/AgentCatalogue.h"
#include "agent/AgentError.h"
#include "agent/AgentWire.h"
#include "agent/MCPMessages.h"
#include "json/JsonText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace recorder;
using nlohmann::json;

TEST(AgentWireEncoding, IsCompactWithUnescapedSlashesAndOneLineFeed) {
    auto line = AgentWire::encode({{"path", "/tmp/a b"}, {"n", 1.5}});
    ASSERT_TRUE(line);
    EXPECT_EQ(*line, "{\"n\":1.5,\"path\":\"/tmp/a b\"}\n");
}

TEST(AgentWireEncoding, RefusesWhatIsNotAnObjectOrNotJson) {
    EXPECT_FALSE(AgentWire::encode(json::array()));
    EXPECT_FALSE(AgentWire::encode("text"));
    EXPECT_FALSE(AgentWire::encode({{"x", std::numeric_limits<double>::quiet_NaN()}}));
    EXPECT_FALSE(AgentWire::encode({{"x", {{"y", std::numeric_limits<double>::infinity()}}}}));
}

TEST(AgentWireDecoding, GivesObjectsOnly) {
    EXPECT_TRUE(AgentWire::decode(R"({"a":1})"));
    EXPECT_FALSE(AgentWire::decode("[1]"));
    EXPECT_FALSE(AgentWire::decode("null"));
    EXPECT_FALSE(AgentWire::decode("{"));
    EXPECT_FALSE(AgentWire::decode(""));
    EXPECT_FALSE(AgentWire::decode("{\"a\":\"\xff\xfe\"}"));
    EXPECT_FALSE(AgentWire::decode(std::string(200000, '[')));
}

TEST(AgentWireReplies, EchoTheIdAndCarryTheHintOnlyWhenThereIsOne) {
    EXPECT_EQ(AgentWire::success(nullptr, json::object()), (json{{"id", nullptr}, {"ok", true}, {"result", json::object()}}));
    json failure = AgentWire::failure(7, AgentError("failed", "It broke."));
    EXPECT_EQ(failure, (json{{"id", 7}, {"ok", false}, {"error", {{"code", "failed"}, {"message", "It broke."}}}}));
    json hinted = AgentWire::failure("x", AgentError::noProject());
    EXPECT_EQ(hinted["error"]["hint"],
              "Call list_projects and open_project first, or record something with start_recording.");
}

TEST(AgentErrors, ReadAsSentences) {
    EXPECT_EQ(AgentError::badArgument("path", "is required.").message, "Argument path: is required.");
    EXPECT_EQ(AgentError::badArgument("from/to", "x", "Try again.").hint, "Try again.");
    EXPECT_EQ(AgentError::unknownTool("zap").message, "There is no tool called zap.");
    EXPECT_EQ(AgentError::noProject().code, "no_project");
    EXPECT_EQ(AgentError::noProject(), AgentError::noProject());
}

TEST(AgentArgumentAccessors, GiveNothingForMissingOrMistypedValues) {
    AgentArguments args(json{{"s", ""}, {"b", true}, {"n", 2.75}, {"i", -2.75}, {"o", {{"k", 1}}}, {"bad", nullptr}});
    EXPECT_EQ(args.string("s"), "");
    EXPECT_FALSE(args.string("b"));
    EXPECT_EQ(args.boolean("b"), true);
    EXPECT_FALSE(args.boolean("n"));
    EXPECT_EQ(args.number("n"), 2.75);
    EXPECT_EQ(args.integer("n"), 2);
    EXPECT_EQ(args.integer("i"), -2);
    EXPECT_FALSE(args.integer("s"));
    EXPECT_EQ(args.object("o"), (json{{"k", 1}}));
    EXPECT_FALSE(args.object("bad"));
    EXPECT_FALSE(args.number("missing"));
    EXPECT_EQ(AgentArguments(json::array()).raw, json::object());
}

TEST(AgentArgumentAccessors, HugeIntegersStopAtTheEndsOfTheRange) {
    AgentArguments args(json::parse(R"({"big":1e300,"small":-1e300,"u":18446744073709551615})"));
    EXPECT_GT(*args.integer("big"), 0);
    EXPECT_LT(*args.integer("small"), 0);
    EXPECT_GT(*args.integer("u"), 0);
}

TEST(AgentArgumentAccessors, RequiredOnesThrowTheArgumentSentence) {
    AgentArguments args(json{{"empty", ""}, {"text", "7"}});
    try {
        args.requiredString("empty");
        FAIL();
    } catch (const AgentError& error) {
        EXPECT_EQ(error, AgentError::badArgument("empty", "is required."));
    }
    try {
        args.requiredNumber("text");
        FAIL();
    } catch (const AgentError& error) {
        EXPECT_EQ(error.message, "Argument text: is required and must be a number.");
    }
}

TEST(AgentArgumentAccessors, ColourIsNothingWhenAbsentAndAnErrorWhenUnreadable) {
    AgentArguments args(json{{"good", "#1C1C1E"}, {"bad", "blue"}, {"num", 5}});
    EXPECT_EQ(args.color("good")->hex(), "#1C1C1E");
    EXPECT_FALSE(args.color("missing"));
    EXPECT_FALSE(args.color("num"));
    EXPECT_THROW(args.color("bad"), AgentError);
}

TEST(AllowedFiles, AreInsideHomeOrATemporaryFolder) {
    std::filesystem::path home = "/home/ana", temporary = "/var/tmp/xyz/";
    EXPECT_TRUE(AgentArguments::allowedFile("/home/ana", home, temporary));
    EXPECT_TRUE(AgentArguments::allowedFile("/home/ana/Videos/a.mp4", home, temporary));
    EXPECT_TRUE(AgentArguments::allowedFile("/var/tmp/xyz/out.gif", home, temporary));
    EXPECT_TRUE(AgentArguments::allowedFile("/private/var/tmp/xyz/out.gif", home, temporary));
    EXPECT_TRUE(AgentArguments::allowedFile("/tmp/x", home, temporary));
    EXPECT_TRUE(AgentArguments::allowedFile("/private/tmp/x", home, temporary));
    EXPECT_FALSE(AgentArguments::allowedFile("/home/anabel/x", home, temporary));
    EXPECT_FALSE(AgentArguments::allowedFile("/home/ana/../bob/x", home, temporary));
    EXPECT_FALSE(AgentArguments::allowedFile("/tmpfoo", home, temporary));
    EXPECT_FALSE(AgentArguments::allowedFile("/etc/passwd", home, temporary));
    EXPECT_TRUE(AgentArguments::allowedFile("/etc/../home/ana/./x", home, temporary));
}

TEST(ToolCatalogue, FindsToolsByExactName) {
    ASSERT_FALSE(AgentCatalogue::tools().empty());
    EXPECT_TRUE(AgentCatalogue::tool("list_projects"));
    EXPECT_FALSE(AgentCatalogue::tool("LIST_PROJECTS"));
    EXPECT_FALSE(AgentCatalogue::tool(""));
}

TEST(ToolCatalogue, EverySchemaParsesToAClosedObject) {
    for (const auto& tool : AgentCatalogue::tools()) {
        json schema = JsonText::parse(tool.schema);
        EXPECT_EQ(schema["type"], "object") << tool.name;
        EXPECT_EQ(schema["additionalProperties"], false) << tool.name;
        EXPECT_EQ(tool.json()["inputSchema"], schema) << tool.name;
    }
}

TEST(ToolCatalogue, AnUnparsableSchemaIsServedAsABareObjectType) {
    AgentTool tool{"t", "T", "d", "{not json"};
    EXPECT_EQ(tool.json()["inputSchema"], (json{{"type", "object"}}));
    tool.schema = "[1]";
    EXPECT_EQ(tool.json()["inputSchema"], (json{{"type", "object"}}));
}

TEST(McpToolResults, ComeFromSocketReplies) {
    json ok = MCPMessages::toolResult({{"ok", true}, {"result", {{"path", "/a/b"}}}});
    EXPECT_EQ(ok["isError"], false);
    EXPECT_EQ(ok["structuredContent"], (json{{"path", "/a/b"}}));
    EXPECT_EQ(ok["content"][0]["text"], "{\n  \"path\" : \"/a/b\"\n}");
    EXPECT_EQ(MCPMessages::toolResult({{"ok", true}})["structuredContent"], json::object());
    json odd = MCPMessages::toolResult({{"ok", "yes"}});
    EXPECT_EQ(odd["isError"], true);
    EXPECT_EQ(JsonText::parse(odd["content"][0]["text"].get<std::string>()),
              (json{{"error", {{"message", "Unknown error."}}}}));
}

TEST(McpInstructions, StartWithTheDisplayNameAndEndWithoutALineFeed) {
    Brand brand;
    brand.display = "Reel";
    std::string text = MCPMessages::instructions(brand);
    EXPECT_EQ(text.rfind("Reel records the screen of this computer", 0), 0u);
    EXPECT_NE(text.back(), '\n');
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6);
    EXPECT_EQ(text.find("Mac"), std::string::npos);
}
