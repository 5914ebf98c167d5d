#pragma once

#include <filesystem>

// Takes the sound out of a movie into an ".m4a" file of its own.
namespace recorder::SoundExtractor {

// AAC is copied packet for packet, so nothing is lost and the timing stays
// exact; any other codec is decoded and encoded as AAC, at the file's rate
// where AAC has it (else 48 kHz), with more than two channels folded to
// stereo. The new file starts at the movie's first sound. Throws
// AudioReadError or AudioWriteError.
void extract(const std::filesystem::path& movie, const std::filesystem::path& destination);

} // namespace recorder::SoundExtractor
