#pragma once

#include <cstdint>
#include <variant>

namespace recorder {

// What a screen stream looks at: a whole display (of which the configuration
// may cut an area), or one window on its own, covered or not.
struct StreamFilter {
    struct Display {
        std::uint32_t id = 0;
        bool operator==(const Display&) const = default;
    };
    struct Window {
        std::uint32_t id = 0;
        bool operator==(const Window&) const = default;
    };

    std::variant<Display, Window> value;

    bool operator==(const StreamFilter&) const = default;
};

} // namespace recorder
