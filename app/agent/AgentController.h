#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace recorder {

class AgentCommands;

// JSON-RPC over HTTP bodies. Tool calls are re-encoded as socket requests
// and go through AgentCommands::handle, the one road every call takes.
class AgentController {
public:
    explicit AgentController(AgentCommands* commands);

    // A reply object, or nothing for a notification.
    std::optional<nlohmann::json> handleMessage(const nlohmann::json& message);
    // Reply bytes, or nothing: the HTTP layer then answers 202 with no body.
    std::optional<std::string> handleBody(std::string_view body);

    const std::string& clientName() const { return clientName_; }

private:
    nlohmann::json callTool(const nlohmann::json& id, const nlohmann::json& params);
    std::optional<std::string> handleBatch(const nlohmann::json& messages);

    AgentCommands* commands_;
    std::string clientName_ = "An agent";
};

} // namespace recorder
