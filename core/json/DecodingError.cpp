#include "json/DecodingError.h"

namespace recorder {

namespace {
std::string place(const std::string& path) { return path.empty() ? "the top level" : "\"" + path + "\""; }
} // namespace

DecodingError::DecodingError(const std::string& sentence, std::string path)
    : std::runtime_error(sentence), path_(std::move(path)) {}

DecodingError DecodingError::missingKey(const std::string& path) {
    return {"The data couldn't be read because " + place(path) + " is missing.", path};
}

DecodingError DecodingError::wrongType(const std::string& path, const std::string& expected) {
    return {"The data couldn't be read because " + place(path) + " isn't " + expected + ".", path};
}

DecodingError DecodingError::unknownCase(const std::string& path, const std::string& found) {
    return {"The data couldn't be read because " + place(path) + " has the unknown value \"" + found + "\".", path};
}

} // namespace recorder
