#pragma once

#include <memory>
#include <string>

namespace recorder {

// Holds off sleep and the screen saver while a recording is under way,
// through logind's inhibitor lock or, failing that, the screen saver's own
// inhibition. Without a bus nothing happens.
class SystemActivity {
public:
    SystemActivity();
    ~SystemActivity();
    SystemActivity(const SystemActivity&) = delete;
    SystemActivity& operator=(const SystemActivity&) = delete;

    // A second begin without an end does nothing.
    void begin(const std::string& reason);
    // Only ends what begin took.
    void end();
    bool isHolding() const;

private:
    struct Hold;
    std::unique_ptr<Hold> hold_;
};

} // namespace recorder
