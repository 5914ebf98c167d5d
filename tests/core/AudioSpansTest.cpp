#include "audio/AudioSpans.h"

#include "TimelineFixtures.h"

#include <gtest/gtest.h>

#include <limits>

using namespace recorder;
using recorder::test::mediaItem;
using recorder::test::projectWithClips;

TEST(AudioSpansOfRecording, PlayEachClipsStretchOfTheFileAtItsSpeed) {
    Project project = projectWithClips({{0, 4}, {10, 14}}, 1);
    project.clips[1].speed = 2;
    auto spans = AudioSpans::ofRecording(project, 0, 60);
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_EQ(spans[0], (TrackSpan{0, 4, 1, 4}));
    EXPECT_EQ(spans[1], (TrackSpan{10, 4, 5, 2}));
}

TEST(AudioSpansOfRecording, ShiftAFileThatStartedLaterAndCutWhatItDoesntCover) {
    // The file starts 1.5 s into the recording and lasts 5 s (to 6.5).
    Project project = projectWithClips({{0, 4}, {6, 10}});
    auto spans = AudioSpans::ofRecording(project, 1.5, 5);
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_EQ(spans[0], (TrackSpan{0, 2.5, 1.5, 2.5})) << "silent until the file begins";
    EXPECT_EQ(spans[1], (TrackSpan{4.5, 0.5, 4, 0.5})) << "ends with the file";
}

TEST(AudioSpansOfRecording, KeepLaterClipsInPlaceWhenTheFileMissesOne) {
    Project project = projectWithClips({{20, 30}, {0, 2}}, 0, 2);
    auto spans = AudioSpans::ofRecording(project, 0, 5);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(spans[0], (TrackSpan{0, 2, 5, 1})) << "the first clip takes its 5 s even with nothing to play";
}

TEST(AudioSpansOfRecording, ReadsAFileStartedEarlierFromItsMiddle) {
    Project project = projectWithClips({{0, 3}});
    auto spans = AudioSpans::ofRecording(project, -0.5, 10);
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_EQ(spans[0], (TrackSpan{0.5, 3, 0, 3}));
}

TEST(AudioSpansOfMediaItem, LastsAsLongAsTheItemOrTheFileWhicheverEndsFirst) {
    MediaItem item = mediaItem(2, 6, AssetKind::audio);
    item.sourceOffset = 1;
    EXPECT_EQ(*AudioSpans::ofMediaItem(item, 10), (TrackSpan{1, 4, 2, 4}));
    EXPECT_EQ(*AudioSpans::ofMediaItem(item, 3), (TrackSpan{1, 2, 2, 2})) << "the file runs out after 2 s";
    item.speed = 2;
    EXPECT_EQ(*AudioSpans::ofMediaItem(item, 20), (TrackSpan{1, 8, 2, 4}));
    EXPECT_EQ(*AudioSpans::ofMediaItem(item, std::numeric_limits<double>::infinity()), (TrackSpan{1, 8, 2, 4}));
}

TEST(AudioSpansOfMediaItem, HaveNothingWhenTheOffsetIsPastTheFileOrTheItemIsEmpty) {
    MediaItem item = mediaItem(2, 6, AssetKind::audio);
    item.sourceOffset = 5;
    EXPECT_FALSE(AudioSpans::ofMediaItem(item, 5));
    item.sourceOffset = 0;
    item.end = 2;
    EXPECT_FALSE(AudioSpans::ofMediaItem(item, 5));
}
