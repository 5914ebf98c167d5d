#include "agent/AgentCatalogue.h"

#include <vector>

namespace recorder::AgentCatalogue {

namespace {

const std::vector<AgentTool>& table() {
    static const std::vector<AgentTool> tools{
        {"list_projects", "List projects",
         "Recordings saved on this computer, newest first, with path, name, modified date and duration. Use a path "
         "with open_project.",
         R"({"type":"object","properties":{"limit":{"type":"integer","minimum":1,"maximum":200,)"
         R"("description":"How many to return (default 20)."}},"additionalProperties":false})"},
    };
    return tools;
}

} // namespace

std::span<const AgentTool> tools() { return table(); }

const AgentTool* tool(std::string_view name) {
    for (const auto& candidate : table())
        if (candidate.name == name) return &candidate;
    return nullptr;
}

} // namespace recorder::AgentCatalogue
