#pragma once

#include <functional>
#include <string_view>

namespace recorder {

// The application's log, reachable from every layer. The layers below the
// application only hand lines over; the application installs the handler that
// writes the file. Until then lines go nowhere. Callable from any thread.
class Log {
public:
    enum class Level { info, error };
    using Handler = std::function<void(Level level, std::string_view category, std::string_view message)>;

    static void info(std::string_view category, std::string_view message);
    static void error(std::string_view category, std::string_view message);
    // Returns the handler it replaces, so a caller can put it back.
    static Handler setHandler(Handler handler);
};

} // namespace recorder
