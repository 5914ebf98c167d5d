// Any bytes as a socket request line and as an HTTP body: each line gets
// exactly one reply line, and nothing crashes.
#include "Settings.h"
#include "agent/AgentCommands.h"
#include "agent/AgentController.h"
#include "agent/AgentLog.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace {

struct Server {
    recorder::Settings settings{std::filesystem::temp_directory_path() / "request-line-fuzzer.conf"};
    recorder::AgentLog log;
    recorder::AgentCommands commands{settings, log};
    recorder::AgentController controller{&commands};

    Server() { commands.setProjectsDirectory(std::filesystem::temp_directory_path() / "request-line-fuzzer-projects"); }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Server server;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    auto reply = server.commands.handle(bytes);
    if (!reply || reply->empty() || reply->back() != '\n' || reply->find('\n') != reply->size() - 1) std::abort();
    server.controller.handleBody(bytes);
    return 0;
}
