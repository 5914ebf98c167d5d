#include "CliCommands.h"

#include "Settings.h"
#include "agent/AgentCommands.h"
#include "agent/AgentController.h"
#include "agent/AgentLog.h"

#include <iostream>
#include <iterator>
#include <string>

namespace recorder::cli {

// One HTTP request body in, what the server would send back out.
int runMcpHttpBody(const Arguments& args) {
    if (!args.empty()) {
        std::cerr << "mcp-http-body takes no options; it reads one body on standard input.\n";
        return 2;
    }
    std::string body{std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
    Settings settings;
    AgentLog log;
    AgentCommands commands(settings, log);
    AgentController controller(&commands);
    if (auto reply = controller.handleBody(body)) std::cout << *reply << "\n";
    return 0;
}

} // namespace recorder::cli
