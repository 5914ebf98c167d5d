#include "events/EventLog.h"
#include "events/EventLogDecoder.h"
#include "json/JsonText.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace recorder;
using recorder::test::TempDir;
using recorder::test::writeText;

namespace {

EventLog sampleLog() {
    EventLog log;
    log.samples = {{0, {0.1, 0.2}}, {0.5, {1.3, -0.25}}, {1, {0.5, 0.5}}};
    log.clicks = {{0.4, {0.3, 0.4}, ClickEvent::Button::left, true}, {0.6, {0.3, 0.4}, ClickEvent::Button::other, false}};
    log.scrolls = {{0.7, {0.5, 0.5}, 0, -3.5}};
    log.keys = {{0.8, "⌘/", true}};
    return log;
}

// The generic reader, which the file form is defined by.
EventLog decodeGenerically(const std::string& bytes) { return EventLog::fromJson(JsonReader(JsonText::parse(bytes), "")); }

} // namespace

TEST(EventLogFile, WritesEveryKeySortedInTheOneJsonForm) {
    EventLog log;
    log.clicks = {{1.5, {0.25, 1}, ClickEvent::Button::right, true}};
    EXPECT_EQ(log.encoded(), "{\n"
                             "  \"clicks\" : [\n"
                             "    {\n"
                             "      \"button\" : \"right\",\n"
                             "      \"isDown\" : true,\n"
                             "      \"position\" : {\n"
                             "        \"x\" : 0.25,\n"
                             "        \"y\" : 1\n"
                             "      },\n"
                             "      \"time\" : 1.5\n"
                             "    }\n"
                             "  ],\n"
                             "  \"keys\" : [],\n"
                             "  \"samples\" : [],\n"
                             "  \"scrolls\" : [],\n"
                             "  \"version\" : 1\n"
                             "}");
}

TEST(EventLogFile, IsWrittenByteForByteAsTheGenericWriterWouldWriteIt) {
    EventLog log = sampleLog();
    log.version = 3;
    log.keys.push_back({-0.0, "\"quoted\"\n\t\x01 ünï / ⌥", false});
    log.samples.push_back({1e-300, {-1e21, 123456789.125}});
    log.scrolls.push_back({2, {0.5, 0.5}, -0.0, 1e15});
    EXPECT_EQ(log.encoded(), JsonText::pretty(log.toJson()));
    EXPECT_EQ(EventLog{}.encoded(), JsonText::pretty(EventLog{}.toJson()));
    log.samples[0].time = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(log.encoded(), JsonEncodeError);
}

TEST(EventLogFile, RoundTripsEveryRecordWithPositionsOutsideTheArea) {
    EventLog log = sampleLog();
    EventLog back = EventLog::decode(log.encoded());
    EXPECT_EQ(back, log);
    EXPECT_EQ(back.samples[1].position.x, 1.3);
    EXPECT_NE(log.encoded().find("\"display\" : \"⌘\\/\""), std::string::npos) << "slashes are escaped";
}

TEST(EventLogFile, EveryKeyIsRequiredAndEmptyArraysAreAValidLog) {
    EXPECT_EQ(EventLog::decode(R"({"version":1,"samples":[],"clicks":[],"scrolls":[],"keys":[]})"), EventLog{});
    for (const char* bytes : {R"({"version":1,"samples":[],"clicks":[],"scrolls":[]})",
                              R"({"version":null,"samples":[],"clicks":[],"scrolls":[],"keys":[]})",
                              R"({"version":1,"samples":[{"time":1}],"clicks":[],"scrolls":[],"keys":[]})",
                              R"({"version":1,"samples":[{"time":1,"position":{"x":1}}],"clicks":[],"scrolls":[],"keys":[]})"})
        EXPECT_THROW(EventLog::decode(bytes), DecodingError) << bytes;
}

TEST(EventLogFile, AnUnknownButtonFailsTheWholeLogWithTheGenericSentence) {
    std::string bytes =
        R"({"version":1,"samples":[],"scrolls":[],"keys":[],"clicks":[{"time":1,"position":{"x":0,"y":0},"button":"middle","isDown":true}]})";
    try {
        EventLog::decode(bytes);
        FAIL() << "decoded";
    } catch (const DecodingError& error) {
        EXPECT_EQ(error.path(), "clicks[0].button");
        EXPECT_STREQ(error.what(),
                     "The data couldn't be read because \"clicks[0].button\" has the unknown value \"middle\".");
    }
}

TEST(EventLogFile, UnknownKeysAnywhereAreIgnored) {
    std::string bytes = R"({"extra":{"deep":[[1,{"a":[]}],null]},"version":1.0,"samples":[{"time":2,"position":{"x":1,"y":2,"z":[3]},"button":5}],
        "clicks":[],"scrolls":[],"keys":[{"time":1,"display":"A","isDown":false,"more":"x"}]})";
    EventLog log = EventLog::decode(bytes);
    ASSERT_EQ(log.samples.size(), 1u);
    EXPECT_EQ(log.samples[0].position, (Point{1, 2}));
    EXPECT_EQ(log.keys[0].display, "A");
}

TEST(EventLogFile, ReadingAMissingUnreadableOrInvalidFileGivesNoLog) {
    TempDir dir;
    EXPECT_FALSE(EventLog::read(dir / "none.json"));
    EXPECT_FALSE(EventLog::read(dir.path()));
    writeText(dir / "bad.json", "{\"version\":1,");
    EXPECT_FALSE(EventLog::read(dir / "bad.json"));
    writeText(dir / "nokeys.json", R"({"version":1,"samples":[],"clicks":[],"scrolls":[]})");
    EXPECT_FALSE(EventLog::read(dir / "nokeys.json"));
    writeText(dir / "good.json", sampleLog().encoded());
    EXPECT_EQ(EventLog::read(dir / "good.json"), sampleLog());
}

// Mutates a valid file at random (drops keys, changes types, adds nulls,
// unknown and repeated keys) and checks that the fast reader and the generic
// one agree on every verdict and every value.
TEST(EventLogFile, TheFastReaderAgreesWithTheGenericReaderOnDamagedFiles) {
    std::mt19937 random(3);
    const nlohmann::json replacements[] = {nullptr, 1, 2.5, -1, "left", "middle", true, nlohmann::json::array(),
                                           nlohmann::json::object(), 1e300, 4294967296.0};
    nlohmann::json original = sampleLog().toJson();
    int agreedFailures = 0;
    for (int round = 0; round < 3000; ++round) {
        nlohmann::json doc = original;
        std::vector<nlohmann::json*> objects;
        auto collect = [&](auto& self, nlohmann::json& node) -> void {
            if (node.is_object()) objects.push_back(&node);
            if (node.is_structured())
                for (auto& child : node) self(self, child);
        };
        collect(collect, doc);
        nlohmann::json* target = objects[random() % objects.size()];
        auto it = target->begin();
        std::advance(it, random() % target->size());
        std::string key = it.key();
        switch (random() % 4) {
        case 0: target->erase(key); break;
        case 1: (*target)[key] = replacements[random() % std::size(replacements)]; break;
        default: (*target)["unknown"] = replacements[random() % std::size(replacements)];
        }
        std::string bytes = JsonText::compact(doc);
        if (round % 5 == 0) {
            // A repeated key: the generic tree keeps the last.
            std::string repeat = "{\"version\":\"one\",";
            bytes = repeat + bytes.substr(1);
        }
        std::optional<EventLog> generic, fast;
        try { generic = decodeGenerically(bytes); } catch (const std::exception&) {}
        try { fast = EventLog::decode(bytes); } catch (const std::exception&) {}
        ASSERT_EQ(generic.has_value(), fast.has_value()) << bytes;
        if (generic) EXPECT_EQ(*generic, *fast) << bytes;
        else ++agreedFailures;
        try {
            EventLog straight = EventLogDecoder::decode(bytes);
            ASSERT_TRUE(generic) << "the fast reader accepted what the generic one refuses: " << bytes;
            EXPECT_EQ(straight, *generic);
        } catch (const std::exception&) {}
    }
    EXPECT_GT(agreedFailures, 500);
}

TEST(EventLogLookup, ClampsToTheEndsAndBlendsBetweenTheNeighboursTheSearchFinds) {
    EventLog log;
    log.samples = {{1, {0, 0}}, {2, {1, 0.5}}, {2, {0.6, 0.6}}, {4, {1, 1}}};
    EXPECT_EQ(log.position(0), (Point{0, 0}));
    EXPECT_EQ(log.position(9), (Point{1, 1}));
    EXPECT_EQ(log.position(1.5), (Point{0.5, 0.25}));
    EXPECT_EQ(log.position(3), (Point{0.8, 0.8})) << "from the last sample at or before the time";
    EXPECT_EQ(*log.samplePosition(std::numeric_limits<double>::infinity()), (Point{1, 1}));
    EXPECT_FALSE(log.samplePosition(std::numeric_limits<double>::quiet_NaN()));
    EventLog pair;
    pair.samples = {{1, {0.2, 0.2}}, {1, {0.8, 0.8}}};
    EXPECT_EQ(pair.position(1), (Point{0.2, 0.2})) << "two samples at one time: the earlier";
}

TEST(EventLogLookup, WithoutSamplesThereIsNoPositionAndTheDrawnOneIsTheOrigin) {
    EXPECT_FALSE(EventLog{}.samplePosition(1));
    EXPECT_EQ(EventLog{}.position(1), (Point{0, 0}));
}

TEST(EventLogSmoothing, NoSmoothingOrFewerThanThreeSamplesLeavesTheLogAsItIs) {
    EventLog two;
    two.samples = {{0, {0, 0}}, {1, {1, 1}}};
    EXPECT_EQ(two.smoothed(1), two);
    EventLog log = sampleLog();
    EXPECT_EQ(log.smoothed(0), log);
    EXPECT_EQ(log.smoothed(-1), log);
}

TEST(EventLogSmoothing, IsAOnePoleFilterOnTheRealTimeStep) {
    EventLog log;
    log.samples = {{0, {0, 0}}, {0.12, {1, 2}}, {0.12, {5, 5}}, {0.24, {1, 2}}};
    EventLog smooth = log.smoothed(1);
    double alpha = 1 - std::exp(-1.0);
    EXPECT_EQ(smooth.samples[0].position, (Point{0, 0}));
    EXPECT_DOUBLE_EQ(smooth.samples[1].position.x, alpha);
    EXPECT_DOUBLE_EQ(smooth.samples[1].position.y, 2 * alpha);
    EXPECT_EQ(smooth.samples[2].position, smooth.samples[1].position) << "dt 0: the sample is ignored";
    EXPECT_DOUBLE_EQ(smooth.samples[3].position.x, alpha + (1 - alpha) * alpha);
    EXPECT_EQ(smooth.samples[3].time, 0.24);
    EXPECT_EQ(log.smoothed(7), smooth) << "smoothing above 1 acts as 1";
}

TEST(EventLogSmoothing, FiltersAlikeWhateverTheSamplingRate) {
    EventLog coarse, fine;
    // The pointer jumps right after the first sample and stays.
    for (int i = 0; i <= 60; ++i) coarse.samples.push_back({i / 60.0, {i == 0 ? 0.0 : 1.0, 0}});
    for (int i = 0; i <= 240; ++i) fine.samples.push_back({i / 240.0, {i == 0 ? 0.0 : 1.0, 0}});
    auto a = coarse.smoothed(0.6), b = fine.smoothed(0.6);
    EXPECT_NEAR(a.position(0.25).x, 1 - std::exp(-0.25 / 0.072), 1e-12);
    EXPECT_NEAR(a.position(0.25).x, b.position(0.25).x, 1e-12);
}
