#include "TimelineFixtures.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace recorder;
using recorder::test::cameraKeyframe;
using recorder::test::mediaItem;
using recorder::test::projectWithClips;
using recorder::test::zoomSegment;

namespace {
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
} // namespace

TEST(ProjectSplitClip, CutsAtTheSourceTimeAndGivesTheSecondHalfANewID) {
    Project p = projectWithClips({{10, 30}}, 2, 2);
    Uuid first = p.clips[0].id;
    p.splitClip(5);
    ASSERT_EQ(p.clips.size(), 2u);
    EXPECT_EQ(p.clips[0].id, first);
    EXPECT_NE(p.clips[1].id, first);
    EXPECT_DOUBLE_EQ(p.clips[0].sourceEnd, 16);
    EXPECT_DOUBLE_EQ(p.clips[1].sourceStart, 16);
    EXPECT_DOUBLE_EQ(p.recordingEnd(), 12) << "a split moves no output time";
    for (double t : {2.04, 11.96, notANumber}) p.splitClip(t);
    EXPECT_EQ(p.clips.size(), 2u) << "refused within 0.05 s of a clip's ends";
}

TEST(ProjectDeleteRange, StartingTooCloseToAClipsStartWorksOnWholeClipsOnly) {
    Project p = projectWithClips({{0, 10}, {20, 30}, {40, 50}});
    p.deleteRange(0.04, 20);
    ASSERT_EQ(p.clips.size(), 2u);
    EXPECT_DOUBLE_EQ(p.clips[0].sourceEnd, 10) << "not split, so kept whole";
    EXPECT_DOUBLE_EQ(p.clips[1].sourceStart, 40);
}

TEST(ProjectDeleteRange, EndsNearSeamsCutToTheSeamsWhileEverythingElseMovesByExactlyTheCut) {
    Project p = projectWithClips({{0, 10}, {10, 20}, {20, 30}});
    p.zooms = {zoomSegment(25, 27)};
    p.media = {mediaItem(24, 26)};
    p.deleteRange(9.97, 20.03);
    ASSERT_EQ(p.clips.size(), 2u);
    EXPECT_DOUBLE_EQ(p.recordingEnd(), 20);
    EXPECT_DOUBLE_EQ(p.zooms[0].start, 25 - 10.06);
    EXPECT_DOUBLE_EQ(p.media[0].start, 24 - 10.06);
}

TEST(ProjectDeleteRange, AnEmptyBackwardOrNonFiniteRangeChangesNothing) {
    Project p = projectWithClips({{0, 10}});
    p.zooms = {zoomSegment(2, 4)};
    Project before = p;
    p.deleteRange(3, 3);
    p.deleteRange(5, 3);
    p.deleteRange(notANumber, 3);
    p.deleteRange(2, std::numeric_limits<double>::infinity());
    EXPECT_EQ(p, before);
}

TEST(ProjectDeleteRange, DeletingTheWholeRecordingLeavesNoClipsAndShortensTheLeadingGap) {
    Project p = projectWithClips({{0, 10}}, 3);
    p.deleteRange(1, 14);
    EXPECT_TRUE(p.clips.empty());
    EXPECT_DOUBLE_EQ(p.screenStart, 1);
    EXPECT_DOUBLE_EQ(p.recordingEnd(), p.screenStart);
}

TEST(ProjectDeleteRange, KeepsZoomsBeforeMovesZoomsAfterAndRemovesZoomsThatTouchTheCut) {
    Project p = projectWithClips({{0, 30}});
    ZoomSegment after = zoomSegment(12, 14);
    after.keyframes = {{Uuid::random(), 13, Rect::full()}};
    p.zooms = {zoomSegment(3, 5), zoomSegment(4, 6), after};
    p.camera.keyframes = {cameraKeyframe(1, CameraLayout::fullScreen), cameraKeyframe(5, CameraLayout::sideBySide),
                          cameraKeyframe(12, CameraLayout::hidden)};
    p.deleteRange(5, 12);
    ASSERT_EQ(p.zooms.size(), 2u);
    EXPECT_DOUBLE_EQ(p.zooms[0].end, 5);
    EXPECT_DOUBLE_EQ(p.zooms[1].start, 5);
    EXPECT_DOUBLE_EQ(p.zooms[1].keyframes[0].time, 6);
    ASSERT_EQ(p.camera.keyframes.size(), 2u) << "the keyframe inside the cut goes";
    EXPECT_DOUBLE_EQ(p.camera.keyframes[1].time, 5);
}

TEST(ProjectDeleteRange, TrimsOrRemovesMediaByWhereItMeetsTheCutButNeverItsFile) {
    Project p = projectWithClips({{0, 30}});
    p.media = {mediaItem(1, 4),     // before: kept
               mediaItem(11, 13),   // after: moved back by the cut
               mediaItem(6, 12.5),  // starts inside: starts at the cut
               mediaItem(6, 11.05), // starts inside, 0.05 left: removed
               mediaItem(3, 14),    // spans: its end moves
               mediaItem(2, 7),     // ends inside: ends at the cut
               mediaItem(4.95, 8)}; // ends inside, 0.05 left: removed
    p.media[2].sourceOffset = 1.5;
    p.deleteRange(5, 11);
    ASSERT_EQ(p.media.size(), 5u);
    EXPECT_EQ(p.media[0].end, 4);
    EXPECT_EQ(p.media[1].start, 5);
    EXPECT_EQ(p.media[2].start, 5);
    EXPECT_DOUBLE_EQ(p.media[2].end, 6.5);
    EXPECT_EQ(p.media[2].sourceOffset, 1.5);
    EXPECT_EQ(p.media[3].end, 8);
    EXPECT_EQ(p.media[4].end, 5);
}

TEST(ProjectTrim, KeepsOnlyTheRange) {
    Project p = projectWithClips({{0, 30}});
    p.zooms = {zoomSegment(12, 14)};
    p.trim(10, 20);
    ASSERT_EQ(p.clips.size(), 1u);
    EXPECT_EQ(p.clips[0].sourceStart, 10);
    EXPECT_EQ(p.clips[0].sourceEnd, 20);
    EXPECT_EQ(p.zooms[0].start, 2);
}

TEST(ProjectRejoinClip, UndoesASplitButNotACutOrASpeedChange) {
    Project p = projectWithClips({{0, 10}});
    p.splitClip(4);
    p.rejoinClip(p.clips[0].id);
    ASSERT_EQ(p.clips.size(), 1u);
    EXPECT_EQ(p.clips[0].sourceEnd, 10);
    Project cut = projectWithClips({{0, 10}, {10.1, 20}, {20, 30}});
    cut.clips[2].speed = 2;
    for (int i = 0; i < 3; ++i) cut.rejoinClip(cut.clips[i].id);
    EXPECT_EQ(cut.clips.size(), 3u);
}

TEST(ProjectSpeed, ClipSpeedIsClampedAndMovesNothingElse) {
    Project p = projectWithClips({{0, 10}});
    p.zooms = {zoomSegment(6, 8)};
    p.setClipSpeed(p.clips[0].id, 100);
    EXPECT_EQ(p.clips[0].speed, 16);
    p.setClipSpeed(p.clips[0].id, 0);
    EXPECT_EQ(p.clips[0].speed, 0.1);
    p.setClipSpeed(p.clips[0].id, notANumber);
    EXPECT_EQ(p.clips[0].speed, 0.1);
    EXPECT_EQ(p.zooms[0].start, 6);
}

TEST(ProjectSpeed, MediaSpeedKeepsTheSameStretchOfTheFileButNeverUnderTwoTenths) {
    Project p = projectWithClips({});
    p.media = {mediaItem(1, 2, AssetKind::video), mediaItem(0, 4, AssetKind::audio), mediaItem(0, 4)};
    p.setMediaSpeed(p.media[0].id, 16);
    EXPECT_DOUBLE_EQ(p.media[0].end, 1.2);
    EXPECT_EQ(p.media[0].speed, 16);
    p.setMediaSpeed(p.media[1].id, 2);
    EXPECT_EQ(p.media[1].end, 2);
    p.setMediaSpeed(p.media[2].id, 2);
    EXPECT_EQ(p.media[2].speed, 1) << "an image has no speed";
}

TEST(ProjectShiftRecording, CannotGoBeforeZeroAndLeavesIntrosWhereTheyAre) {
    Project p = projectWithClips({{0, 10}}, 2);
    p.zooms = {zoomSegment(3, 5)};
    p.camera.keyframes = {cameraKeyframe(4, CameraLayout::fullScreen)};
    p.media = {mediaItem(0, 2), mediaItem(2, 4)};
    p.shiftRecording(-5);
    EXPECT_EQ(p.screenStart, 0);
    EXPECT_EQ(p.zooms[0].start, 1);
    EXPECT_EQ(p.camera.keyframes[0].time, 2);
    EXPECT_EQ(p.media[0].start, 0) << "the intro stays";
    EXPECT_EQ(p.media[1].start, 0);
    Project before = p;
    p.shiftRecording(5e-10);
    p.shiftRecording(notANumber);
    EXPECT_EQ(p, before);
}

TEST(ProjectLeadingGap, InsertMovesEverythingAndCloseTakesOutTheSmallestLead) {
    Project p = projectWithClips({{0, 10}}, 1);
    p.zooms = {zoomSegment(3, 5)};
    p.media = {mediaItem(0.5, 2)};
    p.insertLeadingGap(2);
    p.insertLeadingGap(-1);
    EXPECT_EQ(p.screenStart, 3);
    EXPECT_EQ(p.zooms[0].start, 5);
    EXPECT_EQ(p.media[0].start, 2.5);
    p.closeLeadingGap();
    EXPECT_EQ(p.screenStart, 0.5);
    EXPECT_EQ(p.media[0].start, 0);
    EXPECT_EQ(p.zooms[0].start, 2.5);
}

TEST(ProjectMediaEdits, IntrosOutrosAndAddedItemsTakeTheirPlacesInTimeAndInFront) {
    Project p = projectWithClips({{0, 10}});
    auto hidden = mediaItem(9, 12);
    hidden.hidden = true;
    hidden.zIndex = 7;
    p.media = {hidden};
    p.addIntro(mediaItem(4, 4.2));
    EXPECT_EQ(p.screenStart, 0.5) << "at least half a second";
    EXPECT_EQ(p.media[1].end, 0.5);
    EXPECT_EQ(p.media[1].zIndex, 8);
    p.addOutro(mediaItem(1, 1.2));
    EXPECT_EQ(p.media[2].start, 12.5) << "after every item, hidden or not";
    EXPECT_EQ(p.media[2].end, 13);
}

TEST(ProjectMediaEdits, UpdateReplacesByIDAndRemoveTakesEveryItemWithTheID) {
    Project p = projectWithClips({});
    auto item = mediaItem(0, 1);
    p.media = {item, mediaItem(0, 1), item};
    item.name = "changed";
    p.updateMedia(item);
    p.updateMedia(mediaItem(5, 6));
    EXPECT_EQ(p.media[0].name, "changed");
    p.removeMedia(item.id);
    EXPECT_EQ(p.media.size(), 1u);
}

TEST(ProjectZoomEdits, AddUpdateAndReplaceSortByStartButRemoveDoesNot) {
    Project p = projectWithClips({{0, 30}});
    p.zooms = {zoomSegment(9, 10), zoomSegment(1, 2), zoomSegment(5, 6)};
    p.zooms[1].isAuto = true;
    p.removeZoom(p.zooms[2].id);
    EXPECT_EQ(p.zooms[0].start, 9);
    p.addZoom(zoomSegment(3, 4));
    EXPECT_EQ(p.zooms[0].start, 1);
    ZoomSegment fresh = zoomSegment(0, 1);
    fresh.isAuto = true;
    p.replaceAutoZooms({fresh});
    ASSERT_EQ(p.zooms.size(), 3u);
    EXPECT_EQ(p.zooms[0].id, fresh.id);
    ZoomSegment moved = p.zooms[0];
    moved.start = 20;
    p.updateZoom(moved);
    EXPECT_EQ(p.zooms[2].id, moved.id);
}

TEST(ProjectZoomEdits, SortingSurvivesNaNStarts) {
    Project p = projectWithClips({{0, 30}});
    for (int i = 0; i < 40; ++i) p.zooms.push_back(zoomSegment(i % 3 ? double(40 - i) : notANumber, 50));
    p.addZoom(zoomSegment(0.5, 1));
    EXPECT_EQ(p.zooms[0].start, 0.5);
    EXPECT_TRUE(std::isnan(p.zooms.back().start));
}

TEST(ProjectZoomEdits, ZoomScaleMakesASquareAboutTheSameCentreMagnifyingBetween1_05And8) {
    Project p = projectWithClips({{0, 30}});
    p.zooms = {zoomSegment(1, 3, {0.2, 0.3, 0.4, 0.4})};
    Uuid id = p.zooms[0].id;
    p.setZoomScale(id, 2);
    EXPECT_DOUBLE_EQ(p.zooms[0].rect.x, 0.15);
    EXPECT_DOUBLE_EQ(p.zooms[0].rect.y, 0.25);
    EXPECT_EQ(p.zooms[0].rect.height, 0.5);
    p.setZoomScale(id, 1);
    EXPECT_EQ(p.zooms[0].rect.width, 1 / 1.05);
    p.setZoomScale(id, 8);
    EXPECT_EQ(p.zooms[0].rect.width, 0.125);
    p.zooms[0].rect = {0.9, 0, 0.1, 0.1};
    p.setZoomScale(id, 2);
    EXPECT_EQ(p.zooms[0].rect.x, 0.5) << "clamped inside the frame";
    p.setZoomScale(id, notANumber);
    EXPECT_EQ(p.zooms[0].rect.width, 0.5);
}

TEST(ProjectEditsProperty, DeleteRangeFollowedByAnyTimelineEditNeverLeavesOverlappingOrUnsortedZooms) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int round = 0; round < 300; ++round) {
        Project p = projectWithClips({{0, 20}, {25, 60}}, unit(random) * 3);
        for (double t = 0.5; t < 50; t += 1 + unit(random) * 4) {
            double length = 0.5 + unit(random) * 3;
            p.zooms.push_back(zoomSegment(t, t + length));
            t += length;
        }
        for (int step = 0; step < 12; ++step) {
            double a = unit(random) * 60 - 2, b = a + unit(random) * 15;
            switch (random() % 7) {
            case 0: p.deleteRange(a, b); break;
            case 1: p.splitClip(a); break;
            case 2: p.trim(unit(random) * 5, 30 + unit(random) * 30); break;
            case 3: p.shiftRecording(unit(random) * 8 - 4); break;
            case 4: p.insertLeadingGap(unit(random) * 3); break;
            case 5: p.closeLeadingGap(); break;
            default:
                if (!p.clips.empty()) p.setClipSpeed(p.clips[random() % p.clips.size()].id, unit(random) * 4);
            }
            p.deleteRange(a, b);
            for (std::size_t i = 1; i < p.zooms.size(); ++i)
                ASSERT_GE(p.zooms[i].start, p.zooms[i - 1].end) << "round " << round << " step " << step;
        }
    }
}
