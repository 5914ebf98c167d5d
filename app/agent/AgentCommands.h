#pragma once

#include "agent/AgentArguments.h"
#include "agent/AgentLog.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

class Settings;

// The tools themselves, run on the main thread against the application's
// real objects. Both the socket and HTTP roads end in `handle`.
class AgentCommands {
public:
    AgentCommands(Settings& settings, AgentLog& log);

    // For a headless run that lists another folder than the settings name.
    void setProjectsDirectory(std::filesystem::path directory);

    // One request line in, one reply line out; nothing when the reply can't
    // be encoded (a tool produced what JSON can't hold).
    std::optional<std::string> handle(std::string_view line);
    nlohmann::json call(const std::string& name, const AgentArguments& arguments, const std::string& client);

private:
    nlohmann::json listProjects(const AgentArguments& arguments);
    std::filesystem::path projectsDirectory() const;

    Settings& settings_;
    AgentLog& log_;
    std::optional<std::filesystem::path> projectsDirectoryOverride_;
};

} // namespace recorder
