#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace recorder {

// Writes interleaved float samples as a 16-bit PCM WAV file, the integer
// form export reads the mix in. Throws std::runtime_error with a sentence
// when the file can't be written.
class WavFileWriter {
public:
    WavFileWriter(const std::filesystem::path& file, int sampleRate, int channels);
    void write(const float* interleaved, int frames);
    // Fills in the lengths; without it the header claims no data.
    void finish();

private:
    void writeHeader(std::uint32_t dataBytes);

    std::filesystem::path path_;
    std::ofstream out_;
    int sampleRate_;
    int channels_;
    std::uint64_t dataBytes_ = 0;
};

} // namespace recorder
