#include "mainwindow/desktop/DesktopRun.h"
#include "mainwindow/desktop/DesktopWorkspace.h"
#include "mainwindow/desktop/SingleInstance.h"
#include "mainwindow/desktop/SleepInhibitor.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>
#include <QWidget>

#include <poll.h>
#include <unistd.h>

enum class Conduct { IsAway, Answers, Refuses, IsSilent };

/// A file manager that notes what it is asked: "ShowItems(ass) URI URI ...".
class FileManager : public QDBusVirtualObject
{
public:
    FileManager(const QString& address, Conduct conduct)
        : m_conduct(conduct)
        , m_bus(QDBusConnection::connectToBus(address, u"file manager"_s))
    {
        if (!m_bus.registerVirtualObject(u"/org/freedesktop/FileManager1"_s, this)
            || (conduct != Conduct::IsAway
                && !m_bus.registerService(u"org.freedesktop.FileManager1"_s)))
            qFatal("The test's bus takes no file manager");
    }
    ~FileManager() override { QDBusConnection::disconnectFromBus(m_bus.name()); }
    Q_DISABLE_COPY_MOVE(FileManager)

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        if (message.interface() == u"org.freedesktop.FileManager1")
            m_calls.append(
                u"%1(%2) %3"_s.arg(message.member(), message.signature(),
                                   message.arguments().constFirst().toStringList().join(u' ')));
        if (m_conduct == Conduct::Answers)
            bus.send(message.createReply());
        else if (m_conduct == Conduct::Refuses)
            bus.send(message.createErrorReply(QDBusError::InvalidArgs, u"no such file"_s));
        return true;
    }
    QStringList calls() const { return m_calls; }

private:
    Conduct m_conduct;
    QDBusConnection m_bus;
    QStringList m_calls;
};

/// The start of the program that came first, which answers on a thread of its own.
class FirstStart : public QDBusVirtualObject
{
public:
    explicit FirstStart(const QString& address)
        : m_bus(QDBusConnection::connectToBus(address, u"first start"_s))
    {
        moveToThread(&m_thread);
        m_thread.start();
        if (!m_bus.registerVirtualObject(u"/com/corvanta/Pagestack1"_s, this)
            || !m_bus.registerService(u"com.corvanta.Pagestack1"_s))
            qFatal("The test's bus takes no first start");
    }
    ~FirstStart() override
    {
        QDBusConnection::disconnectFromBus(m_bus.name());
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY_MOVE(FirstStart)

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        const QVariantMap data = qdbus_cast<QVariantMap>(message.arguments().value(1));
        asked = message.member() + u' ' + message.arguments().value(0).toStringList().join(u' ')
            + u' ' + data.value(u"activation-token"_s, u"-"_s).toString();
        bus.send(message.createReply());
        return true;
    }

    QString asked; ///< written before the answer

private:
    QDBusConnection m_bus;
    QThread m_thread;
};

/// A system that gives out locks against sleep.
class SleepManager : public QDBusVirtualObject
{
public:
    explicit SleepManager(const QString& address)
        : m_bus(QDBusConnection::connectToBus(address, u"sleep manager"_s))
    {
        if (!m_bus.registerVirtualObject(u"/org/freedesktop/login1"_s, this)
            || !m_bus.registerService(u"org.freedesktop.login1"_s) || ::pipe(m_ends) != 0)
            qFatal("The test's bus takes no sleep manager");
    }
    ~SleepManager() override
    {
        QDBusConnection::disconnectFromBus(m_bus.name());
        ::close(m_ends[0]);
    }
    Q_DISABLE_COPY_MOVE(SleepManager)

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        QDBusUnixFileDescriptor lock;
        lock.giveFileDescriptor(m_ends[1]);
        bus.send(message.createReply(QVariant::fromValue(lock)));
        m_asked = message.arguments().first().toString();
        return true;
    }
    QString asked() const { return m_asked; }
    /// All copies of the lock are closed: nothing keeps the system awake.
    bool isReleased() const
    {
        pollfd end { m_ends[0], POLLIN, 0 };
        return ::poll(&end, 1, 0) == 1 && (end.revents & POLLHUP) != 0;
    }

private:
    QDBusConnection m_bus;
    int m_ends[2] = {};
    QString m_asked;
};

/// A desktop that shows notifications, and progress at the icons of programs.
class NotificationServer : public QDBusVirtualObject
{
    Q_OBJECT

public:
    explicit NotificationServer(const QString& address)
        : m_bus(QDBusConnection::connectToBus(address, u"desktop"_s))
    {
        if (!m_bus.registerVirtualObject(u"/org/freedesktop/Notifications"_s, this)
            || !m_bus.registerService(u"org.freedesktop.Notifications"_s)
            || !m_bus.connect({}, {}, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s, this,
                              SLOT(takeProgress(QString, QVariantMap))))
            qFatal("The test's bus takes no desktop");
    }
    ~NotificationServer() override { QDBusConnection::disconnectFromBus(m_bus.name()); }
    Q_DISABLE_COPY_MOVE(NotificationServer)

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        const QVariantList call = message.arguments();
        shown.append(u"%1 %2: %3 (%4)"_s.arg(message.signature(), call.at(3).toString(),
                                             call.at(4).toString(),
                                             call.at(5).toStringList().join(u'/')));
        bus.send(message.createReply(7U));
        return true;
    }
    void answer(uint number, const QString& action) const
    {
        QDBusMessage signal
            = QDBusMessage::createSignal(u"/org/freedesktop/Notifications"_s,
                                         u"org.freedesktop.Notifications"_s, u"ActionInvoked"_s);
        m_bus.send(signal << number << action);
    }

    QStringList shown;
    QStringList progress;

public slots:
    void takeProgress(const QString& program, const QVariantMap& state)
    {
        const bool isVisible = state.value(u"progress-visible"_s).toBool();
        progress.append(program.section(u'/', -1) + u' '
                        + (isVisible ? state.value(u"progress"_s).toString() : u"none"_s));
    }

private:
    QDBusConnection m_bus;
};

// On a bus of the test's own, where no file manager of the system can be started.
class DesktopTest : public QObject
{
    Q_OBJECT

public slots:
    void noteOpened(const QUrl& url)
    {
        m_opened.append(QThread::currentThread() == thread() ? url.toString() : u"elsewhere"_s);
    }

private slots:
    void initTestCase()
    {
        const QString daemon = QStandardPaths::findExecutable(u"dbus-daemon"_s);
        if (daemon.isEmpty())
            QSKIP("The program dbus-daemon is not installed");
        const QString config = m_folder.filePath(u"bus.conf"_s);
        putBytes(config,
                 "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                 "<policy context='default'><allow send_destination='*'/><allow own='*'/>"
                 "<allow receive_sender='*'/></policy></busconfig>");
        m_bus.start(daemon, { u"--config-file="_s + config, u"--print-address"_s, u"--nofork"_s });
        while (!m_bus.canReadLine())
            QVERIFY2(m_bus.waitForReadyRead(), m_bus.readAllStandardError());
        const QByteArray address = m_bus.readLine().trimmed();
        m_address = QString::fromLatin1(address);
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
        QVERIFY(QDBusConnection::sessionBus().isConnected());
        QDesktopServices::setUrlHandler(u"file"_s, this, "noteOpened");
    }

    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(u"file"_s); }
    void init() { m_opened.clear(); }

    void handsOverTheFiles()
    {
        const QStringList uris { u"file:///t/%C3%A4%20%20b.tif"_s, u"file:///%231/%2541.tif"_s,
                                 u"file:///a%3Fb=c;'%22%5C.tif"_s };
        QList<QUrl> urls;
        for (const QString& path : { u"/t/ä  b.tif"_s, u"/#1/%41.tif"_s, u"/a?b=c;'\"\\.tif"_s })
            urls.append(QUrl::fromLocalFile(path));
        QStringList expected { u"ShowItems(ass) "_s + uris.join(u' ') };
        for (const QString& uri : uris)
            expected.append(u"ShowItemProperties(ass) "_s + uri);
        const FileManager manager(m_address, Conduct::Answers);
        m_desktop.activateFileViewerSelectingURLs(urls);
        m_desktop.showInformation(urls);
        QTRY_COMPARE(manager.calls(), expected);
        QTRY_VERIFY(allAnswered());
        QCOMPARE(m_opened, QStringList());
    }

    /// Files that are opened by both, or a window that stays behind others.
    void handsItsFilesToTheFirst()
    {
        FirstStart first(m_address);
        SingleInstance instance;
        for (const auto* token : { "", "t1" }) {
            if (*token != 0)
                qputenv("XDG_ACTIVATION_TOKEN", token);
            QVERIFY(instance.handOver({ QUrl(u"file:///a%20b.tif"_s), QUrl(u"file:///c"_s) }));
            QCOMPARE(first.asked,
                     u"Open file:///a%20b.tif file:///c "_s + (*token == 0 ? u"-"_s : u"t1"_s));
        }
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    /// Files that are taken over by a program that ends, and opened by nobody.
    void takesNoFilesWhileItEnds()
    {
        SingleInstance instance;
        QSignalSpy opened(&instance, &SingleInstance::opened);
        bool isEnding = false;
        instance.setIsEnding([&] { return isEnding; });
        const QDBusConnection other = QDBusConnection::connectToBus(m_address, u"another start"_s);
        const auto answer = [&](const QString& method) {
            QDBusMessage call = QDBusMessage::createMethodCall(
                u"com.corvanta.Pagestack1"_s, u"/com/corvanta/Pagestack1"_s,
                u"org.freedesktop.Application"_s, method);
            if (method == u"Open"_s)
                call << QStringList { u"file:///a.tif"_s, u"http://a/b.tif"_s };
            call << (method == u"Open"_s ? QVariantMap { { u"activation-token"_s, u"t2"_s } }
                                         : QVariantMap());
            QDBusPendingCallWatcher watcher(other.asyncCall(call));
            QSignalSpy finished(&watcher, &QDBusPendingCallWatcher::finished);
            finished.wait(10000);
            return QDBusMessage(watcher.reply()).type();
        };
        for (const QString& method : { u"Open"_s, u"Activate"_s }) {
            isEnding = false;
            QCOMPARE(answer(method), QDBusMessage::ReplyMessage);
            QCOMPARE(opened.takeFirst().first().value<QList<QUrl>>().size(),
                     method == u"Open"_s ? 1 : 0);
            QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "t2"); // stays where there is no other
            isEnding = true;
            QCOMPARE(answer(method), QDBusMessage::ErrorMessage);
        }
        QVERIFY(opened.isEmpty());
        qunsetenv("XDG_ACTIVATION_TOKEN");
        QDBusConnection::disconnectFromBus(other.name());
    }

    /// Files that are handed over to nobody, by a program that then shows no window.
    void opensItsFilesWhenNobodyTakesThem()
    {
        QDBusConnection other = QDBusConnection::connectToBus(m_address, u"first start"_s);
        QVERIFY(other.registerService(u"com.corvanta.Pagestack1"_s));
        std::optional<SingleInstance> instance(std::in_place);
        const QRegularExpression silent(u"The window that is open already does not answer: ."_s);
        for (const bool isThere : { true, false }) {
            if (!isThere)
                QVERIFY(other.unregisterService(u"com.corvanta.Pagestack1"_s));
            QTest::ignoreMessage(QtWarningMsg, silent);
            QVERIFY(!instance->handOver({ QUrl(u"file:///a.tif"_s) }));
        }
        QVERIFY(!instance->handOver({})); // it is the first now, and asks nobody
        QVERIFY(!other.registerService(u"com.corvanta.Pagestack1"_s));
        instance.reset();
        QVERIFY(other.registerService(u"com.corvanta.Pagestack1"_s));
        QDBusConnection::disconnectFromBus(other.name());
    }

    /// A page that does not open, without a word.
    void saysWhatNothingOpens()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"openUrl"_s));
        QTest::ignoreMessage(QtWarningMsg, "Nothing opens nowhere:x");
        m_desktop.openURL(QUrl(u"nowhere:x"_s));
    }

    /// A lock that is not taken, or that is never given back.
    void keepsTheSystemAwake()
    {
        const SleepManager manager(m_address);
        auto inhibitor = std::make_unique<SleepInhibitor>();
        QTRY_COMPARE(manager.asked(), u"idle:sleep"_s);
        QTRY_VERIFY(inhibitor->findChildren<QDBusPendingCallWatcher*>().isEmpty());
        QVERIFY(!manager.isReleased());
        inhibitor.reset();
        QTRY_VERIFY(manager.isReleased());
    }

    /// A notification for each file or while the user looks on, answers to those of others, a
    /// progress that stays at the icon.
    void tellsTheDesktopOfARun()
    {
        NotificationServer desktop(m_address);
        int folders = 0;
        DesktopRun run;
        connect(&run, &DesktopRun::folderRequested, &run, [&] { ++folders; });
        for (const double fraction : { 0.0, 0.251, 0.258, 0.5, 1.0 })
            run.setProgress(fraction);
        run.end(u"Finished"_s, u"2 images written"_s, true);
        QTRY_COMPARE(desktop.shown.join(u'|'),
                     u"susssasa{sv}i Finished: 2 images written (default/Open folder/folder/Open "
                     "folder)"_s);
        QTRY_COMPARE(desktop.progress.join(u'|'),
                     u"pagestack.desktop 0|pagestack.desktop 0.25|pagestack.desktop 0.5|"
                     "pagestack.desktop 1|pagestack.desktop none"_s);
        desktop.answer(8, u"folder"_s); // to another program's
        desktop.answer(7, u"close"_s);
        desktop.answer(7, u"folder"_s);
        QTRY_COMPARE(folders, 1);

        QWidget front;
        front.show();
        QVERIFY(QTest::qWaitForWindowActive(&front));
        auto watched = std::make_unique<DesktopRun>();
        watched->setProgress(0.1);
        watched->end(u"Finished"_s, u"seen"_s, true);
        watched = std::make_unique<DesktopRun>();
        watched->setProgress(0.2);
        watched.reset(); // a run that is not begun after all
        QTRY_COMPARE(desktop.progress.size(), 9);
        QCOMPARE(desktop.progress.last(), u"pagestack.desktop none"_s);
        QCOMPARE(desktop.shown.size(), 1);
    }

    void opensTheFoldersInstead()
    {
        for (const Conduct conduct : { Conduct::IsAway, Conduct::Refuses, Conduct::IsSilent }) {
            const FileManager manager(m_address, conduct);
            const QList<QUrl> urls { QUrl(u"file:///s%231/b.tif"_s), QUrl(u"file:///c.tif"_s),
                                     QUrl(u"file:///s%231/a.tif"_s) };
            m_opened.clear();
            m_desktop.activateFileViewerSelectingURLs(urls);
            m_desktop.showInformation(urls);
            QCOMPARE(m_opened, QStringList()); // nothing waits for the file manager
            QTRY_VERIFY_WITH_TIMEOUT(allAnswered(), 20000);
            m_opened.sort(); // the answers to two requests need not come in their order
            QCOMPARE(m_opened.join(u' '), u"file:/// file:/// file:///s%231 file:///s%231"_s);
        }
    }

    void takesRequestsOfOtherThreads()
    {
        const QUrl url(u"file:///out"_s);
        const std::unique_ptr<QThread> job(QThread::create([&] { m_desktop.openURL(url); }));
        job->start();
        QVERIFY(job->wait()); // without serving the main thread
        QTRY_COMPARE(m_opened, QStringList { url.toString() });
    }

private:
    bool allAnswered() const
    {
        return m_desktop.findChildren<QDBusPendingCallWatcher*>().isEmpty();
    }

    QTemporaryDir m_folder;
    QProcess m_bus; // killed by its destructor
    QString m_address;
    DesktopWorkspace m_desktop;
    QStringList m_opened;
};

QTEST_MAIN(DesktopTest)
#include "DesktopTest.moc"
