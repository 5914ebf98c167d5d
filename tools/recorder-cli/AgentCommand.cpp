#include "CliCommands.h"

#include "Settings.h"
#include "agent/AgentCommands.h"
#include "agent/AgentLog.h"

#include <iostream>
#include <string>

namespace recorder::cli {

// The socket's protocol on standard input and output, for scripts and tests.
int runAgent(const Arguments& args) {
    Settings settings;
    AgentLog log;
    AgentCommands commands(settings, log);
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--projects-dir" && i + 1 < args.size()) {
            commands.setProjectsDirectory(args[++i]);
        } else {
            std::cerr << "Unknown option " << args[i] << ". Usage: recorder-cli agent [--projects-dir DIR]\n";
            return 2;
        }
    }
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line.empty()) continue;
        if (auto reply = commands.handle(line)) std::cout << *reply << std::flush;
    }
    return 0;
}

} // namespace recorder::cli
