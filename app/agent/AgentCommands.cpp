#include "agent/AgentCommands.h"

#include "Settings.h"
#include "agent/AgentCatalogue.h"
#include "agent/AgentWire.h"
#include "agent/MCPMessages.h"
#include "agent/ProjectListing.h"
#include "brand/Brand.h"

namespace recorder {

namespace {

nlohmann::json requestId(const nlohmann::json& request) {
    auto it = request.find("id");
    return it == request.end() ? nlohmann::json() : *it;
}

std::string stringField(const nlohmann::json& request, const char* key, const std::string& fallback) {
    auto it = request.find(key);
    return it != request.end() && it->is_string() ? it->get<std::string>() : fallback;
}

nlohmann::json toolList() {
    nlohmann::json tools = nlohmann::json::array();
    for (const auto& tool : AgentCatalogue::tools()) tools.push_back(tool.json());
    return {{"tools", tools}, {"instructions", MCPMessages::instructions(Brand::shared())}};
}

} // namespace

AgentCommands::AgentCommands(Settings& settings, AgentLog& log) : settings_(settings), log_(log) {}

void AgentCommands::setProjectsDirectory(std::filesystem::path directory) {
    projectsDirectoryOverride_ = std::move(directory);
}

std::filesystem::path AgentCommands::projectsDirectory() const {
    return projectsDirectoryOverride_ ? *projectsDirectoryOverride_ : settings_.projectsDirectory();
}

std::optional<std::string> AgentCommands::handle(std::string_view line) {
    auto request = AgentWire::decode(line);
    if (!request) return AgentWire::encode(AgentWire::failure(nullptr, {"bad_request", "The request was not a JSON object."}));
    nlohmann::json id = requestId(*request);
    std::string command = stringField(*request, "command", "");
    if (command == "tools/list") return AgentWire::encode(AgentWire::success(id, toolList()));
    if (command != "tools/call") return AgentWire::encode(AgentWire::failure(id, {"bad_request", "Unknown command."}));

    std::string name = stringField(*request, "name", "");
    if (!AgentCatalogue::tool(name)) return AgentWire::encode(AgentWire::failure(id, AgentError::unknownTool(name)));
    std::string client = stringField(*request, "client", "An agent");
    log_.add(client, name);
    auto arguments = request->find("arguments");
    AgentArguments args(arguments == request->end() ? nlohmann::json::object() : *arguments);
    try {
        return AgentWire::encode(AgentWire::success(id, call(name, args, client)));
    } catch (const AgentError& error) {
        return AgentWire::encode(AgentWire::failure(id, error));
    } catch (const std::exception& error) {
        return AgentWire::encode(AgentWire::failure(id, {"failed", error.what()}));
    }
}

nlohmann::json AgentCommands::call(const std::string& name, const AgentArguments& arguments, const std::string&) {
    if (name == "list_projects") return listProjects(arguments);
    throw AgentError::unknownTool(name);
}

nlohmann::json AgentCommands::listProjects(const AgentArguments& arguments) {
    auto limit = std::clamp<std::int64_t>(arguments.integer("limit").value_or(20), 1, 200);
    return {{"projects", ProjectListing::describe(projectsDirectory(), Brand::shared().documentExtension,
                                                  static_cast<std::size_t>(limit))}};
}

} // namespace recorder
