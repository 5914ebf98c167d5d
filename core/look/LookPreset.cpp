#include "look/LookPreset.h"

namespace recorder {

namespace {

Uuid fileKey(const std::string& text, const std::string& path) {
    auto id = Uuid::parse(text);
    if (!id) throw DecodingError::wrongType(path, "a valid identifier");
    return *id;
}

// Written as an object keyed by id. A map with identifier keys may also come
// as a flat list of alternating key and value, so that form is read too.
std::map<Uuid, std::string> decodeFiles(const nlohmann::json& value, const std::string& path) {
    std::map<Uuid, std::string> files;
    if (value.is_object()) {
        for (const auto& [key, file] : value.items())
            files[fileKey(key, path + "." + key)] = decodeJson<std::string>(file, path + "." + key);
        return files;
    }
    if (!value.is_array() || value.size() % 2 != 0) throw DecodingError::wrongType(path, "a map from id to path");
    for (std::size_t i = 0; i < value.size(); i += 2) {
        std::string at = path + "[" + std::to_string(i) + "]";
        files[fileKey(decodeJson<std::string>(value[i], at), at)] = decodeJson<std::string>(value[i + 1], at);
    }
    return files;
}

} // namespace

LookPreset LookPreset::fromJson(const JsonReader& r) {
    LookPreset preset;
    preset.id = r.get<Uuid>("id");
    preset.name = r.get<std::string>("name");
    preset.savedAt = r.get<Date>("savedAt");
    preset.look = r.get<Look>("look");
    if (!r.object().contains("files")) throw DecodingError::missingKey(r.pathOf("files"));
    preset.files = decodeFiles(r.object().at("files"), r.pathOf("files"));
    return preset;
}

nlohmann::json LookPreset::toJson() const {
    nlohmann::json files = nlohmann::json::object();
    for (const auto& [id, file] : this->files) files[id.string()] = file;
    return {{"id", encodeJson(id)},
            {"name", name},
            {"savedAt", encodeJson(savedAt)},
            {"look", look.toJson()},
            {"files", files}};
}

} // namespace recorder
