#pragma once

#include "events/EventLog.h"

#include <string>

namespace recorder {

// Writes an event log straight to text, byte for byte as
// JsonText::pretty(log.toJson()) would, without building the generic tree
// first: an hour's log as a tree takes a quarter of a gigabyte, at the
// moment a recording ends and every sink is finishing.
class EventLogEncoder {
public:
    static std::string encode(const EventLog& log);

private:
    void samples(const std::vector<CursorSample>& list);
    void clicks(const std::vector<ClickEvent>& list);
    void scrolls(const std::vector<ScrollEvent>& list);
    void keys(const std::vector<KeyEvent>& list);
    template <class T, class Fields>
    void list(const char* key, const std::vector<T>& elements, Fields fields);
    void field(const char* key, bool first = false);
    void number(const char* key, double value, bool first = false);
    void position(const Point& p, bool first = false);

    std::string out_;
};

} // namespace recorder
