#include "json/JsonReader.h"

namespace recorder {

JsonReader::JsonReader(const nlohmann::json& object, std::string path) : object_(object), path_(std::move(path)) {
    if (!object_.is_object()) throw DecodingError::wrongType(path_, "an object");
}

std::string JsonReader::pathOf(std::string_view key) const {
    return path_.empty() ? std::string(key) : path_ + "." + std::string(key);
}

const nlohmann::json* JsonReader::find(std::string_view key) const {
    auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return nullptr;
    return &*it;
}

} // namespace recorder
