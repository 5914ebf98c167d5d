#pragma once

#include <stdexcept>
#include <string>

namespace recorder {

// A style that couldn't be saved or removed, in words for the person.
class StyleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace recorder
