#include "engine/threads/MainThread.h"
#include "engine/threads/WorkerThread.h"
#include "tests/engine/job/JobFixture.h"
#include "tests/support/LogDocument.h"
#include "tests/support/Testing.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QRandomGenerator>

#include <tiffio.h>

#include <atomic>
#include <sys/resource.h>
#include <thread>

namespace {

/// All that a run has shown and left.
struct Outcome
{
    QStringList events; ///< with the lines of the system log between them, without durations
    QByteArray log;
    QMap<QString, QByteArray> files; ///< contents and permissions
};

JobFixture* watchedJob = nullptr; ///< lines of the system log are events of it
std::thread::id jobThread;

void takeLogLine(QtMsgType, const QMessageLogContext&, const QString& text)
{
    const bool isOfJob = std::this_thread::get_id() == jobThread;
    if (watchedJob != nullptr)
        watchedJob->record((isOfJob ? u"log "_s : u"log of a worker "_s) + text);
}

QMap<QString, QByteArray> filesOf(const JobFixture& fixture)
{
    QMap<QString, QByteArray> files = fixture.folder.entries();
    for (const QString& name : files.keys()) {
        QByteArray& content = files[name]; // of a link: a path
        content.replace(QFile::encodeName(fixture.folder.path({})), "");
        content += QByteArray::number(QFile::permissions(fixture.folder.path(name)).toInt(), 16);
    }
    return files;
}

/// What `fixture` has shown and left after `run`, which may throw a number. Whether the log says
/// that it was cancelled is left out: the stop may come while the log is written.
Outcome outcomeOf(JobFixture& fixture, const std::function<void()>& run)
{
    watchedJob = &fixture;
    try {
        run();
    } catch (int thrown) {
        fixture.events.append(u"thrown %1"_s.arg(thrown));
    }
    watchedJob = nullptr;
    static const QRegularExpression taken(
        u"^timeTaken.*|(?<=Total Time Taken :).*(?= \\d+/\\d+$)"_s);
    return { fixture.events.replaceInStrings(taken, {}),
             QString::fromUtf8(documentOf(*fixture.job.log()))
                 .remove(fixture.folder.path({}))
                 .remove(QRegularExpression(u" ((Start|End)(Time)?|Cancelled)=\"[^\"]*\""_s))
                 .toUtf8(),
             filesOf(fixture) };
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
    jobThread = std::this_thread::get_id();
    return outcomeOf(fixture, [&] { fixture.run(); });
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
// Pages that are copied many at a time, with one in between that is not.
const QString manyCopied = u"a.tif:WWVWWWWWWWWWUWWWWWWVWWWWWWWWWWWW b.tif:WWWWWWWWWWWW c.tif:WW"_s;
const QString splitBeside = u"outputType=2 isSplitTIFFIntoSinglePages=true outputFolderPath="_s;
const QString large = qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + u"/samples/text-page.tif"_s;

/// `text` with the words in capitals spelled out.
QString spelled(QString text)
{
    return text.replace(u"LARGE"_s, large)
        .replace(u"MANY"_s, manyCopied)
        .replace(u"MIXED"_s, mixed)
        .replace(u"CHANGED"_s, mixedChanges)
        .replace(u"TOGETHER"_s, together)
        .replace(u"SPLIT"_s, splitBeside);
}

const QStringList extensions { u"jpg"_s, u"png"_s, u"tiff"_s, u"bmp"_s, u"gif"_s }; // by type

/// A run, all of it drawn from one number.
struct Draw
{
    explicit Draw(quint32 seed)
    {
        QRandomGenerator random(seed);
        const int outputType = random.bounded(5);
        const QString small = u"a.tif:WWVWWWW b.tif:WUW c.tif:W d.tif:WBWWWWWW"_s;
        const QList<std::pair<QString, QString>> scenes {
            { mixed, mixedChanges },
            { small, // folders in the way of some targets
              u" out/a3.%1/ out/b.tiff/ out/d8.%1/"_s.arg(extensions.at(outputType)) },
            { u"a.tif:WUWWWW b.tif:WW"_s, u" outputFolderPath=nowhere"_s },
            { u"a.tiff:WVWUW b.tiff:WW c.tiff:W"_s, u" outputFolderPath="_s }, // in their place
            { u"a.tif:WW big.tif>%1 b.tif:WWW"_s.arg(large), {} }, // one page for several threads
            { manyCopied, u" keep-compression=true"_s },
            { small, {} },
        };
        const auto& [drawn, more] = scenes.at(random.bounded(scenes.size()));
        sources = drawn;
        changes
            = u"outputType=%1 isSplitTIFFIntoSinglePages=%2 tiffCompressionIndex=%3 verify=%4 checksums=%4"_s
                  .arg(outputType)
                  .arg(outputType == 2 ? random.bounded(2) : 1)
                  .arg(random.bounded(5))
                  .arg(random.bounded(2) == 0 ? u"true"_s : u"false"_s)
            + more;
        whole = outcome(sources, changes, 1);
        jobs = random.bounded(1, 9);
        stopAt = random.bounded(static_cast<int>(whole.events.size()) * 5 / 4);
        hasEventLoop = random.bounded(4) != 0;
    }

    QString sources;
    QString changes;
    Outcome whole; ///< of a run that nobody stops, done by one thread
    int jobs = 1;
    int stopAt = 0; ///< the number of events after which it is stopped, maybe more than there are
    bool hasEventLoop = true; ///< else the main thread only joins, as when the program quits
};

/// Reads all properties all the time, as a window does, stops the run when it has told of `stopAt`
/// events, and reads the log as soon as it is told to be completed. Returns what is wrong.
QString watched(JobFixture& fixture, const std::atomic_int& told, int stopAt)
{
    Process& job = fixture.job;
    int processed = 0;
    int created = 0;
    while (!job.isCompleted()) {
        const int nextProcessed = job.totalFileProcessed();
        const int nextCreated = job.totalFileCreated();
        if (nextProcessed < processed || nextCreated < created)
            return u"a counter goes back"_s;
        processed = nextProcessed;
        created = nextCreated;
        const QString names = job.fileInProcess() + u' ' + job.outputFileInProcess();
        if (names.contains(u'/') || job.timeTaken().isNull() || job.message().isNull())
            return u"an odd text: "_s + names;
        job.log()->logFilePath();
        if (told >= stopAt) {
            stopAt = std::numeric_limits<int>::max();
            fixture.record(u"stop asked"_s);
            job.stop();
        }
        std::this_thread::yield();
    }
    if (job.isCombining() || job.message().isEmpty() || !job.fileInProcess().isEmpty()
        || !job.outputFileInProcess().isEmpty())
        return u"completed, but not at its end"_s;
    if (bytesOf(job.log()->logFilePath()) != documentOf(*job.log()))
        return u"the log is incomplete"_s;
    return fixture.folder.entries().keys().filter(u".pagestack-"_s).join(u' '); // left behind
}

/// Carries out one run, watched by a thread of its own, and returns what is wrong with it: it must
/// be like a run of one thread that is stopped at an event next to which the stop came.
QString faultOf(const Draw& draw, int& cancelled)
{
    JobFixture fixture(draw.sources, draw.changes + u" jobs=%1"_s.arg(draw.jobs));
    std::atomic_int told = 0;
    fixture.onEvent = [&](const QString&) { ++told; };
    QString fault;
    Outcome found = outcomeOf(fixture, [&] {
        std::thread window([&] { fault = watched(fixture, told, draw.stopAt); });
        WorkerThread worker([&] {
            jobThread = std::this_thread::get_id();
            fixture.run();
        });
        QEventLoop loop;
        QObject::connect(&worker, &QThread::finished, &loop, &QEventLoop::quit);
        worker.start();
        if (draw.hasEventLoop)
            loop.exec();
        joinWorker(worker);
        window.join();
    });
    cancelled += fixture.job.message() == u"Process cancelled!" ? 1 : 0;
    const qsizetype asked = found.events.indexOf(u"stop asked"_s);
    const qsizetype stopped = std::max(asked, found.events.indexOf(u"isCombining false"_s));
    if (found.events.sliced(stopped).filter(QRegularExpression(u"^page "_s)).size() > 1)
        return u"goes on after the stop"_s; // with more than the page in hand
    found.events.removeAll(u"stop asked"_s);
    const auto differenceFrom = [&](Outcome expected) {
        for (QStringList* events : { &expected.events, &found.events })
            events->removeAll(u"isCombining false"_s); // the stop's own, which may come late
        return difference(expected, found);
    };
    if (!found.events.filter(u"the search for pages was stopped"_s).isEmpty())
        return fault; // at a moment that no event tells
    QString different = differenceFrom(draw.whole);
    for (qsizetype k = std::max<qsizetype>(0, asked - 1);
         asked >= 0 && k <= stopped && !different.isEmpty(); ++k)
        different = differenceFrom(
            outcome(draw.sources, draw.changes, 1, [&](JobFixture& one, qsizetype) {
                if (one.job.isCombining() && one.events.size() > k)
                    one.job.stop();
            }));
    return fault.isEmpty() ? different : fault;
}

qsizetype countOf(const QString& folder, const QString& names = {})
{
    return QDir(folder, names, QDir::NoSort,
                QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
        .entryList()
        .size();
}

const QString openFiles = u"/proc/self/fd"_s; // empty where the system does not tell

} // namespace

/// Runs of several threads: they show and leave what one thread does, and end at any moment. Many
/// have random formats, numbers of threads and moments of cancel and are watched by another thread:
/// PAGESTACK_STORM is how many, PAGESTACK_STORM_SEED the number from which they are drawn.
/// PAGESTACK_STORM=1 and the seed that a failure tells repeat that run.
class StormTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        TIFFSetWarningHandler(nullptr); // those of the sources' own reader
        qInstallMessageHandler(takeLogLine);
    }

    void showsWhatOneThreadShows_data()
    {
        // The sign must be among what one thread shows, so that the row is about it.
        addTextRows(R"(
MIXED|outputType=0 CHANGED|page in/bad.tif 5 out/bad5.jpg Failed
MIXED|TOGETHER CHANGED|page in/bad.tif 5 out/bad.tiff Failed
a.tif:WFF b.tif:FW|outputType=1|remark in/a.tif 3 1 row
a.tif:WFF b.tif:FW|outputType=2 tiffCompressionIndex=2|remark in/a.tif 3 1 row
a.tif:UWW b.tif:W|outputFolderPath=nowhere|page in/b.tif 1 nowhere/b1.png Failed
x/a.tif:WWW y/a.tif:VV z/a.tif:UWUW|out/a2.png filter=*|page in/z/a.tif 3 out/a3.png Skipped
x/a.tif:W y/a.tif:V z/a.tif:WW w/a.tif:V|TOGETHER filter=*|page in/w/a.tif 1 out/a.tiff Skipped
a.tif:VV b.tif:WWU|out/a2.png>b2.png|created 5
a.tiff:WVWVW b.tiff:W|TOGETHER outputFolderPath=|written in/a.tiff in/a.tiff 5
a.tiff:WVWUW b.tiff:W|TOGETHER outputFolderPath=|trouble in/a.tiff 0 the file is kept as it is, since
a.tif:WVW a2.tiff:WWW b.tif:W|SPLIT|trouble in/a2.tiff 0 index 1 beyond bounds [0 .. 0]
a.tif:WVW b.tif:WWW|SPLIT in/a3.tiff&in/b.tif|created 6
MANY|TOGETHER keep-compression=true in/b.tif:WWWWW|page in/a.tif 32 out/a.tiff Written
a.tiff:WVWVW|TOGETHER keep-compression=true outputFolderPath=|written in/a.tiff in/a.tiff 5
x.tif:VUV x.tiff:WWWWW x.tif|TOGETHER outputFolderPath= in/x.tif:VUV|written in/x.tiff in/x.tiff 3
a.tif:WVW b.tif>new.tif|SPLIT in/a3.tiff>new.tif|trouble in/b.tif 0 the file has 1 pages now
a.tif:WVWUW|SPLIT in/a2.tiff>@/in/a.tif|created 4
)");
        const QString plain = u"a.tif:WWWWWWVWWWWWWW b.tif:WUW c.tif:W d.tif:UU e.tif:WVW"_s;
        for (int i = 0; i < 5; ++i) {
            const QString type = u"outputType=%1 isSplitTIFFIntoSinglePages=true"_s.arg(i);
            QTest::addRow("split, type %d", i) << QStringList { plain, type, u"created 23"_s };
            QTest::addRow("a page for several threads, type %d", i)
                << QStringList { u"a.tif>LARGE"_s, type, u"created 1"_s };
            QTest::addRow("together, compression %d", i)
                << QStringList { plain, u"outputType=2 tiffCompressionIndex=%1"_s.arg(i),
                                 u"created 5"_s };
        }
    }

    void showsWhatOneThreadShows()
    {
        const auto [sources, changes, sign] = textRow<3>();
        // A file that is there when the next output of that name is made hands on its permissions.
        const auto closeOutputs = [](JobFixture& fixture, qsizetype) {
            const QString event = fixture.events.last();
            if (event.startsWith(u"written in/x/"))
                QFile::setPermissions(fixture.folder.path(event.section(u' ', 2, 2)),
                                      QFile::ReadOwner | QFile::WriteOwner);
        };
        const auto run = [&, list = spelled(sources), more = spelled(changes)](int jobs) {
            return outcome(list, more, jobs, closeOutputs);
        };
        const Outcome one = run(1);
        QVERIFY2(!one.events.filter(sign).isEmpty(), qPrintable(one.events.join(u'\n')));
        for (const int jobs : { 2, 8 })
            QCOMPARE(difference(one, run(jobs)), QString());
    }

    void failsWhereOneThreadDoes_data()
    {
        addTextRows("MIXED|CHANGED\nMANY|TOGETHER keep-compression=true");
    }

    void failsWhereOneThreadDoes()
    {
        const auto [list, more] = textRow<2>();
        const auto run = [sources = spelled(list), changes = spelled(more)](int jobs, auto trap) {
            return outcome(sources, changes, jobs, trap);
        };
        const qsizetype all = run(1, nullptr).events.size();
        int thrown = 0;
        for (qsizetype k = 0; k < all; k += 2) {
            const auto trap = [&](JobFixture& fixture, qsizetype number) {
                // The end of a run begins with its message; what is thrown there ends the program.
                if (number != k || !fixture.job.message().isEmpty()
                    || fixture.events.last().startsWith(u"is"))
                    return;
                if (k % 4 == 0)
                    throw std::runtime_error("an observer fails");
                throw 7;
            };
            const Outcome one = run(1, trap);
            thrown += one.events.contains(u"thrown 7"_s) ? 1 : 0;
            QCOMPARE(difference(one, run(8, trap)), QString());
        }
        QVERIFY(thrown > 5);
    }

    /// Of the steps that are prepared ahead, where few files may be open.
    void holdsNoMoreThanAWindow()
    {
        constexpr int window = 10;
        const qsizetype before = countOf(openFiles);
        if (before == 0)
            QSKIP("the open files of a program are counted on Linux only");
        rlimit whole {};
        ::getrlimit(RLIMIT_NOFILE, &whole);
        const rlimit few { 80, whole.rlim_max };
        JobFixture fixture(u"many.tif:"_s + QString(60, u'W'), u"jobs=2"_s);
        qsizetype mostOpen = 0;
        qsizetype mostAhead = 0; // files that were not told of
        fixture.onEvent = [&](const QString& event) {
            // Once, the workers get time to go too far.
            const QDeadlineTimer end(event.startsWith(u"page in/many.tif 30 ") ? 300 : 0);
            do {
                mostOpen = std::max(mostOpen, countOf(openFiles) - before);
                mostAhead = std::max(mostAhead,
                                     countOf(fixture.folder.path(u"out"_s))
                                         - fixture.job.totalFileCreated());
            } while (!end.hasExpired() && mostAhead <= window);
        };
        ::setrlimit(RLIMIT_NOFILE, &few);
        fixture.run();
        ::setrlimit(RLIMIT_NOFILE, &whole);
        // Each step has a source and an output; the rest is what two workers and the job hold.
        QVERIFY2(mostOpen <= 2 * window + 6, qPrintable(QString::number(mostOpen)));
        QVERIFY2(mostAhead <= window + 3, qPrintable(QString::number(mostAhead)));
        QVERIFY(mostAhead > 2); // or nothing was prepared
        QCOMPARE(fixture.job.totalFileCreated(), 60);
        QCOMPARE(countOf(openFiles), before);
    }

    /// A file that another program removes before the run tells of it was told as written.
    void makesAgainWhatIsRemovedBeforeItsTurn()
    {
        JobFixture fixture(u"many.tif:"_s + QString(90, u'W'), u"jobs=2"_s);
        bool isRemoved = false;
        fixture.onEvent = [&](const QString& event) {
            if (!event.startsWith(u"page in/many.tif 60 "))
                return;
            const QString next = fixture.folder.path(u"out/many61.png"_s);
            const QDeadlineTimer end(20000);
            while (!QFile::exists(next) && !end.hasExpired())
                QThread::msleep(1);
            isRemoved = QFile::remove(next);
        };
        fixture.run();
        QVERIFY(isRemoved);
        QCOMPARE(countOf(fixture.folder.path(u"out"_s)), 90);
    }

    /// A cancel would take a file back on which another run, which leaves alone what is there,
    /// has counted.
    void namesNoFileAheadWhereFilesMayBeLeftAlone()
    {
        JobFixture fixture(u"many.tif:"_s + QString(60, u'W'), u"jobs=2"_s);
        fixture.job.setTargetFilter(&Process::isFreeTarget);
        qsizetype mostAhead = 0;
        fixture.onEvent = [&](const QString& event) {
            const QDeadlineTimer end(event.startsWith(u"page in/many.tif 9 ") ? 100 : 0);
            do
                mostAhead = std::max(mostAhead,
                                     countOf(fixture.folder.path(u"out"_s), u"many*"_s)
                                         - fixture.job.totalFileCreated());
            while (!end.hasExpired());
        };
        fixture.run();
        QCOMPARE(mostAhead, 0);
        QCOMPARE(fixture.job.totalFileCreated(), 60);
    }

    void endsEveryRunOnceAndClean()
    {
        const auto first = qEnvironmentVariable(
            "PAGESTACK_STORM_SEED", QString::number(QRandomGenerator::global()->generate()));
        const int runs = qEnvironmentVariable("PAGESTACK_STORM", u"50"_s).toInt();
        int cancelled = 0;
        for (int i = 0; i < runs; ++i) {
            const QByteArray name = QByteArray::number(first.toUInt() + static_cast<quint32>(i));
            std::fprintf(stderr, "seed %s\n", name.constData()); // so a run that hangs is known
            const Draw draw(name.toUInt());
            const qsizetype before = countOf(openFiles);
            const QString fault = faultOf(draw, cancelled);
            QVERIFY2(fault.isEmpty(), "seed " + name + ": " + fault.toUtf8());
            QVERIFY2(countOf(openFiles) == before, name);
        }
        QVERIFY(cancelled > 0 || runs < 10);
    }
};

QTEST_GUILESS_MAIN(StormTest)
#include "StormTest.moc"
