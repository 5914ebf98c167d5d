#include "CliCommands.h"

#include "json/JsonText.h"
#include "screen/ScreenCaptureBackend.h"
#include "sink/CaptureError.h"

#include <iostream>

namespace recorder::cli {

// Prints what can be recorded now: the displays and the windows.
int runSources(const Arguments& args) {
    if (!args.empty()) {
        std::cerr << "sources takes no options: recorder-cli sources\n";
        return 2;
    }
    try {
        ShareableContent content = ScreenCaptureBackend::forThisSession()->shareableContent();
        std::cout << JsonText::pretty(content.toJson()) << "\n";
        return 0;
    } catch (const CaptureError& error) {
        std::cerr << error.what() << " Run this inside a desktop session, or set DISPLAY to an X server.\n";
        return 1;
    }
}

} // namespace recorder::cli
