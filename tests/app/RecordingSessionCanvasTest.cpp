#include "recording/RecordingCanvas.h"

#include <gtest/gtest.h>

using namespace recorder;

TEST(RecordingCanvas, FourByThreeKeepsItsAspectAtFullWidth) {
    EXPECT_EQ(RecordingCanvas::forPixelSize({1024, 768}, 60), (CanvasSettings{1920, 1440, 60}));
    EXPECT_EQ(RecordingCanvas::forPixelSize({400, 300}, 30), (CanvasSettings{1920, 1440, 30}));
}

TEST(RecordingCanvas, SixteenByTenIsTooFarFromSixteenByNineToBeTreatedAsIt) {
    EXPECT_EQ(RecordingCanvas::forPixelSize({2880, 1800}, 60), (CanvasSettings{1920, 1200, 60}));
}

TEST(RecordingCanvas, ShapesWithinPointOneFiveOfSixteenByNineStayFullHD) {
    EXPECT_EQ(RecordingCanvas::forPixelSize({1920, 1080}, 60), (CanvasSettings{1920, 1080, 60}));
    // 1.92 and 1.64 lie within 0.15 of 1.778; 1.93 and 1.62 don't.
    EXPECT_EQ(RecordingCanvas::forPixelSize({1920, 1000}, 30), (CanvasSettings{1920, 1080, 30}));
    EXPECT_EQ(RecordingCanvas::forPixelSize({1640, 1000}, 30), (CanvasSettings{1920, 1080, 30}));
    EXPECT_EQ(RecordingCanvas::forPixelSize({1930, 1000}, 30), (CanvasSettings{1920, 994, 30}));
    EXPECT_EQ(RecordingCanvas::forPixelSize({1620, 1000}, 30), (CanvasSettings{1920, 1184, 30}));
}

TEST(RecordingCanvas, TheHeightIsAlwaysEven) {
    // 1920 / 2.35 = 817.02: 817 has its lowest bit cleared.
    EXPECT_EQ(RecordingCanvas::forPixelSize({2350, 1000}, 60).height, 816);
}

TEST(RecordingCanvas, PortraitIsTenEightyByNineteenTwentyWhateverItsAspect) {
    EXPECT_EQ(RecordingCanvas::forPixelSize({1170, 2532}, 60), (CanvasSettings{1080, 1920, 60}));
    EXPECT_EQ(RecordingCanvas::forPixelSize({999, 1000}, 30), (CanvasSettings{1080, 1920, 30}));
}

TEST(RecordingCanvas, NoHeightCountsAsSquare) {
    EXPECT_EQ(RecordingCanvas::forPixelSize({0, 0}, 60), (CanvasSettings{1920, 1920, 60}));
}
