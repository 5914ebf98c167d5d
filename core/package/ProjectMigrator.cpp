#include "package/ProjectMigrator.h"

#include "json/JsonText.h"
#include "package/MigrationError.h"

#include <cmath>
#include <limits>
#include <optional>

namespace recorder::ProjectMigrator {

namespace {

using nlohmann::json;

void addIfMissing(json& object, const char* key, const json& value) {
    if (object.is_object() && !object.contains(key)) object[key] = value;
}

json* member(json& object, const char* key) {
    if (!object.is_object()) return nullptr;
    auto it = object.find(key);
    return it == object.end() ? nullptr : &*it;
}

template <class F>
void forEachMediaItem(json& root, F&& change) {
    json* media = member(root, "media");
    if (!media || !media->is_array()) return;
    for (auto& item : *media)
        if (item.is_object()) change(item);
}

void addTrackFlags(json& root) {
    json flags = {{"hidden", false}, {"locked", false}};
    addIfMissing(root, "tracks", {{"screen", flags}, {"zooms", flags}, {"camera", flags}});
    forEachMediaItem(root, [](json& item) {
        addIfMissing(item, "hidden", false);
        addIfMissing(item, "locked", false);
    });
}

bool near(const json& value, double target) {
    return value.is_number() && std::fabs(value.get<double>() - target) <= 0.01;
}

// The old default ripple colour was orange; only that exact colour moves to the new default.
void replaceOldRippleColour(json& root) {
    json* cursor = member(root, "cursor");
    json* colour = cursor ? member(*cursor, "clickHighlightColor") : nullptr;
    if (!colour || !colour->is_object()) return;
    json* r = member(*colour, "r");
    json* g = member(*colour, "g");
    json* b = member(*colour, "b");
    if (!r || !g || !b || !r->is_number() || !g->is_number() || !b->is_number()) return;
    if (near(*r, 1) && near(*g, 0.75) && near(*b, 0.1)) *colour = {{"r", 0.588}, {"g", 0.902}, {"b", 0.631}, {"a", 0.85}};
}

void addCaptionEmoji(json& root) {
    json* captions = member(root, "captions");
    json* style = captions ? member(*captions, "style") : nullptr;
    if (!style || !style->is_object()) return;
    addIfMissing(*style, "showEmoji", false);
    addIfMissing(*style, "emojiSize", 0.11);
}

void addCameraAvatar(json& root) {
    json* camera = member(root, "camera");
    if (camera && camera->is_object()) addIfMissing(*camera, "showAvatar", false);
}

void addAudioCleanup(json& root) {
    json audio = json::object();
    if (json* existing = member(root, "audio"); existing && existing->is_object()) audio = *existing;
    addIfMissing(audio, "micNoiseRemoval", false);
    addIfMissing(audio, "micLeveling", false);
    addIfMissing(audio, "duckMusic", false);
    addIfMissing(audio, "duckLevel", 0.25);
    root["audio"] = audio;
}

void applyStep(json& root, long long version) {
    switch (version) {
    case 1: addTrackFlags(root); break;
    case 2: replaceOldRippleColour(root); break;
    case 3: addIfMissing(root, "screenStart", 0); break;
    case 4: forEachMediaItem(root, [](json& item) { addIfMissing(item, "muted", false); }); break;
    case 5: forEachMediaItem(root, [](json& item) { addIfMissing(item, "speed", 1); }); break;
    case 7: addCaptionEmoji(root); break;
    case 9: addCameraAvatar(root); break;
    case 10: addAudioCleanup(root); break;
    default: break;
    }
}

std::optional<long long> integerVersion(const json& root) {
    if (!root.is_object()) return std::nullopt;
    auto it = root.find("schemaVersion");
    if (it == root.end() || !it->is_number()) return std::nullopt;
    if (it->is_number_integer()) {
        if (it->is_number_unsigned() && it->get<std::uint64_t>() > std::uint64_t(std::numeric_limits<long long>::max()))
            return std::nullopt;
        return it->get<long long>();
    }
    double value = it->get<double>();
    if (value != std::trunc(value) || std::fabs(value) > 9e15) return std::nullopt;
    return static_cast<long long>(value);
}

std::optional<std::string> savedWith(const json& root) {
    auto it = root.find("appVersion");
    if (it == root.end() || !it->is_string()) return std::nullopt;
    return it->get<std::string>();
}

} // namespace

void upgrade(json& object, long long fromVersion) {
    // Versions at or below zero have no steps: start them at zero so a huge
    // negative number cannot keep the loop going.
    long long version = std::max(fromVersion, 0LL);
    for (; version < Project::currentSchemaVersion; ++version) {
        applyStep(object, version);
        object["schemaVersion"] = version + 1;
    }
}

Project migrate(std::string_view bytes) {
    json root = JsonText::parse(bytes);
    auto version = integerVersion(root);
    if (!version) throw MigrationError::missingVersion();
    if (*version > Project::currentSchemaVersion)
        throw MigrationError::newerThanApp(*version, Project::currentSchemaVersion, savedWith(root));
    upgrade(root, *version);
    return Project::fromJson(JsonReader(root, ""));
}

} // namespace recorder::ProjectMigrator
