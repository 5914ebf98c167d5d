#include "export/ExportError.h"

namespace recorder {

ExportError::ExportError(Kind kind) : std::runtime_error(message(kind)), kind_(kind) {}

const char* ExportError::message(Kind kind) {
    switch (kind) {
    case Kind::empty: return "There is nothing to export.";
    case Kind::writer: return "The video encoder failed.";
    case Kind::cancelled: return "Export cancelled.";
    case Kind::stalled:
        return "The encoder stopped responding. Please try again (and email us the log if it happens twice).";
    }
    return "The video encoder failed.";
}

} // namespace recorder
