#include "events/EventLogDecoder.h"

#include "json/JsonText.h"

#include <climits>
#include <cmath>

namespace recorder {

namespace {

std::optional<int> wholeNumber(double value) {
    if (value != std::trunc(value) || value < double(INT_MIN) || value > double(INT_MAX)) return std::nullopt;
    return static_cast<int>(value);
}

std::string_view fieldName(std::uint32_t field) {
    static constexpr std::string_view names[] = {"version", "samples", "clicks", "scrolls", "keys",
                                                 "time",    "position", "button", "isDown", "display",
                                                 "deltaX",  "deltaY",   "x",      "y"};
    for (std::size_t bit = 0; bit < std::size(names); ++bit)
        if (field == (1u << bit)) return names[bit];
    return "";
}

// The first field of `needed` missing from `seen`, in declaration order.
std::uint32_t firstMissing(std::uint32_t needed, std::uint32_t seen) {
    std::uint32_t missing = needed & ~seen;
    return missing & (~missing + 1);
}

} // namespace

EventLog EventLogDecoder::decode(std::string_view bytes) {
    EventLogDecoder decoder;
    bool finished = json::sax_parse(bytes.begin(), bytes.end(), &decoder);
    if (decoder.decodingError_) throw *decoder.decodingError_;
    if (decoder.parseError_) throw JsonParseError(*decoder.parseError_);
    if (!finished || decoder.level_ != Level::afterLog) throw JsonParseError("incomplete event log");
    return std::move(decoder.log_);
}

bool EventLogDecoder::null() { return value(Value::null); }

bool EventLogDecoder::boolean(bool value) {
    boolean_ = value;
    return this->value(Value::boolean);
}

bool EventLogDecoder::number_integer(json::number_integer_t value) {
    number_ = static_cast<double>(value);
    wholeNumber_ = value >= INT_MIN && value <= INT_MAX ? std::optional<int>(static_cast<int>(value)) : std::nullopt;
    return this->value(Value::number);
}

bool EventLogDecoder::number_unsigned(json::number_unsigned_t value) {
    number_ = static_cast<double>(value);
    wholeNumber_ = value <= json::number_unsigned_t(INT_MAX) ? std::optional<int>(static_cast<int>(value))
                                                             : std::nullopt;
    return this->value(Value::number);
}

bool EventLogDecoder::number_float(json::number_float_t value, const json::string_t&) {
    number_ = value;
    wholeNumber_ = wholeNumber(value);
    return this->value(Value::number);
}

bool EventLogDecoder::string(json::string_t& value) {
    string_ = &value;
    return this->value(Value::string);
}

bool EventLogDecoder::binary(json::binary_t&) {
    parseError_ = "binary data in JSON text";
    return false;
}

bool EventLogDecoder::start_object(std::size_t) { return value(Value::object); }

bool EventLogDecoder::start_array(std::size_t) { return value(Value::array); }

bool EventLogDecoder::key(json::string_t& key) {
    if (skipDepth_ > 0) return true;
    if (level_ == Level::log) pending_ = logField(key);
    else if (level_ == Level::record) pending_ = recordField(key);
    else if (level_ == Level::position) pending_ = key == "x" ? x : key == "y" ? y : unknown;
    return true;
}

bool EventLogDecoder::end_object() {
    if (skipDepth_ > 0) {
        --skipDepth_;
        return true;
    }
    switch (level_) {
    case Level::position: return finishPosition();
    case Level::record: return finishRecord();
    case Level::log: return finishLog();
    default: return true;
    }
}

bool EventLogDecoder::end_array() {
    if (skipDepth_ > 0) {
        --skipDepth_;
        return true;
    }
    logSeen_ |= listField(list_);
    level_ = Level::log;
    return true;
}

bool EventLogDecoder::parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) {
    parseError_ = error.what();
    return false;
}

bool EventLogDecoder::value(Value kind) {
    if (skipDepth_ > 0) return skipValue(kind);
    switch (level_) {
    case Level::beforeLog:
        if (kind != Value::object) return fail(DecodingError::wrongType("", "an object"));
        level_ = Level::log;
        return true;
    case Level::log: return logValue(kind);
    case Level::list: return listValue(kind);
    case Level::record: return recordValue(kind);
    case Level::position: return positionValue(kind);
    case Level::afterLog: return true;
    }
    return true;
}

bool EventLogDecoder::skipValue(Value kind) {
    if (kind == Value::object || kind == Value::array) ++skipDepth_;
    return true;
}

bool EventLogDecoder::logValue(Value kind) {
    if (pending_ == unknown) return skipValue(kind);
    if (kind == Value::null) return fail(DecodingError::missingKey(std::string(fieldName(pending_))));
    if (pending_ == version) {
        if (kind != Value::number) return fail(DecodingError::wrongType("version", "a whole number"));
        if (!wholeNumber_) return fail(DecodingError::wrongType("version", "a whole number in range"));
        log_.version = *wholeNumber_;
        logSeen_ |= version;
        return true;
    }
    for (List list : {List::samples, List::clicks, List::scrolls, List::keys})
        if (listField(list) == pending_) list_ = list;
    if (kind != Value::array) return fail(DecodingError::wrongType(listPath(), "a list"));
    // A repeated key replaces what came before, as in a generic tree.
    switch (list_) {
    case List::samples: log_.samples.clear(); break;
    case List::clicks: log_.clicks.clear(); break;
    case List::scrolls: log_.scrolls.clear(); break;
    case List::keys: log_.keys.clear(); break;
    }
    index_ = 0;
    level_ = Level::list;
    return true;
}

bool EventLogDecoder::listValue(Value kind) {
    if (kind != Value::object) return fail(DecodingError::wrongType(elementPath(), "an object"));
    recordSeen_ = 0;
    pending_ = unknown;
    level_ = Level::record;
    return true;
}

bool EventLogDecoder::recordValue(Value kind) {
    if (pending_ == unknown) return skipValue(kind);
    if (kind == Value::null) return fail(DecodingError::missingKey(fieldPath(pending_)));
    switch (pending_) {
    case time:
    case deltaX:
    case deltaY:
        if (kind != Value::number) return fail(DecodingError::wrongType(fieldPath(pending_), "a number"));
        (pending_ == time ? record_.time : pending_ == deltaX ? record_.deltaX : record_.deltaY) = number_;
        break;
    case position:
        if (kind != Value::object) return fail(DecodingError::wrongType(fieldPath(position), "an object"));
        positionSeen_ = 0;
        level_ = Level::position;
        return true;
    case button: {
        if (kind != Value::string) return fail(DecodingError::wrongType(fieldPath(button), "text"));
        auto found = enumFromName<ClickEvent::Button>(*string_);
        if (!found) return fail(DecodingError::unknownCase(fieldPath(button), *string_));
        record_.button = *found;
        break;
    }
    case isDown:
        if (kind != Value::boolean) return fail(DecodingError::wrongType(fieldPath(isDown), "true or false"));
        record_.isDown = boolean_;
        break;
    case display:
        if (kind != Value::string) return fail(DecodingError::wrongType(fieldPath(display), "text"));
        record_.display = std::move(*string_);
        break;
    default: return skipValue(kind);
    }
    recordSeen_ |= pending_;
    return true;
}

bool EventLogDecoder::positionValue(Value kind) {
    if (pending_ == unknown) return skipValue(kind);
    if (kind == Value::null) return fail(DecodingError::missingKey(fieldPath(pending_)));
    if (kind != Value::number) return fail(DecodingError::wrongType(fieldPath(pending_), "a number"));
    (pending_ == x ? record_.position.x : record_.position.y) = number_;
    positionSeen_ |= pending_;
    return true;
}

bool EventLogDecoder::finishPosition() {
    level_ = Level::record;
    if (std::uint32_t missing = firstMissing(x | y, positionSeen_))
        return fail(DecodingError::missingKey(fieldPath(position) + "." + std::string(fieldName(missing))));
    recordSeen_ |= position;
    return true;
}

bool EventLogDecoder::finishRecord() {
    if (std::uint32_t missing = firstMissing(required(list_), recordSeen_))
        return fail(DecodingError::missingKey(fieldPath(Field(missing))));
    switch (list_) {
    case List::samples: log_.samples.push_back({record_.time, record_.position}); break;
    case List::clicks:
        log_.clicks.push_back({record_.time, record_.position, record_.button, record_.isDown});
        break;
    case List::scrolls:
        log_.scrolls.push_back({record_.time, record_.position, record_.deltaX, record_.deltaY});
        break;
    case List::keys: log_.keys.push_back({record_.time, std::move(record_.display), record_.isDown}); break;
    }
    ++index_;
    level_ = Level::list;
    return true;
}

bool EventLogDecoder::finishLog() {
    level_ = Level::afterLog;
    constexpr std::uint32_t all = version | samples | clicks | scrolls | keys;
    if (std::uint32_t missing = firstMissing(all, logSeen_))
        return fail(DecodingError::missingKey(std::string(fieldName(missing))));
    return true;
}

bool EventLogDecoder::fail(DecodingError error) {
    decodingError_ = std::move(error);
    return false;
}

std::uint32_t EventLogDecoder::required(List list) const {
    switch (list) {
    case List::samples: return time | position;
    case List::clicks: return time | position | button | isDown;
    case List::scrolls: return time | position | deltaX | deltaY;
    case List::keys: return time | display | isDown;
    }
    return 0;
}

EventLogDecoder::Field EventLogDecoder::listField(List list) {
    switch (list) {
    case List::samples: return samples;
    case List::clicks: return clicks;
    case List::scrolls: return scrolls;
    case List::keys: return keys;
    }
    return unknown;
}

EventLogDecoder::Field EventLogDecoder::logField(std::string_view key) const {
    if (key == "version") return version;
    if (key == "samples") return samples;
    if (key == "clicks") return clicks;
    if (key == "scrolls") return scrolls;
    if (key == "keys") return keys;
    return unknown;
}

EventLogDecoder::Field EventLogDecoder::recordField(std::string_view key) const {
    if (key == "time") return time;
    Field field = key == "position" ? position
                : key == "button"   ? button
                : key == "isDown"   ? isDown
                : key == "display"  ? display
                : key == "deltaX"   ? deltaX
                : key == "deltaY"   ? deltaY
                                    : unknown;
    // A key of another kind of record is an unknown key here.
    return (required(list_) & field) ? field : unknown;
}

std::string EventLogDecoder::listPath() const {
    switch (list_) {
    case List::samples: return "samples";
    case List::clicks: return "clicks";
    case List::scrolls: return "scrolls";
    case List::keys: return "keys";
    }
    return "";
}

std::string EventLogDecoder::elementPath() const { return listPath() + "[" + std::to_string(index_) + "]"; }

std::string EventLogDecoder::fieldPath(Field field) const {
    if (field == x || field == y) return elementPath() + ".position." + std::string(fieldName(field));
    return elementPath() + "." + std::string(fieldName(field));
}

} // namespace recorder
