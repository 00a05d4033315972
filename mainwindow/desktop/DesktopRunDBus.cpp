#include "engine/support/Info.h"
#include "engine/support/SystemLog.h"
#include "mainwindow/desktop/DesktopRun.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // Desktop Notifications Specification 1.2.
    const QString notifications = u"org.freedesktop.Notifications"_s;
    const QString notificationsPath = u"/org/freedesktop/Notifications"_s;
    const QString folderAction = u"folder"_s;

} // namespace

/// Listens to answers to the notification, which is nobody's else.
struct DesktopRun::System : public QObject
{
    Q_OBJECT

public:
    explicit System(DesktopRun& owner)
        : run(owner)
    {
    }

    DesktopRun& run;
    uint notification = 0; ///< 0: none, or not known yet

public slots:
    void takeAnswer(uint number, const QString& action)
    {
        if (notification != 0 && number == notification
            && (action == folderAction || action == u"default"_s))
            emit run.folderRequested();
    }
};

DesktopRun::DesktopRun()
    : m_awake(std::make_unique<SleepInhibitor>())
    , m_system(std::make_unique<System>(*this))
{
}

DesktopRun::~DesktopRun()
{
    if (m_percent >= 0)
        showProgress(0, false);
}

/// As docks and task bars of several desktops read it; who does not, lets it pass.
void DesktopRun::showProgress(int percent, bool isVisible)
{
    QDBusMessage signal = QDBusMessage::createSignal(
        u"/org/pagestack/LauncherEntry"_s, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s);
    signal << u"application://pagestack.desktop"_s
           << QVariantMap { { u"progress"_s, percent / 100.0 },
                            { u"progress-visible"_s, isVisible } };
    QDBusConnection::sessionBus().send(signal);
}

void DesktopRun::notify(const QString& title, const QString& text, bool hasFolder)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(notifications, notificationsPath,
                                                       notifications, u"Notify"_s);
    QStringList actions;
    if (hasFolder)
        actions = { u"default"_s, tr("Open folder"), folderAction, tr("Open folder") };
    call << displayName.toString() << 0U << u"pagestack"_s << title << text << actions
         << QVariantMap { { u"desktop-entry"_s, u"pagestack"_s } } << -1;
    bus.connect(notifications, notificationsPath, notifications, u"ActionInvoked"_s, m_system.get(),
                SLOT(takeAnswer(uint, QString)));
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), m_system.get());
    connect(watcher, &QDBusPendingCallWatcher::finished, m_system.get(), [this, watcher] {
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError())
            systemLog(u"The end of the run is not announced: "_s + reply.error().message());
        else
            m_system->notification = reply.value();
        watcher->deleteLater();
    });
}

} // namespace pagestack

#include "DesktopRunDBus.moc"
