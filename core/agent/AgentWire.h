#pragma once

#include "agent/AgentError.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

// The socket's line protocol: one JSON object per line each way.
namespace recorder::AgentWire {

inline constexpr std::string_view socketFileName = "agent.sock";

// Compact JSON with unescaped slashes and one trailing line feed; nothing
// when the value isn't an object or holds what JSON can't (NaN, infinity).
std::optional<std::string> encode(const nlohmann::json& object);
// Nothing for bytes that aren't JSON or whose top level isn't an object.
std::optional<nlohmann::json> decode(std::string_view bytes);

// An absent id is passed as null and echoed as null.
nlohmann::json success(const nlohmann::json& id, const nlohmann::json& result);
nlohmann::json failure(const nlohmann::json& id, const AgentError& error);

} // namespace recorder::AgentWire
