#pragma once

namespace recorder {

// The modifier keys held with a key, named as the key display shows them:
// control ⌃, option ⌥ (Alt), shift ⇧, command ⌘ (the Super key).
struct KeyModifiers {
    bool control = false;
    bool option = false;
    bool shift = false;
    bool command = false;

    bool operator==(const KeyModifiers&) const = default;
};

} // namespace recorder
