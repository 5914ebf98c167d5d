#include "CliArguments.h"

#include <cstdlib>

namespace recorder::cli {

bool parseArea(const std::string& text, Rect& rect) {
    double values[4];
    std::size_t from = 0;
    for (int i = 0; i < 4; ++i) {
        std::size_t comma = i < 3 ? text.find(',', from) : text.size();
        if (comma == std::string::npos || !parseNumber(text.substr(from, comma - from), values[i])) return false;
        from = comma + 1;
    }
    rect = {values[0], values[1], values[2], values[3]};
    return rect.width > 0 && rect.height > 0;
}

std::unique_ptr<QGuiApplication> headlessGui() {
    if (QGuiApplication::instance()) return nullptr;
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static int argc = 1;
    static char name[] = "recorder-cli";
    static char* argv[] = {name, nullptr};
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace recorder::cli
