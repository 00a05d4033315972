#include "engine/job/PagePrefetcher.h"

#include "engine/support/SystemLog.h"
#include "tests/engine/job/JobFixture.h"
#include "tests/support/LogDocument.h"
#include "tests/support/Testing.h"

#include <QDirIterator>
#include <QRandomGenerator>

#include <chrono>
#include <thread>

namespace {

/// All that a run has shown and left.
struct Outcome
{
    QStringList events; ///< with the lines of the system log between them
    QByteArray log;
    QMap<QString, QByteArray> files; ///< contents and permissions
};

/// Where lines of the system log go while a run is watched.
struct LogWatch
{
    static inline LogWatch* current = nullptr;
    static void take(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        const bool isOfJob = std::this_thread::get_id() == current->jobThread;
        current->fixture.record((isOfJob ? u"log "_s : u"log of a worker "_s) + text);
    }

    explicit LogWatch(JobFixture& watched)
        : fixture(watched)
    {
        current = this;
        before = qInstallMessageHandler(take);
    }
    ~LogWatch() { qInstallMessageHandler(before); }

    JobFixture& fixture;
    const std::thread::id jobThread = std::this_thread::get_id();
    QtMessageHandler before;
};

/// Durations are what differs from run to run.
QString withoutTimes(const QString& event)
{
    static const QRegularExpression taken(
        u"^timeTaken.*|(?<=Total Time Taken :).*(?= \\d+/\\d+$)"_s);
    return QString(event).remove(taken);
}

/// What happens in a run of JobFixture with `jobs`. `trap`, if any, is called with the number of
/// each event from 0 on and may stop the job or throw.
Outcome outcome(const QString& sources, const QString& changes, int jobs,
                const std::function<void(JobFixture&, qsizetype)>& trap = {})
{
    JobFixture fixture(sources, changes + u" jobs="_s + QString::number(jobs));
    fixture.job.log()->setStored(false); // a file that is synchronized takes longer than the run
    qsizetype number = 0;
    if (trap)
        fixture.onEvent = [&](const QString&) { trap(fixture, number++); };
    const LogWatch watch(fixture);
    Outcome found;
    try {
        fixture.run();
    } catch (int thrown) {
        fixture.events.append(u"thrown %1"_s.arg(thrown));
    }
    for (const QString& event : fixture.events)
        found.events.append(withoutTimes(event));
    found.log = documentOf(*fixture.job.log());
    found.log.replace(QFile::encodeName(fixture.folder.path({})), "");
    found.log = QString::fromUtf8(found.log)
                    .remove(QRegularExpression(u"(Start|End)(Time)?=\"[^\"]*\""_s))
                    .toUtf8();
    found.files = fixture.folder.entries();
    for (const QString& name : found.files.keys()) {
        QByteArray& content = found.files[name]; // of a link: a path
        content.replace(QFile::encodeName(fixture.folder.path({})), "");
        content += QByteArray::number(QFile::permissions(fixture.folder.path(name)).toInt(), 16);
    }
    return found;
}

/// The first difference between two outcomes; empty when there is none.
QString difference(const Outcome& a, const Outcome& b)
{
    for (qsizetype i = 0; i < std::max(a.events.size(), b.events.size()); ++i)
        if (a.events.value(i) != b.events.value(i))
            return u"event %1: %2, not %3"_s.arg(i).arg(b.events.value(i), a.events.value(i));
    if (a.log != b.log)
        return u"log: "_s + QString::fromUtf8(b.log);
    for (const QString& name : a.files.keys() + b.files.keys())
        if (a.files.value(name) != b.files.value(name))
            return u"file "_s + name;
    return {};
}

const QString mixed
    = u"text.tif gone.tif>nowhere bad.tif:WBWUBV more.tif:W less.tif:WWWW c.tif:U"_s;
const QString mixedChanges = u" in/more.tif:WWW in/less.tif:WW"_s;
const QString together = u"outputType=2 tiffCompressionIndex=3"_s;
const QString splitBeside = u"outputType=2 isSplitTIFFIntoSinglePages=true outputFolderPath="_s;

} // namespace

class PagePrefetcherTest : public QObject
{
    Q_OBJECT

private slots:
    void showsWhatOneThreadShows_data()
    {
        QTest::addColumn<QString>("sources");
        QTest::addColumn<QString>("changes");
        /// Something that must be among what one thread shows or leaves, so that the row is about
        /// it.
        QTest::addColumn<QString>("sign");
        const auto row = [](const QString& name, const QString& sources, const QString& changes,
                            const QString& sign) {
            QTest::newRow(qPrintable(name)) << sources << changes << sign;
        };
        const QString plain = u"a.tif:WWWWWWVWWWWWWW b.tif:WUW c.tif:W d.tif:UU e.tif:WVW"_s;
        for (int type = 0; type < 5; ++type)
            row(u"split, type %1"_s.arg(type), plain,
                u"outputType=%1 isSplitTIFFIntoSinglePages=true"_s.arg(type), u"created 23"_s);
        for (int compression = 0; compression < 5; ++compression)
            row(u"together, compression %1"_s.arg(compression), plain,
                u"outputType=2 tiffCompressionIndex=%1"_s.arg(compression), u"created 5"_s);
        row(u"troubles, split"_s, mixed, u"outputType=0"_s + mixedChanges,
            u"page in/bad.tif 5 out/bad5.jpg Failed"_s);
        row(u"troubles, together"_s, mixed, together + mixedChanges,
            u"page in/bad.tif 5 out/bad.tiff Failed"_s);
        for (const QString& type :
             { u"0"_s, u"1"_s, u"3"_s, u"4"_s, u"2 tiffCompressionIndex=2"_s })
            row(u"damaged fax rows, type "_s + type, u"a.tif:WFF b.tif:FW c.tif:F"_s,
                u"outputType="_s + type,
                u"remark in/a.tif 3 1 row of the fax is damaged; what is lost of it is white"_s);
        row(u"no target folder"_s, u"a.tif:UWW b.tif:W"_s, u"outputFolderPath=nowhere"_s,
            u"page in/b.tif 1 nowhere/b1.png Failed"_s);
        row(u"target folder is a file, together"_s, u"a.tif:UWW b.tif:W"_s,
            together + u" outputFolderPath=in/a.tif"_s,
            u"page in/b.tif 1 in/a.tif/b.tiff Written"_s);
        row(u"same targets"_s, u"x/a.tif:WWW y/a.tif:VV z/a.tif:UWUW"_s, {}, u"created 9"_s);
        row(u"same targets, existing are skipped"_s, u"x/a.tif:WWW y/a.tif:VV z/a.tif:UWUW"_s,
            u"out/a2.png filter=*"_s, u"page in/z/a.tif 3 out/a3.png Skipped"_s);
        row(u"same targets, together"_s, u"x/a.tif:W y/a.tif:V z/a.tif:WW w/a.tif:V"_s,
            together + u" filter=*"_s, u"page in/w/a.tif 1 out/a.tiff Skipped"_s);
        row(u"same target through a link"_s, u"a.tif:VV b.tif:WWU"_s, u"out/a2.png>b2.png"_s,
            u"created 5"_s);
        row(u"in the place of the source"_s, u"a.tiff:WVWVW b.tiff:W"_s,
            together + u" outputFolderPath="_s, u"written in/a.tiff in/a.tiff 5"_s);
        row(u"the same with a damaged fax row"_s, u"a.tiff:WFW b.tiff:W"_s,
            together + u" outputFolderPath="_s,
            u"trouble in/a.tiff 0 the file is kept as it is, since not all of its pixels are sure: "
            u"page 2: "
            "1 row of the fax is damaged; what is lost of it is white"_s);
        row(u"the same with a tag that would be lost"_s, u"a.tiff:WVWUW b.tiff:W"_s,
            together + u" outputFolderPath="_s,
            u"trouble in/a.tiff 0 the file is kept as it is, since 1 tag would be lost: tag 65100"_s);
        row(u"an earlier output is a source"_s, u"a.tif:WVW a2.tiff:WWW b.tif:W"_s, splitBeside,
            u"trouble in/a2.tiff 0 index 1 beyond bounds [0 .. 0]"_s);
        row(u"the same, together"_s, u"x.tif:VUV x.tiff:WWWWW x.tif"_s,
            together + u" outputFolderPath= in/x.tif:VUV"_s, u"written in/x.tiff in/x.tiff 3"_s);
        row(u"an earlier output is a source by a symbolic link"_s, u"a.tif:WVW b.tif:WWW"_s,
            splitBeside + u" in/a3.tiff>@/in/b.tif"_s,
            u"trouble in/b.tif 0 index 1 beyond bounds [0 .. 0]"_s);
        row(u"an earlier output shares a file with a source"_s, u"a.tif:WVW b.tif:WWW"_s,
            splitBeside + u" in/a3.tiff|in/b.tif"_s, u"created 6"_s);
        row(u"an earlier output makes a source"_s, u"a.tif:WVW b.tif>new.tif"_s,
            splitBeside + u" in/a3.tiff>new.tif"_s,
            u"trouble in/b.tif 0 the file has 1 pages now, 0 were counted before the run"_s);
        row(u"a page of its own source"_s, u"a.tif:WVWUW"_s,
            splitBeside + u" in/a2.tiff>@/in/a.tif"_s, u"created 4"_s);
    }

    void showsWhatOneThreadShows()
    {
        QFETCH(const QString, sources);
        QFETCH(const QString, changes);
        QFETCH(const QString, sign);
        // A file that is there when the next output of that name is made hands on its permissions.
        const auto closeOutputs = [](JobFixture& fixture, qsizetype) {
            const QString event = fixture.events.last();
            if (event.startsWith(u"written in/x/"))
                QFile::setPermissions(fixture.folder.path(event.section(u' ', 2, 2)),
                                      QFile::ReadOwner | QFile::WriteOwner);
        };
        const Outcome one = outcome(sources, changes, 1, closeOutputs);
        QVERIFY2(one.events.contains(sign), qPrintable(one.events.join(u'\n')));
        for (const int jobs : { 2, 8, 2, 8 })
            QCOMPARE(difference(one, outcome(sources, changes, jobs, closeOutputs)), QString());
    }

    void stopsWhereOneThreadStops_data()
    {
        QTest::addColumn<QString>("sources");
        QTest::addColumn<QString>("changes");
        QTest::newRow("split") << mixed << u"outputType=4"_s + mixedChanges;
        QTest::newRow("together") << mixed << together + mixedChanges;
        QTest::newRow("an earlier output is a source")
            << u"a.tif:WVW a2.tiff:WW b.tif:W"_s << splitBeside;
    }

    void stopsWhereOneThreadStops()
    {
        QFETCH(const QString, sources);
        QFETCH(const QString, changes);
        const qsizetype all = outcome(sources, changes, 1).events.size();
        QVERIFY(all > 20);
        for (qsizetype k = 0; k < all; ++k) {
            const auto stop = [=](JobFixture& fixture, qsizetype number) {
                if (number == k)
                    fixture.job.stop();
            };
            const Outcome one = outcome(sources, changes, 1, stop);
            QCOMPARE(difference(one, outcome(sources, changes, 8, stop)), QString());
        }
    }

    void survivesExceptionsAsOneThreadDoes()
    {
        for (const QString& changes :
             { u"outputType=1"_s + mixedChanges, together + mixedChanges }) {
            const Outcome whole = outcome(mixed, changes, 1);
            int thrown = 0;
            for (qsizetype k = 0; k < 2 * whole.events.size(); k += 3) { // of both kinds in turn
                const auto fail = [=](JobFixture& fixture, qsizetype number) {
                    // The end of a run begins with its message; what is thrown there ends the
                    // program.
                    const bool isAtEnd = !fixture.job.message().isEmpty();
                    if (number != k / 2 || isAtEnd || fixture.events.last().startsWith(u"is"))
                        return;
                    if (k % 2 == 0)
                        throw std::runtime_error("an observer fails");
                    throw 7;
                };
                const Outcome one = outcome(mixed, changes, 1, fail);
                thrown += one.events.contains(u"thrown 7"_s) ? 1 : 0;
                QCOMPARE(difference(one, outcome(mixed, changes, 8, fail)), QString());
            }
            QVERIFY(thrown > 5);
        }
    }

    void leavesNothingBehindWhenStoppedAtAnyTime()
    {
        QLoggingCategory::setFilterRules(u"pagestack=false"_s);
        QRandomGenerator random(5);
        int cancelled = 0;
        for (int i = 0; i < 200; ++i) {
            const bool isTogether = i % 2 == 0;
            JobFixture fixture(u"a.tif:WWVWWWW b.tif:WUW c.tif:W d.tif:WBWWWWWW"_s,
                               isTogether ? together + u" jobs=8"_s : u"jobs=8"_s);
            std::thread stopper([&, delay = std::chrono::microseconds(random.bounded(4000))] {
                std::this_thread::sleep_for(delay);
                fixture.job.stop();
            });
            fixture.job.log()->setStored(false);
            fixture.folder.remember();
            fixture.job.start();
            stopper.join();
            cancelled += fixture.job.message() == u"Process cancelled!" ? 1 : 0;
            QCOMPARE(fixture.events.count(u"isCompleted true"_s), 1);
            const QMap<QString, QByteArray> left = fixture.folder.entries();
            int outputs = 0;
            for (const QString& name : left.keys()) {
                QVERIFY2(!name.contains(u".pagestack-"), qPrintable(name));
                outputs += name.startsWith(u"out/") && !name.endsWith(u'/') ? 1 : 0;
            }
            QCOMPARE(outputs, fixture.job.totalFileCreated());
            QCOMPARE(fixture.events.filter(u"written "_s).size(), outputs);
        }
        QLoggingCategory::setFilterRules({});
        QVERIFY(cancelled > 20);
    }

    void holdsNoMoreThanAWindow()
    {
        if (!QDir(u"/proc/self/fd"_s).exists())
            QSKIP("the open files of a program are counted on Linux only");
        const auto countOf = [](const QString& folder, const QString& names) {
            return QDir(folder, names, QDir::NoSort,
                        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
                .entryList()
                .size();
        };
        QString sources = u"many.tif:"_s + QString(300, u'W');
        for (int i = 0; i < 100; ++i)
            sources += u" s%1.tif:W"_s.arg(i);
        for (const QString& changes : { u"jobs=2"_s, together + u" jobs=2"_s }) {
            JobFixture fixture(sources, changes);
            const qsizetype before = countOf(u"/proc/self/fd"_s, {});
            qsizetype mostOpen = 0;
            qsizetype mostStaged = 0;
            fixture.onEvent = [&](const QString& event) {
                if (!event.startsWith(u"page "))
                    return;
                mostOpen = std::max(mostOpen, countOf(u"/proc/self/fd"_s, {}) - before);
                mostStaged = std::max(mostStaged, countOf(fixture.folder.path(u"out"_s), u".*"_s));
            };
            fixture.run();
            // 24 steps, each with a source and an output, and what two workers and the job hold.
            QVERIFY2(mostOpen <= 2 * 24 + 6, qPrintable(QString::number(mostOpen)));
            QVERIFY2(mostStaged <= 24 + 3, qPrintable(QString::number(mostStaged)));
            QVERIFY(mostOpen > 2); // or nothing was prepared
            QCOMPARE(fixture.events.filter(QRegularExpression(u"^page .* Written$"_s)).size(), 400);
            // Two hold the older records of the log.
            QCOMPARE(countOf(u"/proc/self/fd"_s, {}), before + 2);
        }
    }

    void makesNoThreadForOnePage()
    {
        const QDir threads(u"/proc/self/task"_s);
        if (!threads.exists())
            QSKIP("the threads of a program are counted on Linux only");
        for (const auto& [source, jobs, extra] :
             { std::tuple(u"a.tif:W text.tif"_s, 8, 0), std::tuple(u"a.tif:WWWWWWWW"_s, 1, 0),
               std::tuple(u"a.tif:WWWWWWWW"_s, 3, 3) }) {
            JobFixture fixture(source, u"jobs=%1"_s.arg(jobs));
            const qsizetype before = QDir(threads.path()).entryList(QDir::Dirs).size();
            qsizetype most = 0;
            fixture.onEvent = [&](const QString&) {
                most = std::max(most, QDir(threads.path()).entryList(QDir::Dirs).size() - before);
            };
            fixture.run();
            QVERIFY2(most <= extra && (most > 0) == (extra > 0), qPrintable(QString::number(most)));
        }
    }
};

QTEST_GUILESS_MAIN(PagePrefetcherTest)
#include "PagePrefetcherTest.moc"
