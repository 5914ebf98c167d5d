#include "json/JsonText.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace recorder {

JsonParseError::JsonParseError(const std::string& detail)
    : std::runtime_error("The data couldn't be read because it isn't in the correct format."),
      detail_(detail) {}

namespace {

// Counts bracket depth outside strings; the parser itself is not recursive,
// but printing and walking a tree are.
bool nestsTooDeeply(std::string_view bytes) {
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (char c : bytes) {
        if (inString) {
            if (escaped) escaped = false;
            else if (c == '\\') escaped = true;
            else if (c == '"') inString = false;
            continue;
        }
        if (c == '"') inString = true;
        else if (c == '[' || c == '{') {
            if (++depth > JsonText::maxDepth) return true;
        } else if (c == ']' || c == '}') --depth;
    }
    return false;
}

void writeString(std::string& out, const std::string& text, bool escapeSlashes) {
    out += '"';
    for (unsigned char c : text) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '/': out += escapeSlashes ? "\\/" : "/"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        default:
            if (c < 0x20) {
                char buffer[8];
                std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
                out += buffer;
            } else {
                out += static_cast<char>(c);
            }
        }
    }
    out += '"';
}

class Writer {
public:
    explicit Writer(JsonText::Style style) : style_(style) {}

    void value(const nlohmann::json& v, int indent) {
        using T = nlohmann::json::value_t;
        switch (v.type()) {
        case T::null: out += "null"; break;
        case T::boolean: out += v.get<bool>() ? "true" : "false"; break;
        case T::number_integer: out += std::to_string(v.get<std::int64_t>()); break;
        case T::number_unsigned: out += std::to_string(v.get<std::uint64_t>()); break;
        case T::number_float: out += JsonText::formatDouble(v.get<double>()); break;
        case T::string: writeString(out, v.get_ref<const std::string&>(), style_.escapeSlashes); break;
        case T::array: array(v, indent); break;
        case T::object: object(v, indent); break;
        default: throw JsonEncodeError("The value can't be written as JSON.");
        }
    }

    std::string out;

private:
    void newline(int indent) {
        if (!style_.pretty) return;
        out += '\n';
        out.append(static_cast<std::size_t>(indent) * 2, ' ');
    }

    void array(const nlohmann::json& v, int indent) {
        if (v.empty()) { out += "[]"; return; }
        out += '[';
        bool first = true;
        for (const auto& element : v) {
            if (!first) out += ',';
            first = false;
            newline(indent + 1);
            value(element, indent + 1);
        }
        newline(indent);
        out += ']';
    }

    void object(const nlohmann::json& v, int indent) {
        if (v.empty()) { out += "{}"; return; }
        out += '{';
        bool first = true;
        for (const auto& [key, element] : v.items()) {
            if (!first) out += ',';
            first = false;
            newline(indent + 1);
            writeString(out, key, style_.escapeSlashes);
            out += style_.pretty ? " : " : ":";
            value(element, indent + 1);
        }
        newline(indent);
        out += '}';
    }

    JsonText::Style style_;
};

} // namespace

namespace JsonText {

nlohmann::json parse(std::string_view bytes) {
    if (nestsTooDeeply(bytes)) throw JsonParseError("nesting deeper than " + std::to_string(maxDepth));
    try {
        return nlohmann::json::parse(bytes.begin(), bytes.end());
    } catch (const nlohmann::json::exception& error) {
        throw JsonParseError(error.what());
    }
}

std::string write(const nlohmann::json& value, Style style) {
    Writer writer(style);
    writer.value(value, 0);
    return std::move(writer.out);
}

std::string pretty(const nlohmann::json& value) { return write(value, {}); }

std::string compact(const nlohmann::json& value) { return write(value, {.pretty = false, .escapeSlashes = false}); }

std::string formatDouble(double value) {
    if (!std::isfinite(value)) throw JsonEncodeError("A number that is not finite can't be written as JSON.");
    if (value == std::trunc(value) && std::fabs(value) < 1e15) {
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%.0f", value);
        return buffer;
    }
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

} // namespace JsonText
} // namespace recorder
