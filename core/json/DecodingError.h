#pragma once

#include <stdexcept>
#include <string>

namespace recorder {

// A file that parses but does not hold what a record needs. The sentence
// names the place in the file, so a person can find and mend it.
class DecodingError : public std::runtime_error {
public:
    DecodingError(const std::string& sentence, std::string path);

    static DecodingError missingKey(const std::string& path);
    static DecodingError wrongType(const std::string& path, const std::string& expected);
    static DecodingError unknownCase(const std::string& path, const std::string& found);

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

} // namespace recorder
