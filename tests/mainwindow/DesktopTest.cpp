#include "mainwindow/desktop/DesktopWorkspace.h"
#include "tests/support/Testing.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVirtualObject>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

enum class Conduct { Answers, IsSlow, Refuses, IsSilent, Leaves };

/// A file manager that notes what it is asked: "ShowItems URI URI ...".
class FileManager : public QDBusVirtualObject
{
public:
    FileManager(const QString& address, Conduct conduct)
        : m_conduct(conduct)
        , m_bus(
              std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address, connection)))
    {
        if (!m_bus->registerVirtualObject(u"/org/freedesktop/FileManager1"_s, this)
            || !m_bus->registerService(u"org.freedesktop.FileManager1"_s))
            qFatal("The test's bus takes no file manager");
    }
    ~FileManager() override { leave(); }
    Q_DISABLE_COPY_MOVE(FileManager)

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        m_calls.append(u"%1 %2"_s.arg(message.member(),
                                      message.arguments().constFirst().toStringList().join(u' ')));
        m_areWellFormed &= message.signature() == u"ass"_s
            && message.interface() == u"org.freedesktop.FileManager1"_s;
        if (m_conduct == Conduct::IsSlow)
            QThread::msleep(40); // all together longer than one call may take
        if (m_conduct == Conduct::Answers || m_conduct == Conduct::IsSlow)
            bus.send(message.createReply());
        else if (m_conduct == Conduct::Refuses)
            bus.send(message.createErrorReply(QDBusError::InvalidArgs, u"no such file"_s));
        else if (m_conduct == Conduct::Leaves)
            leave();
        return true;
    }

    QStringList calls() const { return m_calls; }
    bool areWellFormed() const { return m_areWellFormed; }

private:
    static constexpr QLatin1StringView connection { "file manager" };

    // The bus hears of the end once the last handle on the connection is gone.
    void leave()
    {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(connection);
    }

    Conduct m_conduct;
    std::unique_ptr<QDBusConnection> m_bus;
    QStringList m_calls;
    bool m_areWellFormed = true;
};

// On a bus of the test's own, where no file manager of the system can be started.
class DesktopTest : public QObject
{
    Q_OBJECT

public slots:
    void noteOpened(const QUrl& url)
    {
        m_opened.append(url.toString());
        m_isOpenedHere &= QThread::currentThread() == thread();
    }

private slots:
    void initTestCase()
    {
        const QString daemon = QStandardPaths::findExecutable(u"dbus-daemon"_s);
        if (daemon.isEmpty())
            QSKIP("The program dbus-daemon is not installed");
        QFile config(m_folder.filePath(u"bus.conf"_s));
        QVERIFY(config.open(QIODevice::WriteOnly));
        config.write(R"(<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <policy context="default">
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>)");
        config.close();
        m_bus.start(
            daemon,
            { u"--config-file="_s + config.fileName(), u"--print-address"_s, u"--nofork"_s });
        while (!m_bus.canReadLine())
            QVERIFY2(m_bus.waitForReadyRead(), m_bus.readAllStandardError());
        const QByteArray address = m_bus.readLine().trimmed();
        m_address = QString::fromLatin1(address);
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QVERIFY(QDBusConnection::sessionBus().isConnected());
        QDesktopServices::setUrlHandler(u"file"_s, this, "noteOpened");
    }

    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(u"file"_s); }
    void init() { m_opened.clear(); }

    void handsOverTheFiles()
    {
        const QStringList uris { u"file:///t/%C3%A4%20%20b.tif"_s, u"file:///%231/50%25.tif"_s,
                                 u"file:///a%2541.tif"_s, u"file:///a%3Fb=c.tif"_s,
                                 u"file:///a;'%22%5C.tif"_s };
        QList<QUrl> urls;
        for (const QString& path : { u"/t/ä  b.tif"_s, u"/#1/50%.tif"_s, u"/a%41.tif"_s,
                                     u"/a?b=c.tif"_s, u"/a;'\"\\.tif"_s })
            urls.append(QUrl::fromLocalFile(path));
        QStringList expected { u"ShowItems "_s + uris.join(u' ') };
        for (const QString& uri : uris)
            expected.append(u"ShowItemProperties "_s + uri);
        const FileManager manager(m_address, Conduct::Answers);
        m_desktop.activateFileViewerSelectingURLs(urls);
        m_desktop.showInformation(urls);
        QTRY_VERIFY(allAnswered());
        QCOMPARE(manager.calls(), expected);
        QVERIFY(manager.areWellFormed());
        QCOMPARE(m_opened, QStringList());
    }

    void opensTheFoldersInstead_data()
    {
        QTest::addColumn<std::optional<Conduct>>("conduct");
        QTest::newRow("no file manager") << std::optional<Conduct>();
        QTest::newRow("refuses") << std::optional(Conduct::Refuses);
        QTest::newRow("never answers") << std::optional(Conduct::IsSilent);
        QTest::newRow("ends in mid-call") << std::optional(Conduct::Leaves);
    }

    void opensTheFoldersInstead()
    {
        QFETCH(const std::optional<Conduct>, conduct);
        const auto manager = conduct ? std::make_unique<FileManager>(m_address, *conduct) : nullptr;
        const QList<QUrl> urls { QUrl(u"file:///s%231/b.tif"_s), QUrl(u"file:///c.tif"_s),
                                 QUrl(u"file:///s%231/a.tif"_s) };
        const QStringList folders { u"file:///"_s, u"file:///"_s, u"file:///s%231"_s,
                                    u"file:///s%231"_s };
        m_desktop.activateFileViewerSelectingURLs(urls);
        m_desktop.showInformation(urls);
        QCOMPARE(m_opened, QStringList()); // nothing waits for the file manager
        QTRY_VERIFY_WITH_TIMEOUT(allAnswered(), 20000);
        m_opened.sort(); // the answers to two requests need not come in their order
        QCOMPARE(m_opened, folders);
    }

    void asksForManyFilesInOrder()
    {
        QList<QUrl> urls;
        QStringList expected;
        for (int i = 0; i < 90; ++i) {
            urls.append(QUrl(u"file:///scans/%1.tif"_s.arg(i)));
            expected.append(u"ShowItemProperties "_s + urls.last().toString());
        }
        {
            const FileManager manager(m_address, Conduct::IsSlow);
            m_desktop.showInformation(urls);
            QTRY_VERIFY_WITH_TIMEOUT(allAnswered(), 20000);
            QCOMPARE(manager.calls(), expected);
            QCOMPARE(m_opened, QStringList());
        }
        m_desktop.showInformation(urls);
        QTRY_VERIFY_WITH_TIMEOUT(allAnswered(), 20000);
        QCOMPARE(m_opened, QStringList { u"file:///scans"_s });
    }

    void takesRequestsOfOtherThreads()
    {
        const QUrl url(u"file:///out"_s);
        const std::unique_ptr<QThread> job(QThread::create([&] { m_desktop.openURL(url); }));
        job->start();
        QVERIFY(job->wait()); // without serving the main thread
        QTRY_COMPARE(m_opened, QStringList { url.toString() });
        QVERIFY(m_isOpenedHere);
    }

    // The last test: a program does not get back to its session bus.
    void opensTheFoldersWithoutABus()
    {
        m_bus.kill();
        QVERIFY(m_bus.waitForFinished());
        QTRY_VERIFY(!QDBusConnection::sessionBus().isConnected());
        const QList<QUrl> urls { QUrl(u"file:///s/b.tif"_s), QUrl(u"file:///s/a.tif"_s) };
        m_desktop.activateFileViewerSelectingURLs(urls);
        m_desktop.showInformation(urls);
        QCOMPARE(m_opened, QStringList(2, u"file:///s"_s));
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
    bool m_isOpenedHere = true;
};

QTEST_MAIN(DesktopTest)
#include "DesktopTest.moc"
