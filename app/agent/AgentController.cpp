#include "agent/AgentController.h"

#include "agent/AgentCatalogue.h"
#include "agent/AgentCommands.h"
#include "agent/AgentWire.h"
#include "agent/MCPMessages.h"
#include "brand/Brand.h"
#include "json/JsonText.h"

namespace recorder {

namespace {

nlohmann::json objectAt(const nlohmann::json& object, const char* key) {
    auto it = object.find(key);
    return it != object.end() && it->is_object() ? *it : nlohmann::json::object();
}

std::optional<std::string> stringAt(const nlohmann::json& object, const char* key) {
    auto it = object.find(key);
    if (it == object.end() || !it->is_string()) return std::nullopt;
    return it->get<std::string>();
}

nlohmann::json toolDescriptions() {
    nlohmann::json tools = nlohmann::json::array();
    for (const auto& tool : AgentCatalogue::tools()) tools.push_back(tool.json());
    return {{"tools", tools}};
}

} // namespace

AgentController::AgentController(AgentCommands* commands) : commands_(commands) {}

std::optional<nlohmann::json> AgentController::handleMessage(const nlohmann::json& message) {
    auto idIt = message.find("id");
    if (idIt == message.end() || idIt->is_null()) return std::nullopt;
    const nlohmann::json& id = *idIt;
    nlohmann::json params = objectAt(message, "params");
    std::string method = stringAt(message, "method").value_or("");

    if (method == "initialize") {
        if (auto name = stringAt(objectAt(params, "clientInfo"), "name"); name && !name->empty()) clientName_ = *name;
        return MCPMessages::response(id, MCPMessages::initializeResult(Brand::shared(), stringAt(params, "protocolVersion")));
    }
    if (method == "ping") return MCPMessages::response(id, nlohmann::json::object());
    if (method == "tools/list") return MCPMessages::response(id, toolDescriptions());
    if (method == "resources/list") return MCPMessages::response(id, {{"resources", nlohmann::json::array()}});
    if (method == "prompts/list") return MCPMessages::response(id, {{"prompts", nlohmann::json::array()}});
    if (method == "tools/call") return callTool(id, params);
    return MCPMessages::errorResponse(id, -32601, "Method not found: " + method);
}

nlohmann::json AgentController::callTool(const nlohmann::json& id, const nlohmann::json& params) {
    auto missingName = MCPMessages::errorResponse(id, -32602, "Missing tool name.");
    auto name = stringAt(params, "name");
    if (!commands_ || !name) return missingName;
    nlohmann::json request{{"id", "http"},
                           {"command", "tools/call"},
                           {"name", *name},
                           {"arguments", objectAt(params, "arguments")},
                           {"client", clientName_}};
    auto line = AgentWire::encode(request);
    if (!line) return missingName;
    line->pop_back();
    auto replyLine = commands_->handle(*line);
    auto reply = replyLine ? AgentWire::decode(*replyLine) : std::nullopt;
    if (!reply) return missingName;
    return MCPMessages::response(id, MCPMessages::toolResult(*reply));
}

std::optional<std::string> AgentController::handleBody(std::string_view body) {
    nlohmann::json parsed;
    try {
        parsed = JsonText::parse(body);
    } catch (const JsonParseError&) {
        return JsonText::compact(MCPMessages::errorResponse(nullptr, -32700, "Parse error"));
    }
    if (parsed.is_array()) return handleBatch(parsed);
    if (!parsed.is_object()) return std::nullopt;
    auto reply = handleMessage(parsed);
    if (!reply) return std::nullopt;
    return JsonText::compact(*reply);
}

std::optional<std::string> AgentController::handleBatch(const nlohmann::json& messages) {
    for (const auto& message : messages)
        if (!message.is_object()) return std::nullopt;
    nlohmann::json replies = nlohmann::json::array();
    for (const auto& message : messages)
        if (auto reply = handleMessage(message)) replies.push_back(std::move(*reply));
    if (replies.empty()) return std::nullopt;
    return JsonText::compact(replies);
}

} // namespace recorder
