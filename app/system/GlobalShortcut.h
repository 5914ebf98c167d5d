#pragma once

#include "x11/Hotkey.h"

#include <functional>
#include <memory>
#include <string>

namespace recorder {

class Settings;

// The global shortcut of the settings ("hotkeyKeyCode", "hotkeyModifiers",
// ⌃⌘R unless set), calling its action on the main thread.
class GlobalShortcut {
public:
    // The display is $DISPLAY when none is given. Needs the application
    // object, whose thread the action runs on.
    explicit GlobalShortcut(std::function<void()> action, std::string display = {});

    // Grabs the stored combination again, as after a change in settings.
    // False when it can't be had; that is never shown to the person.
    bool reload(const Settings& settings);
    void unregister() { hotkey_->unregister(); }
    const Hotkey::Combo& combo() const { return combo_; }

private:
    std::shared_ptr<std::function<void()>> action_;
    std::unique_ptr<Hotkey> hotkey_;
    Hotkey::Combo combo_;
};

} // namespace recorder
