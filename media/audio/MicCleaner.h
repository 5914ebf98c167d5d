#pragma once

#include <exception>
#include <filesystem>
#include <functional>
#include <string>

// Processes a microphone recording once, offline, into the cleaned file that
// playback and export use in place of it.
namespace recorder::MicCleaner {

// Why cleaning failed, with the sentence the person reads.
class Failure : public std::exception {
public:
    enum class Kind { engine, unreadable };

    static Failure engine(const std::string& reason);
    static Failure unreadable();

    Kind kind() const { return kind_; }
    const std::string& reason() const { return reason_; }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    Failure(Kind kind, std::string reason, std::string message);

    Kind kind_;
    std::string reason_;
    std::string message_;
};

// Progress from 0 to 1, called on the cleaning thread.
using Progress = std::function<void(double)>;

// Reads `input`, optionally takes the noise out, always takes out rumble
// below 70 Hz, optionally levels the voice, and writes AAC to `output`,
// lined up with the input sample for sample. The file is written as
// ".partial-" plus the name beside `output` and moved into place at the end.
// Throws Failure.
void clean(const std::filesystem::path& input, const std::filesystem::path& output, bool noiseRemoval, bool leveling,
           const Progress& progress = {});

} // namespace recorder::MicCleaner
