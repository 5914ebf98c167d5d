#pragma once

#include "undo/UndoStack.h"

#include <optional>
#include <string>

namespace recorder {

// The Edit menu's item titles. The redo side deliberately names nothing.
std::string undoMenuItemTitle(const std::optional<std::string>& undoLabel);
std::string redoMenuItemTitle();

template <class V>
std::string undoMenuItemTitle(const UndoStack<V>& stack) {
    return undoMenuItemTitle(stack.undoLabel());
}

} // namespace recorder
