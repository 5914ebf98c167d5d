#include "audio/WavFileWriter.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace recorder {

namespace {

void putLE(std::ofstream& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.put(char((value >> (8 * i)) & 0xFF));
}

} // namespace

WavFileWriter::WavFileWriter(const std::filesystem::path& file, int sampleRate, int channels)
    : path_(file), out_(file, std::ios::binary | std::ios::trunc), sampleRate_(sampleRate), channels_(channels) {
    if (!out_) throw std::runtime_error("Could not create " + file.string() + ". Check that its folder exists and is writable.");
    writeHeader(0);
}

void WavFileWriter::writeHeader(std::uint32_t dataBytes) {
    out_.write("RIFF", 4);
    putLE(out_, 36 + dataBytes, 4);
    out_.write("WAVEfmt ", 8);
    putLE(out_, 16, 4);
    putLE(out_, 1, 2); // integer PCM
    putLE(out_, std::uint32_t(channels_), 2);
    putLE(out_, std::uint32_t(sampleRate_), 4);
    putLE(out_, std::uint32_t(sampleRate_ * channels_ * 2), 4);
    putLE(out_, std::uint32_t(channels_ * 2), 2);
    putLE(out_, 16, 2);
    out_.write("data", 4);
    putLE(out_, dataBytes, 4);
}

void WavFileWriter::write(const float* interleaved, int frames) {
    std::size_t count = std::size_t(frames) * std::size_t(channels_);
    std::vector<char> bytes(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
        auto value = std::uint16_t(std::int16_t(std::lround(std::clamp(interleaved[i], -1.0f, 1.0f) * 32767.0f)));
        bytes[2 * i] = char(value & 0xFF);
        bytes[2 * i + 1] = char(value >> 8);
    }
    out_.write(bytes.data(), std::streamsize(bytes.size()));
    dataBytes_ += bytes.size();
    if (!out_) throw std::runtime_error("Could not write " + path_.string() + ". Check that the disk has room.");
}

void WavFileWriter::finish() {
    out_.seekp(0);
    writeHeader(std::uint32_t(std::min<std::uint64_t>(dataBytes_, 0xFFFFFFFFu - 36)));
    out_.close();
    if (!out_) throw std::runtime_error("Could not finish " + path_.string() + ". Check that the disk has room.");
}

} // namespace recorder
