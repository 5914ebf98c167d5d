#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace recorder::test {

// Makes a small media file at test time with the real ffmpeg program;
// `arguments` is everything between "-y" and the output file.
inline std::filesystem::path makeMedia(const std::filesystem::path& out, const std::string& arguments) {
    std::string command = "ffmpeg -hide_banner -loglevel error -nostdin -y " + arguments + " '" + out.string() + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("ffmpeg failed: " + command);
    return out;
}

// A 30 fps video whose frame N is a flat grey with luma 19 + 3·N, so a
// decoded frame tells its own number; frames listed in `blackFrames` are
// black. Key frames every 10 frames, with B-frames, as real encoders make.
inline std::filesystem::path makeNumberedVideo(const std::filesystem::path& out, int frames,
                                               const std::string& blackFrames = "0") {
    std::string lum = "if(" + blackFrames + ",16,19+3*N)";
    return makeMedia(out, "-f lavfi -i color=c=black:s=64x48:r=30:d=" + std::to_string(frames / 30.0) +
                              " -vf \"format=yuv420p,geq=lum='" + lum + "':cb=128:cr=128\" -frames:v " +
                              std::to_string(frames) + " -c:v libx264 -g 10 -bf 2 -crf 10 -pix_fmt yuv420p");
}

inline std::vector<unsigned char> readBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeBytes(const std::filesystem::path& file, const std::vector<unsigned char>& bytes) {
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

} // namespace recorder::test
