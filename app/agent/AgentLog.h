#pragma once

#include "model/Date.h"
#include "model/Uuid.h"

#include <deque>
#include <string>

namespace recorder {

// What agents did this run, newest first, for the person to see. Not kept.
class AgentLog {
public:
    struct Entry {
        Uuid id;
        Date date;
        std::string client;
        std::string tool;
    };

    static constexpr std::size_t limit = 50;

    void add(const std::string& client, const std::string& tool);
    const std::deque<Entry>& entries() const { return entries_; }

private:
    std::deque<Entry> entries_;
};

} // namespace recorder
