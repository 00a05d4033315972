#include "engine/support/SystemLog.h"
#include "mainwindow/desktop/SleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

namespace pagestack {

using namespace Qt::StringLiterals;

/// The lock is held as long as its descriptor is open. systemd, "Inhibitor Locks".
struct SleepInhibitor::Hold
{
    QDBusUnixFileDescriptor lock;
};

SleepInhibitor::SleepInhibitor()
    : m_hold(std::make_unique<Hold>())
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected()) {
        systemLog(u"The computer is not kept awake: there is no system bus"_s);
        return;
    }
    QDBusMessage call
        = QDBusMessage::createMethodCall(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                                         u"org.freedesktop.login1.Manager"_s, u"Inhibit"_s);
    call << u"idle:sleep"_s << u"Pagestack"_s << tr("Files are being converted") << u"block"_s;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
        if (reply.isError())
            systemLog(u"The computer is not kept awake: "_s + reply.error().message());
        else
            m_hold->lock = reply.value();
        watcher->deleteLater();
    });
}

SleepInhibitor::~SleepInhibitor() = default;

} // namespace pagestack
