#include "audio/AudioMixBuilder.h"

#include "audio/AudioFileReader.h"
#include "audio/AudioSpans.h"
#include "audio/Ducking.h"
#include "audio/SpeechRangeCache.h"
#include "package/ProjectPackage.h"

#include <limits>
#include <optional>

namespace recorder::AudioMixBuilder {

namespace {

// The file's length, or none when it can't be played; a silent video is
// skipped quietly, anything else is told.
std::optional<double> playableDuration(const std::filesystem::path& file, const Asset& asset, const std::string& name,
                                       const AudioLog& log) {
    try {
        double duration = AudioFileReader(file).duration();
        if (duration > 0) return duration;
        return asset.duration.value_or(std::numeric_limits<double>::infinity());
    } catch (const NoSoundError&) {
        return std::nullopt;
    } catch (const AudioReadError& error) {
        if (log) log("audio: left " + name + " out of the mix: " + file.filename().string() + " can't be read (" +
                     error.what() + ")");
        return std::nullopt;
    }
}

void addRecordingTrack(std::vector<AudioTrack>& tracks, const Project& project, const std::filesystem::path& package,
                       AssetKind kind, double volume, bool muted, const AudioLog& log) {
    const Asset* asset = project.asset(kind);
    if (muted || volume <= 0 || !asset) return;
    bool microphone = kind == AssetKind::microphone;
    auto file = microphone ? microphoneFile(project, *asset, package) : ProjectPackage::assetURL(*asset, package);
    std::string name = microphone ? "the microphone" : "system audio";
    auto duration = playableDuration(file, *asset, name, log);
    if (!duration) return;
    tracks.push_back({name, file, AudioSpans::ofRecording(project, asset->startOffset, *duration), {{0, volume}}});
}

// Speech of the microphone recording on the output timeline, for ducking.
std::vector<SpeechRange> duckingSpeech(const Project& project, const std::filesystem::path& package) {
    const Asset* microphone = project.asset(AssetKind::microphone);
    if (!project.audio.duckMusic || !microphone) return {};
    auto ranges = SpeechRangeCache::shared().speechRanges(ProjectPackage::assetURL(*microphone, package));
    return Ducking::onOutputTimeline(ranges, project, microphone->startOffset);
}

} // namespace

std::filesystem::path microphoneFile(const Project& project, const Asset& microphone,
                                     const std::filesystem::path& package) {
    auto original = ProjectPackage::assetURL(microphone, package);
    auto cleanedName = project.audio.cleanedMicFileName();
    if (!cleanedName) return original;
    auto cleaned = original.parent_path() / *cleanedName;
    std::error_code ignored;
    return std::filesystem::exists(cleaned, ignored) ? cleaned : original;
}

std::vector<AudioTrack> build(const Project& project, const std::filesystem::path& package, const AudioLog& log) {
    std::vector<AudioTrack> tracks;
    const AudioSettings& audio = project.audio;
    addRecordingTrack(tracks, project, package, AssetKind::microphone, audio.micVolume, audio.micMuted, log);
    addRecordingTrack(tracks, project, package, AssetKind::systemAudio, audio.systemVolume, audio.systemMuted, log);

    std::vector<SpeechRange> speech = duckingSpeech(project, package);
    for (const MediaItem* item : project.audibleMedia()) {
        const Asset* asset = project.asset(item->assetID);
        if (item->volume <= 0 || !asset) continue;
        auto file = ProjectPackage::assetURL(*asset, package);
        auto duration = playableDuration(file, *asset, "\"" + item->name + "\"", log);
        if (!duration) continue;
        auto span = AudioSpans::ofMediaItem(*item, *duration);
        if (!span) continue;
        // Only music ducks; the sound of a video or GIF keeps its level.
        static const std::vector<SpeechRange> noSpeech;
        const auto& ranges = item->kind == AssetKind::audio ? speech : noSpeech;
        tracks.push_back({item->name, file, {*span}, Ducking::points(*item, ranges, audio.duckLevel)});
    }
    return tracks;
}

} // namespace recorder::AudioMixBuilder
