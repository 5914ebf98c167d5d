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
int runNewProject(const Arguments& args);
int runZooms(const Arguments& args);
int runFrameInfo(const Arguments& args);
int runRenderFrame(const Arguments& args);
int runStyle(const Arguments& args);
int runImport(const Arguments& args);
int runCleanMic(const Arguments& args);
int runMix(const Arguments& args);
int runExport(const Arguments& args);
int runSources(const Arguments& args);
int runCaptureTest(const Arguments& args);
int runRecord(const Arguments& args);

} // namespace recorder::cli
