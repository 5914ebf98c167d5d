#pragma once

#include "events/ClickEvent.h"
#include "events/CursorSample.h"
#include "events/KeyEvent.h"
#include "events/ScrollEvent.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace recorder {

struct Project;

// What the pointer and keyboard did during one recording, in source time.
// Written once when the recording ends; an immutable value afterwards.
struct EventLog {
    int version = 1;
    std::vector<CursorSample> samples;
    std::vector<ClickEvent> clicks;
    std::vector<ScrollEvent> scrolls;
    std::vector<KeyEvent> keys;

    // The pointer at a source time, blended between the two samples around
    // it; no position without samples or at a NaN time.
    std::optional<Point> samplePosition(double time) const;
    // The same, with (0, 0) where there is no position.
    Point position(double at) const;
    // A copy whose samples went through a one-pole low-pass filter.
    EventLog smoothed(double by) const;

    bool operator==(const EventLog&) const = default;

    static EventLog fromJson(const JsonReader& r);
    nlohmann::json toJson() const;

    // The file's bytes, in the form every file of ours is written in.
    std::string encoded() const;
    // Strict, like fromJson, but straight from the bytes without a generic
    // tree: a long recording's log holds hundreds of thousands of samples.
    // Throws JsonParseError or DecodingError.
    static EventLog decode(std::string_view bytes);
    // A log that is missing, unreadable or invalid counts as absent.
    static std::optional<EventLog> read(const std::filesystem::path& file);
    // The log of a package, found by the project's first `events` asset.
    static std::optional<EventLog> load(const Project& project, const std::filesystem::path& package);
};

} // namespace recorder
