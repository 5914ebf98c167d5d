#include "agent/AgentError.h"

namespace recorder {

AgentError AgentError::unknownTool(const std::string& name) {
    return {"unknown_tool", "There is no tool called " + name + ".", "List the tools again; the app may have been updated."};
}

AgentError AgentError::badArgument(const std::string& name, const std::string& detail, std::optional<std::string> hint) {
    return {"bad_argument", "Argument " + name + ": " + detail, std::move(hint)};
}

AgentError AgentError::noProject() {
    return {"no_project", "No project is open.",
            "Call list_projects and open_project first, or record something with start_recording."};
}

} // namespace recorder
