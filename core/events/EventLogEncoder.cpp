#include "events/EventLogEncoder.h"

#include "json/JsonText.h"

namespace recorder {

// Keys in sorted order at every depth; records sit at indent 2, their
// fields at 3 and a position's at 4 (two spaces each).
namespace {
constexpr const char* recordIndent = "\n    ";
constexpr const char* fieldIndent = "\n      ";
constexpr const char* pointIndent = "\n        ";
} // namespace

std::string EventLogEncoder::encode(const EventLog& log) {
    EventLogEncoder encoder;
    encoder.out_.reserve(64 + log.samples.size() * 130 + (log.clicks.size() + log.scrolls.size()) * 190 +
                         log.keys.size() * 100);
    encoder.out_ += '{';
    encoder.clicks(log.clicks);
    encoder.out_ += ',';
    encoder.keys(log.keys);
    encoder.out_ += ',';
    encoder.samples(log.samples);
    encoder.out_ += ',';
    encoder.scrolls(log.scrolls);
    encoder.out_ += ",\n  \"version\" : " + std::to_string(log.version) + "\n}";
    return std::move(encoder.out_);
}

template <class T, class Fields>
void EventLogEncoder::list(const char* key, const std::vector<T>& elements, Fields fields) {
    out_ += "\n  \"";
    out_ += key;
    out_ += "\" : ";
    if (elements.empty()) {
        out_ += "[]";
        return;
    }
    out_ += '[';
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (i > 0) out_ += ',';
        out_ += recordIndent;
        out_ += '{';
        fields(elements[i]);
        out_ += recordIndent;
        out_ += '}';
    }
    out_ += "\n  ]";
}

void EventLogEncoder::field(const char* key, bool first) {
    if (!first) out_ += ',';
    out_ += fieldIndent;
    out_ += '"';
    out_ += key;
    out_ += "\" : ";
}

void EventLogEncoder::number(const char* key, double value, bool first) {
    field(key, first);
    out_ += JsonText::formatDouble(value);
}

void EventLogEncoder::position(const Point& p, bool first) {
    field("position", first);
    out_ += '{';
    out_ += pointIndent;
    out_ += "\"x\" : " + JsonText::formatDouble(p.x) + ",";
    out_ += pointIndent;
    out_ += "\"y\" : " + JsonText::formatDouble(p.y);
    out_ += fieldIndent;
    out_ += '}';
}

void EventLogEncoder::samples(const std::vector<CursorSample>& list) {
    this->list("samples", list, [this](const CursorSample& s) {
        position(s.position, true);
        number("time", s.time);
    });
}

void EventLogEncoder::clicks(const std::vector<ClickEvent>& list) {
    this->list("clicks", list, [this](const ClickEvent& c) {
        field("button", true);
        out_ += '"';
        out_ += enumName(c.button);
        out_ += '"';
        field("isDown");
        out_ += c.isDown ? "true" : "false";
        position(c.position);
        number("time", c.time);
    });
}

void EventLogEncoder::scrolls(const std::vector<ScrollEvent>& list) {
    this->list("scrolls", list, [this](const ScrollEvent& s) {
        number("deltaX", s.deltaX, true);
        number("deltaY", s.deltaY);
        position(s.position);
        number("time", s.time);
    });
}

void EventLogEncoder::keys(const std::vector<KeyEvent>& list) {
    this->list("keys", list, [this](const KeyEvent& k) {
        field("display", true);
        out_ += JsonText::pretty(nlohmann::json(k.display));
        field("isDown");
        out_ += k.isDown ? "true" : "false";
        number("time", k.time);
    });
}

} // namespace recorder
