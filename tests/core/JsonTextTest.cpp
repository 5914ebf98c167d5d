#include "json/JsonText.h"
#include "model/Date.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

using namespace recorder;
using nlohmann::json;

TEST(JsonText, PrettyWritesSortedKeysAtEveryDepthTwoSpacesAndBlanksAroundTheColon) {
    json value = {{"zeta", {{"b", 1}, {"a", json::array({1.5, {{"y", true}, {"x", false}}})}}},
                  {"alpha", "text"},
                  {"empties", {{"list", json::array()}, {"object", json::object()}}}};
    EXPECT_EQ(JsonText::pretty(value),
              "{\n"
              "  \"alpha\" : \"text\",\n"
              "  \"empties\" : {\n"
              "    \"list\" : [],\n"
              "    \"object\" : {}\n"
              "  },\n"
              "  \"zeta\" : {\n"
              "    \"a\" : [\n"
              "      1.5,\n"
              "      {\n"
              "        \"x\" : false,\n"
              "        \"y\" : true\n"
              "      }\n"
              "    ],\n"
              "    \"b\" : 1\n"
              "  }\n"
              "}");
}

TEST(JsonText, PrettyEscapesSlashesInValuesAndKeysButLeavesOtherLettersAlone) {
    json value = {{"a/b", "x/y \"q\" \\ é"}};
    EXPECT_EQ(JsonText::pretty(value), "{\n  \"a\\/b\" : \"x\\/y \\\"q\\\" \\\\ é\"\n}");
}

TEST(JsonText, ControlCharactersInTextAreEscapedSoTheFileStaysOneJsonString) {
    std::string written = JsonText::pretty(json("tab\tline\nbell\x07"));
    EXPECT_EQ(written, "\"tab\\tline\\nbell\\u0007\"");
    EXPECT_EQ(JsonText::parse(written), json("tab\tline\nbell\x07"));
}

TEST(JsonText, WholeDoublesHaveNoFractionAndIntegersArePlain) {
    EXPECT_EQ(JsonText::compact(json{{"d", 135.0}, {"n", -2.0}, {"z", 0.0}, {"i", 12}, {"u", 7u}}),
              "{\"d\":135,\"i\":12,\"n\":-2,\"u\":7,\"z\":0}");
    EXPECT_EQ(JsonText::formatDouble(1920.0), "1920");
    EXPECT_EQ(JsonText::compact(json(std::numeric_limits<std::int64_t>::max())), "9223372036854775807");
}

TEST(JsonText, DoublesAreWrittenInTheirShortestFormThatReadsBackExactly) {
    EXPECT_EQ(JsonText::formatDouble(0.1), "0.1");
    EXPECT_EQ(JsonText::formatDouble(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(JsonText::formatDouble(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(JsonText::formatDouble(-0.45), "-0.45");

    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> spread(-1e6, 1e6);
    for (int i = 0; i < 2000; ++i) {
        double value = i % 2 ? spread(random) : std::ldexp(spread(random), -40 + i % 80);
        std::string text = JsonText::formatDouble(value);
        EXPECT_EQ(JsonText::parse(text).get<double>(), value) << text;
    }
}

TEST(JsonText, NumbersThatJsonCannotHoldRefuseToBeWritten) {
    EXPECT_THROW(JsonText::pretty(json{{"x", std::nan("")}}), JsonEncodeError);
    EXPECT_THROW(JsonText::pretty(json::array({std::numeric_limits<double>::infinity()})), JsonEncodeError);
}

TEST(JsonText, DatesAreIso8601InUtcToWholeSecondsBothWays) {
    auto date = Date::fromIso8601("2026-11-15T16:14:47Z");
    ASSERT_TRUE(date);
    EXPECT_EQ(date->iso8601(), "2026-11-15T16:14:47Z");
    EXPECT_EQ(Date::fromIso8601("2026-11-15T17:14:47+01:00"), date);
    EXPECT_EQ(Date(0).iso8601(), "1970-01-01T00:00:00Z");
    EXPECT_FALSE(Date::fromIso8601("2026-11-15 16:14:47"));
    EXPECT_FALSE(Date::fromIso8601("2026-02-30T00:00:00Z"));
    EXPECT_FALSE(Date::fromIso8601("yesterday"));
}

TEST(JsonText, BracketsInsideTextDoNotCountAsNesting) {
    std::string deepLooking(5000, '[');
    std::string bytes = "{\"name\":\"" + deepLooking + "\\\"{{{{\"}";
    EXPECT_EQ(JsonText::parse(bytes)["name"], deepLooking + "\"{{{{");
}

TEST(JsonText, HostileInputEndsInAParseErrorWithASentence) {
    const std::string cases[] = {
        std::string(100000, '['),
        std::string(50000, '{') ,
        "[" + std::string(300, '{'),
        "",
        "   ",
        "{\"a\": 1e400}",
        "{\"a\": \"\xff\xfe\"}",
        "{\"a\": \"\xc3\"}",
        "{\"a\" 1}",
        "{\"a\": 1}}",
        "{\"a\": [1, 2",
        "\"unterminated",
        "nul",
    };
    for (const auto& bytes : cases) {
        try {
            JsonText::parse(bytes);
            ADD_FAILURE() << "parsed: " << bytes.substr(0, 40);
        } catch (const JsonParseError& error) {
            EXPECT_STRNE(error.what(), "");
            EXPECT_FALSE(error.detail().empty());
        }
    }
}
