#include "TimelineFixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace recorder;
using recorder::test::cameraKeyframe;
using recorder::test::mediaItem;
using recorder::test::projectWithClips;
using recorder::test::zoomSegment;

namespace {
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
} // namespace

TEST(ProjectClocks, OutputTimeRunsFromScreenStartAtEachClipsSpeedAndTheEarlierClipWins) {
    Project p = projectWithClips({{0, 10}, {20, 30}, {25, 40}}, 2);
    p.clips[1].speed = 2;
    EXPECT_DOUBLE_EQ(*p.outputTime(5), 7);
    EXPECT_DOUBLE_EQ(*p.outputTime(10), 12) << "both ends are inclusive";
    EXPECT_DOUBLE_EQ(*p.outputTime(24), 14);
    EXPECT_DOUBLE_EQ(*p.outputTime(26), 15) << "source 26 plays in two clips";
    EXPECT_FALSE(p.outputTime(15)) << "cut out";
    EXPECT_FALSE(p.outputTime(notANumber));
    EXPECT_FALSE(projectWithClips({}).outputTime(0));
}

TEST(ProjectClocks, SourceTimeGivesSeamsToTheLaterClipAndTheVeryEndToTheLast) {
    Project p = projectWithClips({{3, 10}, {20, 30}}, 2);
    auto seam = p.sourceTime(9);
    ASSERT_TRUE(seam);
    EXPECT_EQ(seam->clip.id, p.clips[1].id);
    EXPECT_DOUBLE_EQ(seam->time, 20);
    auto end = p.sourceTime(p.recordingEnd());
    ASSERT_TRUE(end);
    EXPECT_DOUBLE_EQ(end->time, 30);
    EXPECT_FALSE(p.sourceTime(p.recordingEnd() + 1e-8));
    EXPECT_FALSE(p.sourceTime(1.999)) << "the leading gap";
    EXPECT_DOUBLE_EQ(p.sourceTime(2 - 5e-10)->time, 3);
    EXPECT_FALSE(projectWithClips({}).sourceTime(0));
}

TEST(ProjectClocks, NonFiniteTimesAnswerNothingAndNeverHang) {
    Project p = projectWithClips({{0, 10}});
    for (double t : {notANumber, infinity, -infinity}) {
        EXPECT_FALSE(p.sourceTime(t));
        EXPECT_FALSE(p.outputTime(t));
    }
    p.clips[0].sourceEnd = infinity;
    EXPECT_TRUE(p.sourceTime(5));
}

TEST(ProjectClocks, SourceTimeOfOutputTimeGivesBackEverySourceTimeInsideAClip) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> length(0.2, 20), speed(0.1, 16), gap(0, 5);
    for (int round = 0; round < 200; ++round) {
        Project p = projectWithClips({}, gap(random));
        double source = 0;
        for (int i = 0; i < 1 + round % 5; ++i) {
            double from = source + gap(random);
            source = from + length(random);
            p.clips.push_back({Uuid::random(), p.assets[0].id, from, source, speed(random)});
        }
        for (const Clip& clip : p.clips) {
            std::uniform_real_distribution<double> inside(clip.sourceStart, clip.sourceEnd);
            for (int i = 0; i < 20; ++i) {
                double s = inside(random);
                auto back = p.sourceTime(p.outputTime(s).value());
                ASSERT_TRUE(back);
                EXPECT_NEAR(back->time, s, 1e-9 * std::max(1.0, s));
            }
        }
    }
}

TEST(ProjectClocks, ClipStartIsTheOutputStartOfAKnownClip) {
    Project p = projectWithClips({{0, 10}, {20, 24}}, 3, 2);
    EXPECT_DOUBLE_EQ(*p.clipStart(p.clips[1].id), 8);
    EXPECT_FALSE(p.clipStart(Uuid::random()));
}

TEST(ProjectActiveZoom, IsHalfOpenAndTheEarlierInTheArrayWins) {
    Project p = projectWithClips({{0, 30}});
    p.zooms = {zoomSegment(1, 3), zoomSegment(3, 5), zoomSegment(4, 8), zoomSegment(2, 9)};
    EXPECT_EQ(p.activeZoom(3), &p.zooms[1]) << "touching segments: the later has the instant";
    EXPECT_EQ(p.activeZoom(4.5), &p.zooms[1]);
    EXPECT_EQ(p.activeZoom(5), &p.zooms[2]);
    EXPECT_EQ(p.activeZoom(9), nullptr);
    EXPECT_EQ(p.activeZoom(notANumber), nullptr);
    p.tracks.zooms.hidden = true;
    EXPECT_EQ(p.activeZoom(2), nullptr);
}

TEST(ProjectCameraLayout, TheLastKeyframeAtOrBeforeTheTimeWinsInTimeOrder) {
    Project p = projectWithClips({{0, 30}});
    p.camera.layout = CameraLayout::bubbleTopLeft;
    p.camera.keyframes = {cameraKeyframe(5, CameraLayout::fullScreen), cameraKeyframe(2, CameraLayout::sideBySide),
                          cameraKeyframe(notANumber, CameraLayout::hidden)};
    EXPECT_EQ(p.cameraLayout(1), CameraLayout::bubbleTopLeft);
    EXPECT_EQ(p.cameraLayout(2), CameraLayout::sideBySide);
    EXPECT_EQ(p.cameraLayout(9), CameraLayout::fullScreen);
    p.tracks.camera.hidden = true;
    EXPECT_EQ(p.cameraLayout(9), CameraLayout::hidden);
}

TEST(ProjectAssets, HasCameraWithACameraAssetOrAShownAvatar) {
    Project p = projectWithClips({});
    p.camera.showAvatar = true;
    EXPECT_FALSE(p.hasCamera()) << "an avatar needs its picture";
    p.camera.avatarAssetID = Uuid::random();
    EXPECT_TRUE(p.hasCamera());
    p.camera.showAvatar = false;
    Asset camera = p.assets[0];
    camera.kind = AssetKind::camera;
    p.assets.push_back(camera);
    EXPECT_TRUE(p.hasCamera());
    EXPECT_EQ(p.asset(AssetKind::camera), &p.assets[1]);
}

TEST(ProjectMedia, VisibleMediaIsShowingPicturesInZOrderAndAudibleMediaUnmutedSound) {
    Project p = projectWithClips({});
    auto front = mediaItem(0, 5), back = mediaItem(0, 5, AssetKind::video), hidden = mediaItem(0, 5);
    auto audio = mediaItem(0, 5, AssetKind::audio), muted = mediaItem(0, 5, AssetKind::audio);
    front.zIndex = 3;
    back.zIndex = 1;
    hidden.hidden = true;
    muted.muted = true;
    p.media = {front, back, hidden, audio, muted, mediaItem(0, 2)};
    auto visible = p.visibleMedia(2);
    ASSERT_EQ(visible.size(), 2u);
    EXPECT_EQ(visible[0]->id, back.id);
    EXPECT_EQ(visible[1]->id, front.id);
    auto audible = p.audibleMedia();
    ASSERT_EQ(audible.size(), 2u);
    EXPECT_EQ(audible[0]->id, back.id);
    EXPECT_EQ(audible[1]->id, audio.id);
}
