#pragma once

#include "audio/AudioLog.h"
#include "audio/AudioTrack.h"
#include "model/Project.h"

#include <filesystem>
#include <vector>

// The sound of a project as tracks: the microphone (its cleaned file when
// the switches ask for one and it exists), system audio, then every audible
// media item with its fades and, for music, the ducking curve. Export and
// playback both mix what this gives, so what is heard is what is exported.
namespace recorder::AudioMixBuilder {

// A file that can't be opened leaves its track out with one line in `log`.
std::vector<AudioTrack> build(const Project& project, const std::filesystem::path& package,
                              const AudioLog& log = logToStandardError);

// The microphone file the mix plays: the cleaned copy named by the audio
// settings when it exists beside the recording, else the recording.
std::filesystem::path microphoneFile(const Project& project, const Asset& microphone,
                                     const std::filesystem::path& package);

} // namespace recorder::AudioMixBuilder
