#include "audio/AudioMixBuilder.h"
#include "audio/AudioTimeline.h"
#include "package/ProjectPackage.h"

#include "support/SoundFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace recorder;
using namespace recorder::test;

namespace {

constexpr double sine = 0.70710678118654757; // RMS of a sine of amplitude 1

// A package with a 4-second recording (the screen file itself is never read
// for sound) to which tests add sound files and media items.
class SoundPackage {
public:
    SoundPackage() : project("Mix", {1920, 1080, 30}, "1.0") {
        ProjectPackage::createAssetsFolder(package);
        Asset screen;
        screen.id = Uuid::random();
        screen.kind = AssetKind::screen;
        screen.relativePath = "screen.mov";
        project.assets.push_back(screen);
        project.clips.push_back({Uuid::random(), screen.id, 0, 4, 1});
    }

    Uuid addAsset(AssetKind kind, const std::string& name, const Samples& mono, double startOffset = 0) {
        writeM4a(ProjectPackage::assetsURL(package) / name, mono);
        Asset asset;
        asset.id = Uuid::random();
        asset.kind = kind;
        asset.relativePath = name;
        asset.startOffset = startOffset;
        project.assets.push_back(asset);
        return asset.id;
    }

    MediaItem& addItem(AssetKind kind, const Uuid& assetID, double start, double end) {
        MediaItem item;
        item.id = Uuid::random();
        item.assetID = assetID;
        item.kind = kind;
        item.name = "item " + std::to_string(project.media.size() + 1);
        item.start = start;
        item.end = end;
        project.addMedia(item);
        return project.media.back();
    }

    // The left channel of the mix from 0, rendered in blocks as export does.
    Samples mix(double seconds) {
        AudioTimeline timeline(AudioMixBuilder::build(project, package, recordLog), recordLog);
        Samples out(std::size_t(AudioTimeline::frameAt(seconds)) * 2);
        for (std::size_t frame = 0; frame * 2 < out.size(); frame += 4096) {
            int count = int(std::min<std::size_t>(4096, out.size() / 2 - frame));
            timeline.render(std::int64_t(frame), out.data() + frame * 2, count);
        }
        return channel(out, 2, 0);
    }

    TempDir dir;
    std::filesystem::path package = dir / "Mix.tidereel";
    Project project;
    std::vector<std::string> log;
    AudioLog recordLog = [this](const std::string& line) { log.push_back(line); };
};

} // namespace

TEST(AudioMix, PlaysTheMicrophoneOfAClipAtSpeedTwoAtTwiceThePitchInHalfTheTime) {
    SoundPackage p;
    p.addAsset(AssetKind::microphone, "mic.m4a", tone(1000, 4, 0.5));
    p.project.clips[0].speed = 2;
    Samples left = p.mix(3);
    EXPECT_NEAR(toneFrequency(slice(left, 0.05, 1.95)), 2000, 2);
    EXPECT_NEAR(soundingLength(left), 2.0, 0.01);
    EXPECT_NEAR(rms(slice(left, 0.1, 1.9)), 0.5 * sine, 0.01);
}

TEST(AudioMix, PlaysEachClipsStretchOfTheMicrophoneFromWhereItsFileBegan) {
    SoundPackage p;
    // Second by second 500, 1000, 1500, 2000 Hz; the file began 1 s into the
    // recording, and the one clip plays recording seconds 2 to 4.
    p.addAsset(AssetKind::microphone, "mic.m4a",
               joined({tone(500, 1, 0.5), tone(1000, 1, 0.5), tone(1500, 1, 0.5), tone(2000, 1, 0.5)}), 1);
    p.project.clips[0] = {p.project.clips[0].id, p.project.clips[0].assetID, 2, 4, 1};
    Samples left = p.mix(2.5);
    EXPECT_NEAR(toneFrequency(slice(left, 0.1, 0.9)), 1000, 2);
    EXPECT_NEAR(toneFrequency(slice(left, 1.1, 1.9)), 1500, 2);
    EXPECT_NEAR(soundingLength(left), 2.0, 0.01);
}

TEST(AudioMix, LeavesOutAMutedOrSilencedTrack) {
    SoundPackage p;
    p.addAsset(AssetKind::microphone, "mic.m4a", tone(1000, 4, 0.3));
    p.addAsset(AssetKind::systemAudio, "system.m4a", tone(3000, 4, 0.3));
    Samples both = slice(p.mix(2), 0.5, 1.5);
    EXPECT_NEAR(levelAt(both, 1000), 0.3 * sine, 0.01);
    EXPECT_NEAR(levelAt(both, 3000), 0.3 * sine, 0.01);

    p.project.audio.micMuted = true;
    Samples muted = slice(p.mix(2), 0.5, 1.5);
    EXPECT_LT(levelAt(muted, 1000), 0.001);
    EXPECT_NEAR(levelAt(muted, 3000), 0.3 * sine, 0.01);

    p.project.audio.micMuted = false;
    p.project.audio.systemVolume = 0;
    p.project.audio.micVolume = 0.5;
    Samples quiet = slice(p.mix(2), 0.5, 1.5);
    EXPECT_NEAR(levelAt(quiet, 1000), 0.15 * sine, 0.01);
    EXPECT_LT(levelAt(quiet, 3000), 0.001);
    EXPECT_EQ(AudioMixBuilder::build(p.project, p.package).size(), 1u);
}

TEST(AudioMix, NeverPlaysTheCamerasOwnSoundButPlaysAVideoItems) {
    SoundPackage p;
    p.addAsset(AssetKind::camera, "camera.m4a", tone(5000, 4, 0.3));
    Uuid clip = p.addAsset(AssetKind::video, "clip.m4a", tone(2000, 4, 0.3));
    p.addItem(AssetKind::video, clip, 0, 3);
    Samples left = slice(p.mix(3), 0.5, 2.5);
    EXPECT_LT(levelAt(left, 5000), 0.001);
    EXPECT_NEAR(levelAt(left, 2000), 0.3 * sine, 0.01);
}

TEST(AudioMix, GoesSilentWhereAnItemsFileEndsWhileTheCurveGoesOn) {
    SoundPackage p;
    Uuid music = p.addAsset(AssetKind::audio, "music.m4a", tone(500, 2, 0.4));
    MediaItem& item = p.addItem(AssetKind::audio, music, 0, 4);
    item.fadeOut = 3; // from 1 s to 4 s
    Samples left = p.mix(4.5);
    EXPECT_NEAR(rms(slice(left, 0.2, 0.8)), 0.4 * sine, 0.01);
    EXPECT_NEAR(rms(slice(left, 1.45, 1.55)), 0.4 * sine * (4 - 1.5) / 3, 0.01) << "on the fade-out's ramp";
    EXPECT_NEAR(soundingLength(left), 2.0, 0.01);
    auto tracks = AudioMixBuilder::build(p.project, p.package);
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(tracks[0].spans.size(), 1u);
    EXPECT_NEAR(tracks[0].spans[0].outputDuration, 2, 1e-3);
    EXPECT_EQ(tracks[0].volume.back(), (VolumePoint{4, 0})) << "the curve reaches the item's end";
}

TEST(AudioMix, FadesRampLinearlyAtBothEndsOfAnItem) {
    SoundPackage p;
    Uuid music = p.addAsset(AssetKind::audio, "music.m4a", tone(700, 6, 0.5));
    MediaItem& item = p.addItem(AssetKind::audio, music, 1, 5);
    item.fadeIn = 1;
    item.fadeOut = 1;
    item.sourceOffset = 0.5;
    Samples left = p.mix(5.5);
    double full = 0.5 * sine;
    // A linear ramp over a tenth of its length has an RMS of √(0.1²/3) of full
    // at its silent end and √((1 − 0.9³)/0.3) at its loud end.
    EXPECT_LT(rms(slice(left, 0.5, 0.99)), 0.001);
    EXPECT_NEAR(rms(slice(left, 1.0, 1.1)) / full, std::sqrt(0.01 / 3), 0.01);
    EXPECT_NEAR(rms(slice(left, 1.9, 2.0)) / full, std::sqrt((1 - 0.729) / 0.3), 0.01);
    EXPECT_NEAR(rms(slice(left, 2.5, 3.5)) / full, 1, 0.01);
    EXPECT_NEAR(rms(slice(left, 4.0, 4.1)) / full, std::sqrt((1 - 0.729) / 0.3), 0.01);
    EXPECT_NEAR(rms(slice(left, 4.9, 5.0)) / full, std::sqrt(0.01 / 3), 0.01);
    EXPECT_LT(rms(slice(left, 5.01, 5.5)), 0.001);
}

TEST(AudioMix, DucksMusicUnderSpeechEvenWhenTheMicrophoneIsMuted) {
    SoundPackage p;
    p.project.clips[0].sourceEnd = 10;
    // "Speech" from 3 to 5 s over quiet room tone.
    p.addAsset(AssetKind::microphone, "mic.m4a",
               mixed(joined({silence(3), pinkNoise(2, 0.1), silence(5)}), pinkNoise(10, 0.0005, 48000, 3)));
    Uuid music = p.addAsset(AssetKind::audio, "music.m4a", tone(300, 10, 0.4));
    Uuid other = p.addAsset(AssetKind::audio, "other.m4a", tone(4000, 10, 0.2));
    p.addItem(AssetKind::audio, music, 0, 10);
    p.addItem(AssetKind::audio, other, 0, 10);
    p.project.audio.duckMusic = true;
    p.project.audio.duckLevel = 0.25;
    p.project.audio.micMuted = true;
    Samples left = p.mix(10);
    EXPECT_NEAR(levelAt(slice(left, 1, 2), 300), 0.4 * sine, 0.01);
    EXPECT_NEAR(levelAt(slice(left, 3.5, 4.5), 300), 0.1 * sine, 0.01) << "ducked to a quarter";
    EXPECT_NEAR(levelAt(slice(left, 3.5, 4.5), 4000), 0.05 * sine, 0.01) << "both overlapping items duck";
    EXPECT_NEAR(levelAt(slice(left, 6.5, 9), 300), 0.4 * sine, 0.01) << "back up 0.9 s after speech";
}

TEST(AudioMix, LeavesOutAFileItCantReadAndSaysSoOnce) {
    SoundPackage p;
    p.addAsset(AssetKind::systemAudio, "system.m4a", tone(3000, 4, 0.3));
    Asset mic;
    mic.id = Uuid::random();
    mic.kind = AssetKind::microphone;
    mic.relativePath = "mic.m4a";
    p.project.assets.push_back(mic);
    writeText(ProjectPackage::assetsURL(p.package) / "mic.m4a", "garbage, not sound");
    Samples left = slice(p.mix(2), 0.5, 1.5);
    EXPECT_NEAR(levelAt(left, 3000), 0.3 * sine, 0.01);
    ASSERT_EQ(p.log.size(), 1u);
    EXPECT_NE(p.log[0].find("mic.m4a"), std::string::npos);
}

TEST(AudioMix, MixesWhatATruncatedFileHas) {
    SoundPackage p;
    auto file = ProjectPackage::assetsURL(p.package) / "system.wav";
    writeWav(file, tone(3000, 4, 0.3));
    std::filesystem::resize_file(file, 44 + 48000 * 2); // one second of 16-bit mono
    Asset system;
    system.id = Uuid::random();
    system.kind = AssetKind::systemAudio;
    system.relativePath = "system.wav";
    p.project.assets.push_back(system);
    Samples left = p.mix(4);
    EXPECT_NEAR(levelAt(slice(left, 0.2, 0.8), 3000), 0.3 * sine, 0.01);
    EXPECT_NEAR(soundingLength(left), 1.0, 0.01);
}

TEST(AudioMix, PlaysTheCleanedMicrophoneFileWhenTheSwitchesAskForOneAndItExists) {
    SoundPackage p;
    p.addAsset(AssetKind::microphone, "mic.m4a", tone(1000, 4, 0.3));
    p.project.audio.micLeveling = true;
    EXPECT_NEAR(levelAt(slice(p.mix(2), 0.5, 1.5), 1000), 0.3 * sine, 0.01) << "no cleaned file yet";
    writeM4a(ProjectPackage::assetsURL(p.package) / "mic.clean-l.m4a", tone(1500, 4, 0.3));
    Samples left = slice(p.mix(2), 0.5, 1.5);
    EXPECT_LT(levelAt(left, 1000), 0.001);
    EXPECT_NEAR(levelAt(left, 1500), 0.3 * sine, 0.01);
}

TEST(AudioMix, RendersTheSameSoundFromAnyStartAsWhenReadingThrough) {
    SoundPackage p;
    p.project.clips = {{Uuid::random(), p.project.assets[0].id, 0, 2, 1},
                       {Uuid::random(), p.project.assets[0].id, 2, 4, 1.5}};
    p.addAsset(AssetKind::microphone, "mic.m4a", joined({tone(440, 2, 0.3), tone(660, 2, 0.3)}));
    // Tones, not noise: AAC codes noisy bands as noise its decoder makes up,
    // and that differs from one decoding to the next.
    Uuid music = p.addAsset(AssetKind::audio, "music.m4a", mixed(tone(220, 4, 0.1), tone(1234, 4, 0.1)));
    p.addItem(AssetKind::audio, music, 0.5, 3.5).fadeIn = 0.7;
    AudioTimeline through(AudioMixBuilder::build(p.project, p.package));
    Samples all(std::size_t(48000 * 4 * 2));
    for (int frame = 0; frame < 48000 * 4; frame += 1000) through.render(frame, all.data() + frame * 2, 1000);

    AudioTimeline seeking(AudioMixBuilder::build(p.project, p.package));
    for (double at : {2.7, 0.777, 1.999, 3.0}) {
        auto frame = AudioTimeline::frameAt(at);
        Samples block(4800 * 2);
        seeking.render(frame, block.data(), 4800);
        double worst = 0;
        for (std::size_t i = 0; i < block.size(); ++i)
            worst = std::max(worst, double(std::fabs(block[i] - all[std::size_t(frame) * 2 + i])));
        EXPECT_LT(worst, 0.01) << "from " << at;
    }
}

TEST(AudioMix, BendsALoudSumUnderFullScaleInsteadOfClipping) {
    SoundPackage p;
    p.addAsset(AssetKind::microphone, "mic.m4a", tone(200, 4, 0.8));
    p.addAsset(AssetKind::systemAudio, "system.m4a", tone(200, 4, 0.8));
    Samples left = slice(p.mix(2), 0.5, 1.5);
    float peak = 0;
    for (float x : left) peak = std::max(peak, std::fabs(x));
    EXPECT_LT(peak, 1.0f);
    EXPECT_GT(peak, 0.95f);
}
