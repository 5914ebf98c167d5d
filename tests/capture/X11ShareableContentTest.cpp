#include "support/TestWindow.h"
#include "support/XvfbDisplay.h"
#include "x11/X11CaptureBackend.h"

#include <gtest/gtest.h>

using namespace recorder;
using recorder::test::TestWindow;
using recorder::test::XvfbDisplay;

namespace {

std::vector<std::string> titles(const ShareableContent& content) {
    std::vector<std::string> out;
    for (const auto& window : content.windows) out.push_back(window.title);
    return out;
}

} // namespace

TEST(X11ShareableContent, ListsTheScreenAsOneDisplay) {
    XvfbDisplay display(1280, 720);
    auto content = X11CaptureBackend(display.name()).shareableContent();
    ASSERT_EQ(content.displays.size(), 1u);
    EXPECT_EQ(content.displays[0].frame, (Rect{0, 0, 1280, 720}));
    EXPECT_EQ(content.displays[0].width, 1280);
    EXPECT_EQ(content.displays[0].height, 720);
    EXPECT_FALSE(content.displays[0].name.empty());
    // The same monitor has the same id on another server.
    XvfbDisplay other(1280, 720);
    EXPECT_EQ(X11CaptureBackend(other.name()).shareableContent().displays[0].id, content.displays[0].id);
}

TEST(X11ShareableContent, OffersNormalApplicationWindowsFrontFirst) {
    XvfbDisplay display;
    TestWindow back(display.name(), 10, 10, 400, 300, "Back");
    TestWindow front(display.name(), 20, 20, 400, 300, "Front");
    TestWindow::Options noTitle;
    TestWindow untitled(display.name(), 30, 30, 400, 300, "", noTitle);
    auto content = X11CaptureBackend(display.name()).shareableContent();
    EXPECT_EQ(titles(content), (std::vector<std::string>{"", "Front", "Back"}));
    const auto& window = content.windows[1];
    EXPECT_EQ(window.id, front.id());
    EXPECT_EQ(window.app, "TestApp");
    EXPECT_EQ(window.bundleID, "testapp");
    EXPECT_EQ(window.frame, (Rect{20, 20, 400, 300}));
}

TEST(X11ShareableContent, LeavesOutWhatIsNotANormalWindowOfAnApplication) {
    XvfbDisplay display;
    TestWindow shown(display.name(), 0, 0, 400, 300, "Shown");
    TestWindow narrow(display.name(), 0, 0, 79, 300, "Narrow");
    TestWindow low(display.name(), 0, 0, 400, 59, "Low");
    TestWindow::Options dock;
    dock.type = "_NET_WM_WINDOW_TYPE_DOCK";
    TestWindow panel(display.name(), 0, 0, 400, 300, "Panel", dock);
    TestWindow::Options menu;
    menu.overrideRedirect = true;
    TestWindow popup(display.name(), 0, 0, 400, 300, "Popup", menu);
    TestWindow::Options hidden;
    hidden.mapped = false;
    TestWindow unmapped(display.name(), 0, 0, 400, 300, "Unmapped", hidden);
    TestWindow::Options nameless;
    nameless.instance = "";
    TestWindow noApplication(display.name(), 0, 0, 400, 300, "No application", nameless);
    auto content = X11CaptureBackend(display.name()).shareableContent();
    EXPECT_EQ(titles(content), (std::vector<std::string>{"Shown"}));
}

TEST(X11ShareableContent, LeavesOutThisApplicationsUntitledWindowsButNotItsTitledOnes) {
    XvfbDisplay display;
    TestWindow::Options ours;
    ours.claimsThisProcess = true;
    TestWindow hud(display.name(), 0, 0, 400, 300, "", ours);
    TestWindow editor(display.name(), 0, 0, 400, 300, "Editor", ours);
    auto content = X11CaptureBackend(display.name()).shareableContent();
    EXPECT_EQ(titles(content), (std::vector<std::string>{"Editor"}));
}
