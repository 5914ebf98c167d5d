#include "undo/UndoMenuTitles.h"

namespace recorder {

std::string undoMenuItemTitle(const std::optional<std::string>& undoLabel) {
    return undoLabel ? "Undo " + *undoLabel : "Undo";
}

std::string redoMenuItemTitle() {
    return "Redo";
}

} // namespace recorder
