#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace recorder {

// History as whole values: undo restores an earlier copy, so no edit needs an
// inverse. Neither side is ever trimmed; a session costs one copy per edit.
template <class V>
class UndoStack {
public:
    // The label names the edit that leads from `value` to the value after it.
    struct Entry {
        V value;
        std::string label;

        bool operator==(const Entry&) const = default;
    };

    explicit UndoStack(V value) : current_(std::move(value)) {}

    const V& current() const { return current_; }
    const std::vector<Entry>& past() const { return past_; }
    const std::vector<Entry>& future() const { return future_; }
    bool lastPushWasCoalescing() const { return lastPushWasCoalescing_; }

    bool canUndo() const { return !past_.empty(); }
    bool canRedo() const { return !future_.empty(); }
    std::optional<std::string> undoLabel() const { return lastLabel(past_); }
    std::optional<std::string> redoLabel() const { return lastLabel(future_); }

    // Leaves the coalescing flag alone on purpose: a coalescing push with the
    // same label right after this one merges into this entry.
    void push(V value, std::string label) {
        if (value == current_) return;
        past_.push_back({std::move(current_), std::move(label)});
        future_.clear();
        current_ = std::move(value);
    }

    // One step of a continuous gesture: the whole gesture undoes at once.
    void pushCoalescing(V value, std::string label) {
        if (value == current_) return;
        if (lastPushWasCoalescing_ && !past_.empty() && past_.back().label == label) {
            current_ = std::move(value);
            future_.clear();
            return;
        }
        push(std::move(value), std::move(label));
        lastPushWasCoalescing_ = true;
    }

    void endCoalescing() { lastPushWasCoalescing_ = false; }

    bool undo() { return step(past_, future_); }
    bool redo() { return step(future_, past_); }

private:
    static std::optional<std::string> lastLabel(const std::vector<Entry>& entries) {
        if (entries.empty()) return std::nullopt;
        return entries.back().label;
    }

    bool step(std::vector<Entry>& from, std::vector<Entry>& to) {
        if (from.empty()) return false;
        Entry entry = std::move(from.back());
        from.pop_back();
        to.push_back({std::move(current_), entry.label});
        current_ = std::move(entry.value);
        lastPushWasCoalescing_ = false;
        return true;
    }

    V current_;
    std::vector<Entry> past_;
    std::vector<Entry> future_;
    bool lastPushWasCoalescing_ = false;
};

} // namespace recorder
