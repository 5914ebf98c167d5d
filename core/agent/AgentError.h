#pragma once

#include <exception>
#include <optional>
#include <string>

namespace recorder {

// The error every agent tool throws: a machine word, a sentence for the
// assistant, and what to do next when there is something to say.
struct AgentError : std::exception {
    std::string code;
    std::string message;
    std::optional<std::string> hint;

    AgentError(std::string code, std::string message, std::optional<std::string> hint = std::nullopt)
        : code(std::move(code)), message(std::move(message)), hint(std::move(hint)) {}

    static AgentError unknownTool(const std::string& name);
    static AgentError badArgument(const std::string& name, const std::string& detail,
                                  std::optional<std::string> hint = std::nullopt);
    static AgentError noProject();

    const char* what() const noexcept override { return message.c_str(); }
    bool operator==(const AgentError& other) const {
        return code == other.code && message == other.message && hint == other.hint;
    }
};

} // namespace recorder
