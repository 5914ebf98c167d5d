#pragma once

#include <stdexcept>

namespace recorder {

// A failed export, with the sentence the person reads.
class ExportError : public std::runtime_error {
public:
    enum class Kind { empty, writer, cancelled, stalled };

    explicit ExportError(Kind kind);

    Kind kind() const { return kind_; }
    static const char* message(Kind kind);

private:
    Kind kind_;
};

} // namespace recorder
