#include "log/Log.h"

#include <mutex>

namespace recorder {

namespace {

std::mutex handlerLock;

Log::Handler& installed() {
    static Log::Handler handler;
    return handler;
}

void write(Log::Level level, std::string_view category, std::string_view message) {
    Log::Handler handler;
    {
        std::lock_guard lock(handlerLock);
        handler = installed();
    }
    if (handler) handler(level, category, message);
}

} // namespace

void Log::info(std::string_view category, std::string_view message) { write(Level::info, category, message); }

void Log::error(std::string_view category, std::string_view message) { write(Level::error, category, message); }

Log::Handler Log::setHandler(Handler handler) {
    std::lock_guard lock(handlerLock);
    std::swap(installed(), handler);
    return handler;
}

} // namespace recorder
