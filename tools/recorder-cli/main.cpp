#include "CliCommands.h"

#include <cstdio>
#include <iostream>
#include <string_view>

namespace {

struct Command {
    std::string_view name;
    std::string_view usage;
    int (*run)(const recorder::cli::Arguments&);
};

// Keep in step with the README's command reference.
constexpr Command commands[] = {
    {"migrate", "migrate PATH", recorder::cli::runMigrate},
    {"agent", "agent [--projects-dir DIR]", recorder::cli::runAgent},
    {"mcp-http-body", "mcp-http-body", recorder::cli::runMcpHttpBody},
};

int usage(std::ostream& out) {
    out << "Usage: recorder-cli COMMAND [OPTIONS]\nCommands:\n";
    for (const auto& command : commands) out << "  recorder-cli " << command.usage << "\n";
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage(std::cerr);
    std::string_view name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        usage(std::cout);
        return 0;
    }
    for (const auto& command : commands) {
        if (command.name != name) continue;
        recorder::cli::Arguments args(argv + 2, argv + argc);
        try {
            return command.run(args);
        } catch (const std::exception& error) {
            std::cerr << error.what() << "\n";
            return 1;
        }
    }
    std::cerr << "There is no command called " << name << ". Run recorder-cli --help for the list.\n";
    return 2;
}
