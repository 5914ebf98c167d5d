#pragma once

#include "events/EventLog.h"
#include "json/DecodingError.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace recorder {

// Decodes an event log from the parser's events as they come, without the
// generic tree. Whatever it accepts, EventLog::fromJson accepts with the same
// result; it gives up on anything doubtful (a wrong type, a null, an unknown
// button) and EventLog::decode then asks fromJson for the exact verdict, so
// the rare odd file (a repeated key, say) reads the same either way.
class EventLogDecoder {
public:
    static EventLog decode(std::string_view bytes);

    // The parser's callbacks (nlohmann::json_sax).
    using json = nlohmann::json;
    bool null();
    bool boolean(bool value);
    bool number_integer(json::number_integer_t value);
    bool number_unsigned(json::number_unsigned_t value);
    bool number_float(json::number_float_t value, const json::string_t& text);
    bool string(json::string_t& value);
    bool binary(json::binary_t& value);
    bool start_object(std::size_t elements);
    bool key(json::string_t& key);
    bool end_object();
    bool start_array(std::size_t elements);
    bool end_array();
    bool parse_error(std::size_t position, const std::string& lastToken, const nlohmann::detail::exception& error);

private:
    enum class Level { beforeLog, log, list, record, position, afterLog };
    enum class List { samples, clicks, scrolls, keys };
    // Top-level keys and record keys share one numbering; each is a bit in
    // the masks of what has been seen.
    enum Field : std::uint32_t {
        version = 1u << 0, samples = 1u << 1, clicks = 1u << 2, scrolls = 1u << 3, keys = 1u << 4,
        time = 1u << 5, position = 1u << 6, button = 1u << 7, isDown = 1u << 8, display = 1u << 9,
        deltaX = 1u << 10, deltaY = 1u << 11, x = 1u << 12, y = 1u << 13, unknown = 0
    };
    struct Record {
        double time = 0;
        Point position;
        ClickEvent::Button button = ClickEvent::Button::left;
        bool isDown = false;
        std::string display;
        double deltaX = 0;
        double deltaY = 0;
    };
    enum class Value { null, boolean, number, string, object, array };

    bool value(Value kind);
    bool logValue(Value kind);
    bool listValue(Value kind);
    bool recordValue(Value kind);
    bool positionValue(Value kind);
    bool skipValue(Value kind);
    bool fail(DecodingError error);
    bool finishRecord();
    bool finishPosition();
    bool finishLog();
    std::uint32_t required(List list) const;
    static Field listField(List list);
    Field logField(std::string_view key) const;
    Field recordField(std::string_view key) const;
    std::string listPath() const;
    std::string elementPath() const;
    std::string fieldPath(Field field) const;

    EventLog log_;
    Level level_ = Level::beforeLog;
    List list_ = List::samples;
    std::size_t index_ = 0;
    Field pending_ = unknown;
    std::uint32_t logSeen_ = 0;
    std::uint32_t recordSeen_ = 0;
    std::uint32_t positionSeen_ = 0;
    Record record_;
    // Unknown keys' values are passed over whole: depth of containers open in one.
    int skipDepth_ = 0;
    // The scalar that last arrived, for the value callbacks.
    double number_ = 0;
    bool boolean_ = false;
    std::optional<int> wholeNumber_;
    json::string_t* string_ = nullptr;
    std::optional<DecodingError> decodingError_;
    std::optional<std::string> parseError_;
};

} // namespace recorder
