#include "agent/AgentLog.h"

namespace recorder {

void AgentLog::add(const std::string& client, const std::string& tool) {
    entries_.push_front({Uuid::random(), Date::now(), client, tool});
    while (entries_.size() > limit) entries_.pop_back();
}

} // namespace recorder
