#include "system/GlobalShortcut.h"

#include "Settings.h"

#include <QCoreApplication>
#include <QMetaObject>

namespace recorder {

GlobalShortcut::GlobalShortcut(std::function<void()> action, std::string display)
    : action_(std::make_shared<std::function<void()>>(std::move(action))) {
    // The key arrives on the hotkey's own thread; the action belongs on the main one.
    hotkey_ = std::make_unique<Hotkey>(
        [action = action_] {
            if (auto* application = QCoreApplication::instance())
                QMetaObject::invokeMethod(application, [action] { (*action)(); }, Qt::QueuedConnection);
        },
        std::move(display));
}

bool GlobalShortcut::reload(const Settings& settings) {
    combo_ = Hotkey::storedCombo(settings.hotkeyKeyCode(), settings.hotkeyModifiers());
    return hotkey_->registerCombo(combo_);
}

} // namespace recorder
