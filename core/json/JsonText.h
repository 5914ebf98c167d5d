#pragma once

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>
#include <string_view>

namespace recorder {

// A parse failure carries the sentence a person reads; the parser's own
// wording ("syntax error while parsing value - ...") stays in `detail`.
class JsonParseError : public std::runtime_error {
public:
    explicit JsonParseError(const std::string& detail);
    const std::string& detail() const { return detail_; }

private:
    std::string detail_;
};

class JsonEncodeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reading and writing JSON text in the one form every file of ours uses:
// sorted keys, two-space indent, "key" : value, escaped slashes, doubles in
// their shortest round-trip form without ".0" on whole values.
namespace JsonText {

// Deeper documents are refused before parsing so that nothing downstream
// (printing, destruction) can run out of stack on hostile input.
inline constexpr int maxDepth = 256;

nlohmann::json parse(std::string_view bytes);

struct Style {
    bool pretty = true;
    bool escapeSlashes = true;
};

// Throws JsonEncodeError for NaN or infinity, which JSON cannot hold.
std::string write(const nlohmann::json& value, Style style = {});
std::string pretty(const nlohmann::json& value);
std::string compact(const nlohmann::json& value);

std::string formatDouble(double value);

} // namespace JsonText
} // namespace recorder
