#pragma once

#include "support/TempDir.h"

#include <cstdlib>
#include <string>
#include <sys/wait.h>

namespace recorder::test {

struct CliRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs the real recorder-cli with `input` on its standard input; `environment`
// is prefixed to the command line as NAME='value' pairs.
inline CliRun runCli(const std::string& arguments, const TempDir& dir, const std::string& input = "",
                     const std::string& environment = "") {
    auto inFile = dir / "stdin", outFile = dir / "stdout", errFile = dir / "stderr";
    writeText(inFile, input);
    std::string command = environment + " '" RECORDER_CLI_PATH "' " + arguments + " <'" + inFile.string() + "' >'" +
                          outFile.string() + "' 2>'" + errFile.string() + "'";
    int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readText(outFile), readText(errFile)};
}

} // namespace recorder::test
