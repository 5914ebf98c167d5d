// The whole road for the cursor and blur regions: a package on disk with a
// real screen movie and event log, drawn by the real recorder-cli.
#include "RenderFixtures.h"
#include "support/CliRunner.h"
#include "support/TempDir.h"
#include "support/TestPackage.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace recorder;
using namespace recorder::test;

namespace {

void writeEvents(TestPackage& package, const EventLog& log) {
    Asset events;
    events.id = Uuid::random();
    events.kind = AssetKind::events;
    events.relativePath = "events.json";
    package.project().assets.push_back(events);
    std::ofstream(ProjectPackage::assetsURL(package.path()) / "events.json") << log.encoded();
}

MediaItem pixelBlur(Rect frame, double start, double end) {
    MediaItem item;
    item.id = Uuid::random();
    item.assetID = Uuid::random();
    item.kind = AssetKind::blur;
    item.start = start;
    item.end = end;
    item.frame = frame;
    return item;
}

// The largest step between neighbouring pixels of a row stretch: bars
// have steps of a hundred levels, a blurred picture a few.
int largestStep(const QImage& image, int y, int x0, int x1) {
    int largest = 0;
    for (int x = x0; x + 1 < x1; ++x) {
        QColor a = image.pixelColor(x, y), b = image.pixelColor(x + 1, y);
        largest = std::max({largest, std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                            std::abs(a.blue() - b.blue())});
    }
    return largest;
}

} // namespace

TEST(CursorRenderFrame, DrawsTheCursorARippleAndABlurRegionFromAPackage) {
    TempDir dir;
    TestPackage package(dir.path(), {1280, 720, 30});
    package.add(AssetKind::screen, "screen.mov", "-f lavfi -i testsrc=s=1280x720:r=30:d=2", 2);
    package.clipOver(package.project().assets.front(), 0, 2);
    Project& project = package.project();
    project.style.padding = 0;
    project.style.cornerRadius = 0;
    project.style.shadowOpacity = 0;
    project.cursor.style = CursorStyle::dot;
    project.cursor.tint = RGBAColor{1, 0, 0, 1};
    project.cursor.clickHighlightColor = {0, 1, 0, 1};
    project.media.push_back(pixelBlur({0.5, 0.7, 0.4, 0.25}, 0, 1.5));
    EventLog log;
    log.samples = {{0, {0.25, 0.5}}, {2, {0.25, 0.5}}};
    log.clicks = {{1, {0.75, 0.5}, ClickEvent::Button::left, true}, {1.05, {0.75, 0.5}, ClickEvent::Button::left, false}};
    writeEvents(package, log);
    package.save();

    auto render = [&](double time) {
        auto out = dir / ("frame-" + std::to_string(time) + ".png");
        CliRun run = runCli("render-frame '" + package.path().string() + "' --time " + std::to_string(time) +
                                " --out '" + out.string() + "'",
                            dir);
        EXPECT_EQ(run.status, 0) << run.err;
        return QImage(QString::fromStdString(out.string())).convertToFormat(QImage::Format_ARGB32);
    };
    QImage during = render(1.1), after = render(1.6);
    keepForLooking(during, "cli-cursor-ripple-blur");
    ASSERT_EQ(during.size(), QSize(1280, 720));

    QColor dot = during.pixelColor(320, 360);
    EXPECT_GT(dot.red(), 200) << describe(dot);
    EXPECT_LT(dot.green(), 40) << describe(dot);
    EXPECT_EQ(after.pixelColor(320, 360), dot) << "the resting cursor stays";

    // The ring's strongest shade lies a thickness inside its radius.
    double h = 1280.0 / 1920 * 3 * 22, radius = h * (0.1 / 0.45 * 2.2 + 0.6);
    int peak = int(960 + radius - 0.18 * h);
    QColor ring = during.pixelColor(peak, 360);
    EXPECT_GT(ring.green(), 160) << describe(ring);
    EXPECT_GT(ring.green() - ring.red(), 80) << describe(ring);
    EXPECT_NE(after.pixelColor(peak, 360), ring) << "gone after 0.45 s";

    int y = 660; // across the bars, below the gradient strip
    EXPECT_LT(largestStep(during, y, 700, 1100), 16) << "blurred while the region lasts";
    EXPECT_GT(largestStep(after, y, 700, 1100), 60) << "sharp bars once it ends";
    EXPECT_GT(largestStep(during, y, 100, 600), 60) << "sharp beside it";
}
