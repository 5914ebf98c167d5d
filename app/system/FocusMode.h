#pragma once

#include <optional>
#include <string>
#include <vector>

namespace recorder {

// Quiets the desktop for a recording: notification banners off, desktop
// icons hidden, through the desktop's own settings tool. Only what was
// changed is undone, and every failure is ignored: a desktop without these
// settings simply isn't quieted.
class FocusMode {
public:
    // The settings tool; "gsettings" on $PATH unless given.
    explicit FocusMode(std::string settingsTool = "gsettings");
    void enable(bool dnd, bool hideDesktop);
    // A second restore does nothing.
    void restore();

    bool dndOn() const { return dndOn_; }
    bool hidDesktop() const { return hidDesktop_; }

    // Milliseconds a settings tool may take before it's given up on.
    static constexpr int toolTimeoutMilliseconds = 2000;

private:
    struct Key {
        const char* schema;
        const char* key;
    };
    struct Changed {
        Key key;
        std::string before;
    };

    std::optional<std::string> read(const Key& key) const;
    bool write(const Key& key, const std::string& value) const;
    void hideIcons();
    void muteBanners();

    std::string tool_;
    bool hidDesktop_ = false;
    bool dndOn_ = false;
    // What was changed, with its value before, so restoring undoes exactly that.
    std::vector<Changed> changed_;
};

} // namespace recorder
