#pragma once

// Sound made at test time and the measurements the sound tests share.

#include "audio/AacFileWriter.h"
#include "audio/AudioFileReader.h"
#include "audio/WavFileWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <numbers>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace recorder::test {

// Mono samples unless a function says otherwise.
using Samples = std::vector<float>;

inline Samples tone(double frequency, double seconds, double amplitude, int rate = 48000) {
    Samples out(std::size_t(std::llround(seconds * rate)));
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = float(amplitude * std::sin(2 * std::numbers::pi * frequency * double(i) / rate));
    return out;
}

inline Samples silence(double seconds, int rate = 48000) { return Samples(std::size_t(std::llround(seconds * rate)), 0.0f); }

// Pink noise (Paul Kellet's filter over white noise) scaled to `rms`.
inline Samples pinkNoise(double seconds, double rms, int rate = 48000, unsigned seed = 7) {
    std::mt19937 random(seed);
    std::normal_distribution<double> white(0, 1);
    Samples out(std::size_t(std::llround(seconds * rate)));
    double b0 = 0, b1 = 0, b2 = 0, b3 = 0, b4 = 0, b5 = 0, b6 = 0;
    for (auto& sample : out) {
        double w = white(random);
        b0 = 0.99886 * b0 + w * 0.0555179;
        b1 = 0.99332 * b1 + w * 0.0750759;
        b2 = 0.96900 * b2 + w * 0.1538520;
        b3 = 0.86650 * b3 + w * 0.3104856;
        b4 = 0.55000 * b4 + w * 0.5329522;
        b5 = -0.7616 * b5 - w * 0.0168980;
        sample = float(b0 + b1 + b2 + b3 + b4 + b5 + b6 + w * 0.5362);
        b6 = w * 0.115926;
    }
    double sum = 0;
    for (float x : out) sum += double(x) * x;
    double scale = rms / std::sqrt(sum / double(out.size()));
    for (auto& sample : out) sample = float(sample * scale);
    return out;
}

inline Samples joined(std::initializer_list<Samples> parts) {
    Samples out;
    for (const auto& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

inline Samples mixed(Samples a, const Samples& b) {
    a.resize(std::max(a.size(), b.size()), 0.0f);
    for (std::size_t i = 0; i < b.size(); ++i) a[i] += b[i];
    return a;
}

inline void writeM4a(const std::filesystem::path& file, const Samples& interleaved, int rate = 48000, int channels = 1) {
    AacFileWriter writer(file, rate, channels, channels == 1 ? 128000 : 192000);
    writer.write(interleaved.data(), int(interleaved.size() / std::size_t(channels)));
    writer.finish();
}

inline void writeWav(const std::filesystem::path& file, const Samples& interleaved, int rate = 48000, int channels = 1) {
    WavFileWriter writer(file, rate, channels);
    writer.write(interleaved.data(), int(interleaved.size() / std::size_t(channels)));
    writer.finish();
}

// The whole file decoded, interleaved, in the form asked for.
inline Samples readAll(const std::filesystem::path& file, AudioFormat format = {}) {
    AudioFileReader reader(file, format);
    Samples out, block(4096 * std::size_t(reader.channels()));
    while (int count = reader.read(block.data(), 4096))
        out.insert(out.end(), block.begin(), block.begin() + std::ptrdiff_t(count * reader.channels()));
    return out;
}

// One channel of interleaved samples.
inline Samples channel(const Samples& interleaved, int channels, int which) {
    Samples out(interleaved.size() / std::size_t(channels));
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = interleaved[i * std::size_t(channels) + std::size_t(which)];
    return out;
}

inline Samples slice(const Samples& samples, double from, double to, int rate = 48000) {
    auto a = std::min(samples.size(), std::size_t(std::llround(from * rate)));
    auto b = std::min(samples.size(), std::size_t(std::llround(to * rate)));
    return {samples.begin() + std::ptrdiff_t(a), samples.begin() + std::ptrdiff_t(std::max(a, b))};
}

inline double rms(std::span<const float> samples) {
    if (samples.empty()) return 0;
    double sum = 0;
    for (float x : samples) sum += double(x) * x;
    return std::sqrt(sum / double(samples.size()));
}

inline double decibels(double value) { return 20 * std::log10(std::max(value, 1e-9)); }

// The RMS of the part of the signal at `frequency` (Goertzel), as a sine of
// that frequency would have it.
inline double levelAt(std::span<const float> samples, double frequency, int rate = 48000) {
    if (samples.empty()) return 0;
    double k = 2 * std::cos(2 * std::numbers::pi * frequency / rate);
    double s1 = 0, s2 = 0;
    for (float x : samples) {
        double s0 = x + k * s1 - s2;
        s2 = s1;
        s1 = s0;
    }
    double power = s1 * s1 + s2 * s2 - k * s1 * s2;
    return std::sqrt(2 * power) / double(samples.size());
}

// The frequency of a clean tone, from its rising zero crossings.
inline double toneFrequency(std::span<const float> samples, int rate = 48000) {
    std::vector<double> crossings;
    for (std::size_t i = 1; i < samples.size(); ++i)
        if (samples[i - 1] < 0 && samples[i] >= 0)
            crossings.push_back(double(i - 1) + samples[i - 1] / (samples[i - 1] - samples[i]));
    if (crossings.size() < 2) return 0;
    return (double(crossings.size()) - 1) * rate / (crossings.back() - crossings.front());
}

// Seconds of the signal until the last sample louder than `threshold`.
inline double soundingLength(std::span<const float> samples, float threshold = 0.01f, int rate = 48000) {
    for (std::size_t i = samples.size(); i > 0; --i)
        if (std::fabs(samples[i - 1]) > threshold) return double(i) / rate;
    return 0;
}

// Speech from flite (or espeak-ng), as mono float at `rate`, cut to where
// the voice is audible: from the first to the last 10 ms louder than
// -30 dBFS, so the synthesiser's own lead-in clicks and silences go. Empty
// when neither synthesiser is installed.
inline Samples speech(const std::string& text, const std::filesystem::path& folder, int rate = 48000) {
    auto wav = folder / "speech.wav";
    std::string quoted = "'" + text + "'";
    std::string command = "flite -t " + quoted + " -o '" + wav.string() + "' 2>/dev/null || espeak-ng -w '" +
                          wav.string() + "' " + quoted + " 2>/dev/null";
    if (std::system(command.c_str()) != 0 || !std::filesystem::exists(wav)) return {};
    Samples voice = readAll(wav, {rate, 1});
    auto window = std::size_t(rate / 100);
    std::size_t first = voice.size(), last = 0;
    for (std::size_t at = 0; at + window <= voice.size(); at += window) {
        if (rms(std::span<const float>(voice).subspan(at, window)) < 0.03) continue;
        first = std::min(first, at);
        last = at + window;
    }
    return first < last ? Samples(voice.begin() + std::ptrdiff_t(first), voice.begin() + std::ptrdiff_t(last)) : Samples{};
}

} // namespace recorder::test
