#pragma once

#include "model/Project.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace recorder {

class LookLibrary;

// Makes a project from a video that wasn't recorded here, so the editor can
// add captions, zooms, text and shapes to it.
namespace VideoImport {

class Failure : public std::exception {
public:
    enum class Kind { noVideo };

    static Failure noVideo() { return Failure(Kind::noVideo); }
    Kind kind() const { return kind_; }
    const char* what() const noexcept override { return "That file has no video track."; }

private:
    explicit Failure(Kind kind) : kind_(kind) {}
    Kind kind_;
};

struct Imported {
    std::filesystem::path package;
    Project project;
};

// A line for the application log, category "app".
using Log = std::function<void(const std::string& line)>;

// Makes a package in `recordingsFolder` with a free name made from `name`,
// or from the video's file name: the video as the recording, its sound
// extracted to an ".m4a" beside it for captions and the waveform, one clip,
// `fromVideo` set. `looks`, when given, brings in the last look's captions
// and watermark; the frame of an imported video is its own. Throws Failure,
// or the file error that stopped it; a half-made package is removed.
Imported importVideo(const std::filesystem::path& video, const std::filesystem::path& recordingsFolder,
                     const std::optional<std::string>& name, const LookLibrary* looks, const Log& log);

} // namespace VideoImport

} // namespace recorder
