#include "Settings.h"
#include "support/TempDir.h"
#include "support/XTestInput.h"
#include "support/XvfbDisplay.h"
#include "system/GlobalShortcut.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <thread>

namespace recorder {
namespace {

using namespace std::chrono_literals;

void ensureApplication() {
    static int argc = 1;
    static char name[] = "app_tests";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) new QCoreApplication(argc, argv);
}

template <class F>
bool eventually(F&& condition) {
    auto until = std::chrono::steady_clock::now() + 10s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > until) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

TEST(GlobalShortcut, StoredShortcutRunsItsActionOnTheMainThread) {
    ensureApplication();
    test::XvfbDisplay display(320, 240);
    test::XTestInput input(display.name());
    test::TempDir dir;
    Settings settings(dir / "settings.conf");

    int presses = 0;
    bool onMainThread = false;
    GlobalShortcut shortcut(
        [&] {
            ++presses;
            onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        },
        display.name());
    ASSERT_TRUE(shortcut.reload(settings));
    EXPECT_EQ(shortcut.combo(), (Hotkey::Combo{15, 0x1100}));
    input.chord({0xffe3, 0xffeb, 'r'});
    ASSERT_TRUE(eventually([&] { return presses == 1; }));
    EXPECT_TRUE(onMainThread);

    // ⌥⇧A from the settings replaces it.
    settings.setInt("hotkeyKeyCode", 0x00);
    settings.setInt("hotkeyModifiers", 0xa00);
    ASSERT_TRUE(shortcut.reload(settings));
    input.chord({0xffe3, 0xffeb, 'r'});
    input.chord({0xffe9, 0xffe1, 'a'});
    ASSERT_TRUE(eventually([&] { return presses == 2; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(presses, 2);
}

} // namespace
} // namespace recorder
