#include "agent/AgentTool.h"

#include "json/JsonText.h"

namespace recorder {

nlohmann::json AgentTool::json() const {
    nlohmann::json inputSchema;
    try {
        inputSchema = JsonText::parse(schema);
    } catch (const JsonParseError&) {
    }
    if (!inputSchema.is_object()) inputSchema = {{"type", "object"}};
    return {{"name", name}, {"title", title}, {"description", description}, {"inputSchema", inputSchema}};
}

} // namespace recorder
