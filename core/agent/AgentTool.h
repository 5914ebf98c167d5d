#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace recorder {

// One tool as an assistant sees it. `schema` stays text until served.
struct AgentTool {
    std::string name;
    std::string title;
    std::string description;
    std::string schema;

    // name, title, description and inputSchema; a schema that isn't a JSON
    // object is served as a bare object type.
    nlohmann::json json() const;

    bool operator==(const AgentTool&) const = default;
};

} // namespace recorder
