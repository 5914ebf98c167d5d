#include "support/TempDir.h"
#include "system/SystemActivity.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace recorder {
namespace {

// A private session bus for one test.
class SessionBus {
public:
    SessionBus() {
        std::string config = "<busconfig><type>session</type><listen>unix:path=" + (dir_ / "bus").string() +
                             "</listen><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
                             "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";
        FILE* file = std::fopen((dir_ / "bus.conf").c_str(), "w");
        std::fputs(config.c_str(), file);
        std::fclose(file);
        pid_ = fork();
        if (pid_ == 0) {
            int quiet = open("/dev/null", O_RDWR);
            dup2(quiet, STDOUT_FILENO);
            dup2(quiet, STDERR_FILENO);
            execlp("dbus-daemon", "dbus-daemon", "--nofork", ("--config-file=" + (dir_ / "bus.conf").string()).c_str(),
                   static_cast<char*>(nullptr));
            _exit(127);
        }
        for (int i = 0; i < 200 && !std::filesystem::exists(dir_ / "bus"); ++i) usleep(10000);
    }
    ~SessionBus() {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    std::string address() const { return "unix:path=" + (dir_ / "bus").string(); }

private:
    test::TempDir dir_;
    pid_t pid_ = -1;
};

// Stands in for the desktop's screen saver, which this machine doesn't run:
// it answers Inhibit with a cookie and notes what it was told.
class ScreenSaver : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        std::lock_guard guard(lock);
        calls.push_back(message.member() + " " + message.arguments().value(1).toString() +
                        message.arguments().value(0).toString());
        QVariantList reply;
        if (message.member() == "Inhibit") reply << QVariant::fromValue(std::uint32_t(42));
        connection.send(message.createReply(reply));
        return true;
    }
    std::mutex lock;
    QStringList calls;
};

// D-Bus wants the application object made before its first connection, and
// there is one per program.
void ensureApplication() {
    static int argc = 1;
    static char name[] = "app_tests";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) new QCoreApplication(argc, argv);
}

TEST(SystemActivity, WithoutABusNothingHappens) {
    ensureApplication();
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system", 1);
    SystemActivity activity;
    activity.begin("Recording");
    EXPECT_TRUE(activity.isHolding());
    activity.begin("Recording");
    activity.end();
    EXPECT_FALSE(activity.isHolding());
    activity.end();
}

TEST(SystemActivity, HoldsOffTheScreenSaverUntilTheEnd) {
    SessionBus bus;
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system", 1);
    ensureApplication();

    QThread serving;
    serving.start();
    ScreenSaver screenSaver;
    screenSaver.moveToThread(&serving);
    auto standIn = QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "screensaver");
    ASSERT_TRUE(standIn.isConnected());
    ASSERT_TRUE(standIn.registerVirtualObject("/org/freedesktop/ScreenSaver", &screenSaver));
    ASSERT_TRUE(standIn.registerService("org.freedesktop.ScreenSaver"));

    {
        SystemActivity activity;
        activity.begin("Recording");
        activity.begin("Recording");
        activity.end();
        activity.end();
        activity.begin("Recording");
    }
    std::lock_guard guard(screenSaver.lock);
    EXPECT_EQ(screenSaver.calls, (QStringList{"Inhibit RecordingTidereel", "UnInhibit 42", "Inhibit RecordingTidereel",
                                              "UnInhibit 42"}));
    serving.quit();
    serving.wait();
}

} // namespace
} // namespace recorder
