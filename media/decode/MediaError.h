#pragma once

#include <stdexcept>
#include <string>

namespace recorder {

// A media file that can't be opened or read, with a sentence for the person.
class MediaError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace recorder
