#include "audio/MicCleaner.h"

#include "audio/AacFileWriter.h"
#include "audio/AudioFileReader.h"
#include "audio/CleanupChain.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace recorder::MicCleaner {

namespace {

constexpr int blockFrames = 4096;

std::filesystem::path partialFile(const std::filesystem::path& output) {
    return output.parent_path() / (".partial-" + output.filename().string());
}

std::unique_ptr<AudioFileReader> openInput(const std::filesystem::path& input) {
    try {
        return std::make_unique<AudioFileReader>(input);
    } catch (const AudioReadError&) {
        throw Failure::unreadable();
    }
}

// Each chain's output, interleaved into the file. All chains run the same
// steps on the same counts, so their outputs are equally long.
void writeChannels(AacFileWriter& writer, const std::vector<std::vector<float>>& channels) {
    std::size_t frames = channels[0].size();
    for (const auto& channel : channels) frames = std::min(frames, channel.size());
    std::vector<float> interleaved(frames * channels.size());
    for (std::size_t c = 0; c < channels.size(); ++c)
        for (std::size_t i = 0; i < frames; ++i) interleaved[i * channels.size() + c] = channels[c][i];
    writer.write(interleaved.data(), int(frames));
}

void render(AudioFileReader& reader, std::vector<float>& block, int firstCount, AacFileWriter& writer,
            bool noiseRemoval, bool leveling, const Progress& progress) {
    auto channels = std::size_t(reader.channels());
    std::vector<CleanupChain> chains;
    for (std::size_t c = 0; c < channels; ++c) chains.emplace_back(reader.sampleRate(), noiseRemoval, leveling);
    double expected = std::max(reader.duration() * reader.sampleRate(), 1.0);
    std::vector<std::vector<float>> outputs(channels);
    std::vector<float> channel;
    std::int64_t done = 0;
    for (int count = firstCount; count > 0; count = reader.read(block.data(), blockFrames)) {
        channel.resize(std::size_t(count));
        for (std::size_t c = 0; c < channels; ++c) {
            for (std::size_t i = 0; i < channel.size(); ++i) channel[i] = block[i * channels + c];
            outputs[c] = chains[c].push(channel);
        }
        writeChannels(writer, outputs);
        done += count;
        if (progress) progress(std::min(double(done) / expected, 1.0));
    }
    for (std::size_t c = 0; c < channels; ++c) outputs[c] = chains[c].finish();
    writeChannels(writer, outputs);
}

} // namespace

Failure::Failure(Kind kind, std::string reason, std::string message)
    : kind_(kind), reason_(std::move(reason)), message_(std::move(message)) {}

Failure Failure::engine(const std::string& reason) {
    return Failure(Kind::engine, reason, "The microphone could not be cleaned up (" + reason + ").");
}

Failure Failure::unreadable() { return Failure(Kind::unreadable, "", "The microphone recording could not be read."); }

void clean(const std::filesystem::path& input, const std::filesystem::path& output, bool noiseRemoval, bool leveling,
           const Progress& progress) {
    auto reader = openInput(input);
    std::vector<float> block(std::size_t(blockFrames) * std::size_t(reader->channels()));
    int firstCount = reader->read(block.data(), blockFrames);
    if (firstCount < 1) throw Failure::unreadable();

    auto partial = partialFile(output);
    std::error_code ignored;
    std::filesystem::remove(partial, ignored);
    try {
        int channels = reader->channels();
        AacFileWriter writer(partial, reader->sampleRate(), channels, channels == 1 ? 128000 : 192000);
        render(*reader, block, firstCount, writer, noiseRemoval, leveling, progress);
        writer.finish();
        if (writer.framesWritten() == 0) throw Failure::engine("nothing rendered");
        std::filesystem::remove(output);
        std::filesystem::rename(partial, output);
    } catch (const Failure&) {
        throw;
    } catch (const std::filesystem::filesystem_error& error) {
        throw Failure::engine(error.code().message());
    } catch (const std::exception& error) {
        throw Failure::engine(error.what());
    }
    if (progress) progress(1);
}

} // namespace recorder::MicCleaner
