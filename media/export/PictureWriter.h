#pragma once

#include <cstdint>

namespace recorder {

// An encoder that takes an export's pictures in order and makes its file.
class PictureWriter {
public:
    virtual ~PictureWriter() = default;

    // The next picture, BGRA rows `stride` bytes apart.
    virtual void appendPicture(const std::uint8_t* bgra, int stride) = 0;
    // After the last picture: completes the file.
    virtual void finish() = 0;
};

} // namespace recorder
