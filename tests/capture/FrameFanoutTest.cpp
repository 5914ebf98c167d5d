#include "camera/FrameFanout.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

class CountingPreview : public FramePreview {
public:
    void show(const MediaSample&) override { ++shown; }
    bool needsFlush() const override { return broken; }
    void flush() override { ++flushed, broken = false; }
    int shown = 0;
    int flushed = 0;
    bool broken = false;
};

MediaSample picture() { return MediaSample::video(MediaSample::makeVideoFrame(AV_PIX_FMT_BGRA, 16, 16), 0); }

TEST(FrameFanout, EveryPreviewSeesEachFrameOnceHoweverOftenItWasAdded) {
    FrameFanout fanout;
    auto a = std::make_shared<CountingPreview>();
    auto b = std::make_shared<CountingPreview>();
    fanout.add(a);
    fanout.add(b);
    fanout.add(a);
    fanout.deliver(picture());
    EXPECT_EQ(a->shown, 1);
    EXPECT_EQ(b->shown, 1);
    EXPECT_EQ(fanout.count(), 2u);
}

TEST(FrameFanout, APreviewThatWentAwayIsSkippedAndForgottenAtTheNextAdd) {
    FrameFanout fanout;
    auto kept = std::make_shared<CountingPreview>();
    auto gone = std::make_shared<CountingPreview>();
    fanout.add(kept);
    fanout.add(gone);
    gone.reset();
    fanout.deliver(picture());
    EXPECT_EQ(kept->shown, 1);
    EXPECT_EQ(fanout.count(), 2u);
    fanout.add(kept);
    EXPECT_EQ(fanout.count(), 1u);
}

TEST(FrameFanout, ARemovedPreviewSeesNothingAndABrokenOneIsFlushedFirst) {
    FrameFanout fanout;
    auto removed = std::make_shared<CountingPreview>();
    auto broken = std::make_shared<CountingPreview>();
    broken->broken = true;
    fanout.add(removed);
    fanout.add(broken);
    fanout.remove(removed);
    fanout.deliver(picture());
    EXPECT_EQ(removed->shown, 0);
    EXPECT_EQ(broken->flushed, 1);
    EXPECT_EQ(broken->shown, 1);
}

} // namespace
} // namespace recorder
