#include "filelist/FileLoader.h"

#include "engine/threads/MainThread.h"
#include "engine/threads/WorkerThread.h"
#include "filelist/FileTableModel.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

#include <QEventLoop>
#include <QRandomGenerator>
#include <QThread>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

// The list, and a record of what was done to it.
class Target : public LoaderTarget
{
public:
    bool isProcessing() const override { return processing; }
    bool contains(const QUrl& url) const override
    {
        ++lookUps;
        return files.contains(url);
    }
    bool append(const std::shared_ptr<FileItem>& item) override
    {
        isOnMainThread &= QThread::currentThread() == QCoreApplication::instance()->thread();
        ++appends;
        if (onAppend)
            onAppend();
        return model.append(item);
    }
    void choosePages(const QHash<QUrl, QString>& choices) override { chosen.insert(choices); }
    void updateTotalPagesLabel() override { totals.append(files.totalPages()); }

    FileList files;
    FileTableModel model { files };
    std::atomic_bool processing = true;
    bool isOnMainThread = true;
    mutable int lookUps = 0;
    int appends = 0;
    QList<qint64> totals;
    QHash<QUrl, QString> chosen;
    std::function<void()> onAppend;
};

// Runs `load` as the window does, on a thread that the main thread's event loop serves.
bool inBackground(const std::function<bool()>& load)
{
    bool result = false;
    WorkerThread worker([&] { result = load(); });
    QEventLoop loop;
    QObject::connect(&worker, &QThread::finished, &loop, &QEventLoop::quit);
    worker.start();
    loop.exec();
    worker.wait();
    return result;
}

} // namespace

class FileLoaderTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<TestFolder>();
        m_folder->make(u"a.tif b.TIFF c.Tif d.txt noextension .hidden.tif tif sub/e.TIF "
                       "sub/deep/f.tiff .hiddenfolder/g.tif folder.tif/h.tif sub/circle>@ "
                       "linked.tif>@/sub sub/aside>@/folder.tif .own/scan10.tif .own/scan2.tif "
                       ".own/scan1.tif .up/deep/i.tif"_s);
        putBytes(path(u"._side.tif"_s), QByteArray("\x00\x05\x16\x07", 4));
    }

    void findsTheFilesOfFolders_data()
    {
        // "." is the folder. Behind a link ".." leads out of the folder that the link leads to.
        addTextRows({ "given", "below", "found", "told" }, R"(
            .                             |     | a.tif b.TIFF                   | 2 added, 4 left out
            .                             | yes | a.tif b.TIFF h.tif e.TIF f.tiff | 5 added, 4 left out
            .own                          |     | scan1.tif scan2.tif scan10.tif | 3 added
            d.txt sub a.tif gone.tif      |     | e.TIF a.tif gone.tif           | 3 added, 1 left out
            sub/e.TIF sub sub/deep sub    | yes | e.TIF f.tiff                   | 2 added, 4 already there
            sub/../a.tif ./a.tif sub//./e.TIF | | a.tif e.TIF                    | 2 added, 1 already there
            ._side.tif a.tif              |     | a.tif                          | 1 added
            sub/aside/../a.tif a.tif none/../b.TIFF | | a.tif b.TIFF             | 2 added, 1 already there
            .up                           |     |                                | 0 added, 1 sub-folder(s) not searched
            none                          | yes |                                | 0 added, 1 left out - @/none: No such file or directory
            none d.txt                    | yes |                                | 0 added, 2 left out - @/none: No such file or directory)");
    }
    void findsTheFilesOfFolders()
    {
        QFETCH(const QString, given);
        QFETCH(const QString, below);
        QFETCH(const QString, found);
        QFETCH(QString, told);
        Target target;
        FileLoader loader(target);
        const auto load
            = [&] { return loader.addFolderToList(urls(given.split(u' ')), !below.isEmpty()); };
        QCOMPARE(inBackground(load), !found.isEmpty());
        QCOMPARE(namesOf(target.files).join(u' '), found); // scan10 not before scan2
        QCOMPARE(loader.addition().text(), told.replace(u"@"_s, m_folder->path({})));
        QVERIFY(!inBackground(load)); // all there already
    }

    void logsWhatIsThrownAndKeepsWhatIsThere()
    {
        Target target;
        FileLoader loader(target);
        target.onAppend = [&target] {
            if (target.appends == 2)
                throw std::runtime_error("the list is full");
        };
        QTest::ignoreMessage(QtWarningMsg, "Error in (addFilesToList:) : the list is full");
        QVERIFY(inBackground([&] {
            return FileLoader(target).addFilesToList(urls({ u"a.tif"_s, u"b.TIFF"_s, u"tif"_s }));
        }));
        target.appends = 1;
        QTest::ignoreMessage(QtWarningMsg, "Error in (addFolderToList:) : the list is full");
        QVERIFY(!inBackground([&] { return loader.addFolderToList(urls({ u"sub"_s }), true); }));
        QCOMPARE(loader.addition().text(), u"0 added, then ended by an error"_s);
        QCOMPARE(namesOf(target.files), (QStringList { u"a.tif"_s }));
    }

#ifdef Q_OS_LINUX
    // Text that is none would come back as the name of another file.
    void leavesOutNamesThatAreNoText()
    {
        m_folder->make(u"odd/a.tif"_s);
        const QByteArray odd = path(u"odd/b"_s).toUtf8() + "\xff.tif";
        QVERIFY(std::rename(qPrintable(path(u"odd/a.tif"_s)), odd.constData()) == 0);
        Target target;
        FileLoader loader(target);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"The name is no UTF-8 text"_s));
        QVERIFY(!inBackground([&] { return loader.addFolderToList(urls({ u"odd"_s }), false); }));
        QVERIFY(std::remove(odd.constData()) == 0); // which Qt cannot
        QVERIFY(loader.addition().text().startsWith(u"0 added, 1 left out"_s));
    }
#endif

    // Whoever drops a thousand things that are none must learn why, without a page of it.
    void saysWhyFilesAreLeftOut()
    {
        QList<QUrl> given { QUrl(u"https://example.com/a.tif"_s) };
        for (int i = 0; i < 15; ++i)
            given.append(QUrl::fromLocalFile(path(u"none %1"_s.arg(i))));
        Target target;
        FileLoader loader(target);
        QVERIFY(!inBackground([&] { return loader.addFolderToList(given + given, true); }));
        QCOMPARE(loader.addition().text(), u"0 added, 32 left out"_s);
        const QStringList reasons = loader.addition().reasons().split(u'\n');
        QCOMPARE(reasons.size(), 11);
        QCOMPARE(reasons.first(), u"https://example.com/a.tif: it is no file of this computer"_s);
        QVERIFY(reasons.at(1).endsWith(u"/none 0: No such file or directory"_s));
        QCOMPARE(reasons.last(), u"and 22 more"_s);
        QVERIFY(inBackground([&] { return loader.addFilesToList(given); })); // missing ones, too
        QCOMPARE(
            loader.addition().text(),
            u"15 added, 1 left out - https://example.com/a.tif: it is no file of this computer"_s);
    }

    // Files wait behind the first one, whose pages take long to count.
    void takesNoMoreThanItsBoundAhead()
    {
        QList<QUrl> given { QUrl::fromLocalFile(makeFile(path(u"long.tif"_s), 200000)) };
        for (int i = 0; i < 20000; ++i)
            given.append(QUrl::fromLocalFile(u"/none/%1.tif"_s.arg(i)));
        Target target;
        int atFirst = 0;
        target.onAppend = [&target, &atFirst] {
            if (target.appends == 1)
                atFirst = target.lookUps;
        };
        QVERIFY(inBackground([&] { return FileLoader(target).addFilesToList(given); }));
        QCOMPARE(target.files.count(), 20001);
        QVERIFY2(atFirst <= 3000, qPrintable(QString::number(atFirst)));
        // A second time no file is opened: none comes as far as append().
        QVERIFY(!inBackground([&] { return FileLoader(target).addFilesToList(given); }));
        QCOMPARE(target.appends, 20001);
    }

    // The number of rounds is PAGESTACK_STORM, half of which the main thread joins the loader, as
    // when the program quits, instead of running its event loop.
    void comesToTheWholeListWhereverItIsStopped()
    {
        QStringList expected { u"d.txt"_s, u"a.tif"_s, u"gone"_s };
        QList<QUrl> given = urls(expected) + urls({ u"a.tif"_s });
        given.insert(1, QUrl(u"https://example.com/a.tif"_s));
        for (int i = 0; i < 120; ++i) {
            expected.append(u"n%1"_s.arg(i));
            given.append(QUrl::fromLocalFile(makeFile(path(expected.last()), i % 4)));
        }
        Target whole;
        QVERIFY(inBackground([&] { return FileLoader(whole).addFilesToList(given); }));
        QCOMPARE(namesOf(whole.files), expected);
        qint64 pages = 0;
        for (int row = 0; row < expected.size(); ++row) {
            pages += whole.files.at(row)->pages();
            QCOMPARE(whole.totals.value(row), pages);
        }
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        const auto openFiles = [] { return QDir(u"/proc/self/fd"_s).count(); };
        const auto before = openFiles();
        int stopped = 0;
        const int rounds = qEnvironmentVariable("PAGESTACK_STORM", u"40"_s).toInt();
        for (int round = 0; round < rounds; ++round) {
            const QString told = u"seed %1, round %2"_s.arg(seed).arg(round);
            Target target;
            for (const bool isFirst : { true, false }) {
                target.processing = true;
                FileLoader loader(target);
                const auto load = [&] { loader.addFilesToList(given); };
                WorkerThread worker(load);
                QEventLoop loop;
                connect(&worker, &QThread::finished, &loop, &QEventLoop::quit);
                const std::chrono::microseconds delay(random.bounded(3000));
                std::thread canceller([&] {
                    std::this_thread::sleep_for(delay);
                    target.processing = !isFirst;
                });
                worker.start();
                if (round % 2 == 0)
                    loop.exec();
                joinWorker(worker);
                canceller.join();
                const QStringList names = namesOf(target.files);
                const bool isStopped = names.size() < expected.size();
                stopped += isStopped ? 1 : 0;
                QVERIFY(!isStopped || loader.addition().text().contains(u", then cancelled"_s));
                QVERIFY2(names == expected.first(isFirst ? names.size() : 123)
                             && target.totals.size() == names.size() && target.isOnMainThread,
                         qPrintable(told));
            }
        }
        QVERIFY(stopped > 0);
        QCOMPARE(openFiles(), before);
    }

private:
    QString path(const QString& name) const { return m_folder->path(name); }
    QList<QUrl> urls(const QStringList& names) const
    {
        QList<QUrl> result;
        for (const QString& name : names)
            result.append(QUrl::fromLocalFile(path(name)));
        return result;
    }

    std::unique_ptr<TestFolder> m_folder;
};

QTEST_GUILESS_MAIN(FileLoaderTest)

#include "FileLoaderTest.moc"
