#include "agent/AgentWire.h"

#include "json/JsonText.h"

namespace recorder::AgentWire {

std::optional<std::string> encode(const nlohmann::json& object) {
    if (!object.is_object()) return std::nullopt;
    try {
        return JsonText::compact(object) + "\n";
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<nlohmann::json> decode(std::string_view bytes) {
    try {
        auto value = JsonText::parse(bytes);
        if (value.is_object()) return value;
    } catch (const JsonParseError&) {
    }
    return std::nullopt;
}

nlohmann::json success(const nlohmann::json& id, const nlohmann::json& result) {
    return {{"id", id}, {"ok", true}, {"result", result}};
}

nlohmann::json failure(const nlohmann::json& id, const AgentError& error) {
    nlohmann::json body{{"code", error.code}, {"message", error.message}};
    if (error.hint) body["hint"] = *error.hint;
    return {{"id", id}, {"ok", false}, {"error", body}};
}

} // namespace recorder::AgentWire
