#include "system/SystemActivity.h"

#include "brand/Brand.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QVariant>

#include <cstdlib>
#include <optional>

namespace recorder {

namespace {

constexpr int callTimeoutMilliseconds = 1000;

std::optional<QVariant> call(QDBusConnection bus, const char* service, const char* path, const char* interface,
                             const char* method, const QVariantList& arguments) {
    if (!bus.isConnected()) return std::nullopt;
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    QDBusMessage reply = bus.call(message, QDBus::Block, callTimeoutMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage) return std::nullopt;
    return reply.arguments().isEmpty() ? QVariant() : reply.arguments().first();
}

} // namespace

// What was taken: logind's lock, open for as long as its descriptor is, and
// the screen saver's cookie, good while our connection lasts, since a
// screen saver forgets the inhibitions of a client that leaves the bus.
struct SystemActivity::Hold {
    QString systemName = "recorder.activity.system";
    QString sessionName = "recorder.activity.session";
    QDBusUnixFileDescriptor sleepLock;
    std::optional<std::uint32_t> screenSaverCookie;

    QDBusConnection system() const { return connect(QDBusConnection::SystemBus, "DBUS_SYSTEM_BUS_ADDRESS", systemName); }
    QDBusConnection session() const {
        return connect(QDBusConnection::SessionBus, "DBUS_SESSION_BUS_ADDRESS", sessionName);
    }
    // The address is read at each hold: the D-Bus library would otherwise
    // keep the first one it saw for the life of the process.
    static QDBusConnection connect(QDBusConnection::BusType type, const char* variable, const QString& name) {
        const char* address = std::getenv(variable);
        if (address && *address) return QDBusConnection::connectToBus(QString::fromUtf8(address), name);
        return QDBusConnection::connectToBus(type, name);
    }
    ~Hold() {
        QDBusConnection::disconnectFromBus(systemName);
        QDBusConnection::disconnectFromBus(sessionName);
    }
};

SystemActivity::SystemActivity() = default;

SystemActivity::~SystemActivity() { end(); }

void SystemActivity::begin(const std::string& reason) {
    if (hold_) return;
    hold_ = std::make_unique<Hold>();
    QString who = QString::fromStdString(Brand::shared().display);
    QString why = QString::fromStdString(reason);
    if (auto lock = call(hold_->system(), "org.freedesktop.login1", "/org/freedesktop/login1",
                         "org.freedesktop.login1.Manager", "Inhibit", {"idle:sleep", who, why, "block"}))
        hold_->sleepLock = lock->value<QDBusUnixFileDescriptor>();
    if (auto cookie = call(hold_->session(), "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                           "org.freedesktop.ScreenSaver", "Inhibit", {who, why}))
        hold_->screenSaverCookie = cookie->toUInt();
}

void SystemActivity::end() {
    if (!hold_) return;
    if (hold_->screenSaverCookie)
        call(hold_->session(), "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
             "org.freedesktop.ScreenSaver", "UnInhibit", {*hold_->screenSaverCookie});
    // Dropping the descriptor releases logind's lock.
    hold_.reset();
}

bool SystemActivity::isHolding() const { return hold_ != nullptr; }

} // namespace recorder
