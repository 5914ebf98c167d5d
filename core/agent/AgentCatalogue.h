#pragma once

#include "agent/AgentTool.h"

#include <span>
#include <string_view>

namespace recorder::AgentCatalogue {

// The one ordered list of tools, fixed at build time.
std::span<const AgentTool> tools();
// Exact, case-sensitive match; nullptr when there is none.
const AgentTool* tool(std::string_view name);

} // namespace recorder::AgentCatalogue
