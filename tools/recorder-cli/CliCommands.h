#pragma once

#include <string>
#include <vector>

// Each recorder-cli command: its arguments after the command word in, the
// process exit code out. Errors go to stderr as a sentence for the person.
namespace recorder::cli {

using Arguments = std::vector<std::string>;

int runMigrate(const Arguments& args);
int runAgent(const Arguments& args);
int runMcpHttpBody(const Arguments& args);

} // namespace recorder::cli
