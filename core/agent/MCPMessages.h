#pragma once

#include "brand/Brand.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

// The JSON-RPC side of the Model Context Protocol.
namespace recorder::MCPMessages {

inline constexpr std::string_view protocolVersion = "2025-06-18";

nlohmann::json response(const nlohmann::json& id, const nlohmann::json& result);
nlohmann::json errorResponse(const nlohmann::json& id, int code, const std::string& message);
// The client's requested version is echoed as it is, known or not.
nlohmann::json initializeResult(const Brand& brand, const std::optional<std::string>& requestedVersion);
std::string instructions(const Brand& brand);
// A socket reply turned into a tool call's result.
nlohmann::json toolResult(const nlohmann::json& reply);
nlohmann::json contentResult(const nlohmann::json& object, bool isError);

} // namespace recorder::MCPMessages
