#include "engine/threads/MainThread.h"
#include "engine/threads/WorkerThread.h"
#include "tests/engine/job/JobFixture.h"
#include "tests/support/LogDocument.h"
#include "tests/support/Testing.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QHash>
#include <QRandomGenerator>
#include <QSemaphore>

#include <tiffio.h>

#include <atomic>
#include <chrono>
#include <sys/resource.h>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

/// All that a run has shown and left.
struct Outcome
{
    QStringList events; ///< with the lines of the system log between them, without durations
    QByteArray log;
    QMap<QString, QByteArray> files; ///< contents and permissions
    QMap<QString, QString> words; ///< of TestFolder::changes, by file name
    std::chrono::microseconds duration {};
};

/// Where lines of the system log go while a run is watched: to the events of the run, or nowhere.
struct LogWatch
{
    static inline LogWatch* current = nullptr;
    static void take(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        const bool isOfJob = std::this_thread::get_id() == current->jobThread;
        if (current->fixture != nullptr)
            current->fixture->record((isOfJob ? u"log "_s : u"log of a worker "_s) + text);
    }

    explicit LogWatch(JobFixture* watched)
        : fixture(watched)
    {
        current = this;
        before = qInstallMessageHandler(take);
    }
    ~LogWatch() { qInstallMessageHandler(before); }

    JobFixture* fixture;
    const std::thread::id jobThread = std::this_thread::get_id();
    QtMessageHandler before;
};

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

QMap<QString, QString> wordsOf(const JobFixture& fixture)
{
    QMap<QString, QString> words;
    for (const QString& word : fixture.folder.changes().split(u' ', Qt::SkipEmptyParts))
        words[word.section(u'[', 0, 0)] = word;
    return words;
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
    const LogWatch watch(&fixture);
    const Clock::time_point start = Clock::now();
    try {
        fixture.run();
    } catch (int thrown) {
        fixture.events.append(u"thrown %1"_s.arg(thrown));
    }
    Outcome found;
    found.duration = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    static const QRegularExpression taken(
        u"^timeTaken.*|(?<=Total Time Taken :).*(?= \\d+/\\d+$)"_s);
    for (QString event : fixture.events)
        found.events.append(event.remove(taken));
    found.log = QString::fromUtf8(documentOf(*fixture.job.log()))
                    .remove(fixture.folder.path({}))
                    .remove(QRegularExpression(u"(Start|End)(Time)?=\"[^\"]*\""_s))
                    .toUtf8();
    found.files = filesOf(fixture);
    found.words = wordsOf(fixture);
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

enum class Cancel {
    Never,
    AfterDelay,
    AtCheckPoint, ///< the job goes on meanwhile
    AtCheckPointAwaited, ///< the job waits for it there
};

const QStringList extensions { u"jpg"_s, u"png"_s, u"tiff"_s, u"bmp"_s, u"gif"_s }; // by type

bool isCheckPoint(const QString& event)
{
    return event.startsWith(u"page ") || event.startsWith(u"processed ");
}

/// A run that nobody stops, done by one thread.
const Outcome& referenceOf(const QString& sources, const QString& changes)
{
    static QHash<QString, Outcome> known;
    Outcome& reference = known[sources + u'\n' + changes];
    if (reference.events.isEmpty())
        reference = outcome(sources, changes, 1);
    return reference;
}

/// A run, all of it drawn from one number.
struct Draw
{
    Draw(quint32 number, int outputType)
        : seed(number)
    {
        const quint32 numbers[] = { seed, static_cast<quint32>(outputType) };
        QRandomGenerator random(numbers);
        const QString extension = extensions.at(outputType);
        const bool isTogether = outputType == 2 && random.bounded(2) == 0;
        changes = u"outputType=%1 isSplitTIFFIntoSinglePages=%2 tiffCompressionIndex=%3"_s
                      .arg(outputType)
                      .arg(isTogether ? 0 : 1)
                      .arg(random.bounded(5));
        const QString small = u"a.tif:WWVWWWW b.tif:WUW c.tif:W d.tif:WBWWWWWW"_s;
        switch (random.bounded(9)) {
        case 0: // sources in trouble
            sources = mixed;
            changes += mixedChanges;
            break;
        case 1: // folders in the way of some targets
            sources = small;
            changes += u" out/a3.%1/ out/b.tiff/ out/d8.%1/"_s.arg(extension);
            break;
        case 2: // no target folder
            sources = u"a.tif:WUWWWW b.tif:WW"_s;
            changes += u" outputFolderPath=nowhere"_s;
            break;
        case 3: // beside the sources; TIFF files in their place
            sources = u"a.tiff:WVWUW b.tiff:WW c.tiff:W"_s;
            changes += u" outputFolderPath="_s;
            break;
        case 4: // one page is large enough for several threads
            sources = u"a.tif:WW big.tif>%1 b.tif:WWW"_s.arg(
                qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + u"/samples/text-page.tif"_s);
            break;
        default:
            sources = small;
        }
        const Outcome& whole = referenceOf(sources, changes);
        jobs = random.bounded(1, 9);
        cancel = static_cast<Cancel>(random.bounded(4));
        checkPoint = random.bounded(static_cast<qint64>(
            std::count_if(whole.events.begin(), whole.events.end(), isCheckPoint)));
        delay = random.bounded(3) == 0 ? 0 : random.bounded(2 * qint64 { whole.duration.count() });
        hasEventLoop = random.bounded(4) != 0;
    }

    QByteArray text() const
    {
        return u"seed %1, jobs=%2, cancel %3 (check point %4, %5 us), %6, \"%7\", \"%8\""_s
            .arg(seed)
            .arg(jobs)
            .arg(static_cast<int>(cancel))
            .arg(checkPoint)
            .arg(delay)
            .arg(hasEventLoop ? u"event loop"_s : u"joined"_s, sources, changes)
            .toUtf8();
    }

    quint32 seed;
    QString sources;
    QString changes;
    int jobs = 1;
    Cancel cancel = Cancel::Never;
    qsizetype checkPoint = 0;
    qint64 delay = 0; ///< in microseconds
    bool hasEventLoop = true; ///< else the main thread only joins, as when the program quits
};

/// Reads all properties all the time, as a window does, and the log as soon as the run is told to
/// be completed. Returns what is wrong.
QString watched(const Process& job, const TestFolder& folder)
{
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
        std::this_thread::yield();
    }
    if (job.isCombining() || job.message().isEmpty() || !job.fileInProcess().isEmpty()
        || !job.outputFileInProcess().isEmpty())
        return u"completed, but not at its end"_s;
    QFile file(job.log()->logFilePath());
    if (!file.open(QIODevice::ReadOnly))
        return u"no log"_s;
    const QByteArray content = file.readAll();
    if (content != documentOf(*job.log()))
        return u"the log is incomplete: "_s + QString::fromUtf8(content);
    for (const QString& name : folder.entries().keys())
        if (name.contains(u".pagestack-"))
            return u"left behind: "_s + name;
    return {};
}

/// Runs the job on a thread of its own while the main thread does what `draw` says.
void run(JobFixture& fixture, const Draw& draw)
{
    const LogWatch quiet(nullptr);
    WorkerThread worker([&] { fixture.run(); });
    QEventLoop loop;
    QObject::connect(&worker, &QThread::finished, &loop, &QEventLoop::quit);
    worker.start();
    if (draw.hasEventLoop)
        loop.exec();
    joinWorker(worker);
}

/// What is wrong with the order of the announcements and the message at the end: one text, or one
/// of two when the stop came while the run ended.
QString faultInAnnouncements(const JobFixture& fixture, const Draw& draw)
{
    const QStringList& events = fixture.events;
    QStringList jobsOwn = events;
    jobsOwn.removeAll(u"stop asked"_s);
    jobsOwn.removeAll(u"isCombining false"_s);
    if (events.count(u"isCompleted true"_s) != 1 || jobsOwn.last() != u"isCompleted true")
        return u"not completed once and last"_s;
    const qsizetype stopped = events.indexOf(u"isCombining false"_s);
    const int inHand = draw.cancel == Cancel::AtCheckPointAwaited ? 0 : 1;
    if (events.sliced(stopped).filter(QRegularExpression(u"^page "_s)).size() > inHand)
        return u"goes on after the stop"_s;
    const int created = fixture.job.totalFileCreated();
    QStringList messages { created == fixture.job.outputFiles().size()
                               ? u"All files converted successfully."_s
                               : u"Total %1 files converted successfully."_s.arg(created) };
    const qsizetype told = events.lastIndexOf(QRegularExpression(u"^message .*"_s));
    const qsizetype asked = events.indexOf(u"stop asked"_s);
    if (asked >= 0 && asked < told) {
        messages.append(u"Process cancelled!"_s);
        // What it announces after the stop and before its message, it does with the stop seen.
        if (told - stopped > 1)
            messages.removeFirst();
    }
    for (const std::shared_ptr<LogFiles>& source : fixture.job.log()->files)
        if (!source->status.isEmpty() && source->status != u"Unable to Open File!")
            messages = { u"Pagestack unable able to convert some of the files!\r\n"
                         "Please check log for more information."_s };
    return messages.contains(fixture.job.message()) ? QString() : fixture.job.message();
}

QString faultInFiles(const JobFixture& fixture, const Outcome& whole)
{
    const QMap<QString, QString> words = wordsOf(fixture);
    QStringList written;
    for (const QString& event : fixture.events.filter(QRegularExpression(u"^written "_s))) {
        const QString path = event.section(u' ', 2, 2);
        const QString word = words.value(path);
        written.append(path);
        // As the whole run leaves it, or the first pages of that.
        if (filesOf(fixture).value(path) != whole.files.value(path)
            && !(path.endsWith(u".tiff")
                 && word.section(u'[', 1).count(u'/') == event.section(u' ', 3).toInt()
                 && whole.words.value(path).startsWith(word.chopped(1) + u',')))
            return u"incomplete: "_s + path + word;
    }
    written.sort();
    if (written != words.keys() || written.size() != fixture.job.totalFileCreated())
        return u"announced %1, there is %2, counted %3"_s.arg(written.join(u' '))
            .arg(words.keys().join(u' '))
            .arg(fixture.job.totalFileCreated());
    return {};
}

/// Carries out one run, stopped from a thread of its own when the draw says so, and returns what is
/// wrong with it.
QString faultOf(const Draw& draw, bool& isCancelled)
{
    JobFixture fixture(draw.sources, draw.changes + u" jobs=%1"_s.arg(draw.jobs));
    QSemaphore reached;
    QSemaphore stopped;
    std::atomic_bool isOver = false;
    fixture.onEvent = [&, left = draw.checkPoint](const QString& event) mutable {
        if (draw.cancel < Cancel::AtCheckPoint || !isCheckPoint(event) || left-- != 0)
            return;
        reached.release();
        if (draw.cancel == Cancel::AtCheckPointAwaited)
            stopped.acquire();
    };
    std::thread canceller([&] {
        if (draw.cancel == Cancel::AfterDelay)
            std::this_thread::sleep_for(std::chrono::microseconds(draw.delay));
        else
            reached.acquire();
        if (isOver || draw.cancel == Cancel::Never)
            return;
        fixture.record(u"stop asked"_s);
        fixture.job.stop();
        stopped.release();
    });
    QString seen;
    std::thread window([&] { seen = watched(fixture.job, fixture.folder); });
    run(fixture, draw);
    isOver = true;
    reached.release();
    canceller.join();
    window.join();
    isCancelled = fixture.job.message() == u"Process cancelled!";
    if (seen.isEmpty())
        seen = faultInAnnouncements(fixture, draw);
    return seen.isEmpty() ? faultInFiles(fixture, referenceOf(draw.sources, draw.changes)) : seen;
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
/// PAGESTACK_STORM=1, the seed that a failure tells and its row repeat that run.
class StormTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TIFFSetWarningHandler(nullptr); } // those of the sources' own reader

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
        row(u"same targets, existing are skipped"_s, u"x/a.tif:WWW y/a.tif:VV z/a.tif:UWUW"_s,
            u"out/a2.png filter=*"_s, u"page in/z/a.tif 3 out/a3.png Skipped"_s);
        row(u"same targets, together"_s, u"x/a.tif:W y/a.tif:V z/a.tif:WW w/a.tif:V"_s,
            together + u" filter=*"_s, u"page in/w/a.tif 1 out/a.tiff Skipped"_s);
        row(u"same target through a link"_s, u"a.tif:VV b.tif:WWU"_s, u"out/a2.png>b2.png"_s,
            u"created 5"_s);
        row(u"in the place of the source"_s, u"a.tiff:WVWVW b.tiff:W"_s,
            together + u" outputFolderPath="_s, u"written in/a.tiff in/a.tiff 5"_s);
        row(u"the same with a tag that would be lost"_s, u"a.tiff:WVWUW b.tiff:W"_s,
            together + u" outputFolderPath="_s,
            u"trouble in/a.tiff 0 the file is kept as it is, since 1 tag would be lost: tag 65100"_s);
        row(u"an earlier output is a source"_s, u"a.tif:WVW a2.tiff:WWW b.tif:W"_s, splitBeside,
            u"trouble in/a2.tiff 0 index 1 beyond bounds [0 .. 0]"_s);
        row(u"an earlier output shares a file with a source"_s, u"a.tif:WVW b.tif:WWW"_s,
            splitBeside + u" in/a3.tiff|in/b.tif"_s, u"created 6"_s);
        row(u"the same, together"_s, u"x.tif:VUV x.tiff:WWWWW x.tif"_s,
            together + u" outputFolderPath= in/x.tif:VUV"_s, u"written in/x.tiff in/x.tiff 3"_s);
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

    void stopsAndFailsWhereOneThreadDoes_data()
    {
        QTest::addColumn<QString>("sources");
        QTest::addColumn<QString>("changes");
        QTest::newRow("split") << mixed << u"outputType=1"_s + mixedChanges;
        QTest::newRow("together") << mixed << together + mixedChanges;
        QTest::newRow("an earlier output is a source")
            << u"a.tif:WVW a2.tiff:WW b.tif:W"_s << splitBeside;
    }

    void stopsAndFailsWhereOneThreadDoes()
    {
        QFETCH(const QString, sources);
        QFETCH(const QString, changes);
        const qsizetype all = outcome(sources, changes, 1).events.size();
        int thrown = 0;
        for (qsizetype k = 0; k < all; ++k) {
            const auto trap = [&](JobFixture& fixture, qsizetype number) {
                // The end of a run begins with its message; what is thrown there ends the program.
                const bool isAtEnd
                    = !fixture.job.message().isEmpty() || fixture.events.last().startsWith(u"is");
                if (number == k && (k % 3 == 0 || isAtEnd))
                    fixture.job.stop();
                else if (number == k && k % 3 == 1)
                    throw std::runtime_error("an observer fails");
                else if (number == k)
                    throw 7;
            };
            const Outcome one = outcome(sources, changes, 1, trap);
            thrown += one.events.contains(u"thrown 7"_s) ? 1 : 0;
            QCOMPARE(difference(one, outcome(sources, changes, 8, trap)), QString());
        }
        QVERIFY(thrown > 5);
    }

    void holdsNoMoreThanAWindow_data()
    {
        QTest::addColumn<int>("limit"); // of open files; 0: as it is
        QTest::addColumn<QString>("changes");
        QTest::addColumn<int>("window"); // steps that are prepared ahead
        QTest::newRow("split") << 0 << u"jobs=2"_s << 24;
        QTest::newRow("together") << 0 << together + u" jobs=2"_s << 24;
        QTest::newRow("few files may be open") << 80 << u"jobs=2"_s << 10;
    }

    void holdsNoMoreThanAWindow()
    {
        QFETCH(const int, limit);
        QFETCH(const QString, changes);
        QFETCH(const int, window);
        if (countOf(openFiles) == 0)
            QSKIP("the open files of a program are counted on Linux only");
        rlimit whole {};
        ::getrlimit(RLIMIT_NOFILE, &whole);
        const rlimit few { limit == 0 ? whole.rlim_cur : static_cast<rlim_t>(limit),
                           whole.rlim_max };
        QString sources = u"many.tif:"_s + QString(600, u'W');
        for (int i = 0; i < 100; ++i)
            sources += u" s%1.tif:W"_s.arg(i);
        JobFixture fixture(sources, changes);
        const qsizetype before = countOf(openFiles);
        qsizetype mostOpen = 0;
        qsizetype mostStaged = 0;
        std::size_t mostRecords = 0; // of the log, the others are put aside
        fixture.onEvent = [&](const QString& event) {
            if (!event.startsWith(u"page "))
                return;
            mostRecords = std::max(mostRecords, fixture.job.log()->files.back()->logFiles.size());
            // Once, the workers get time to go too far.
            const QDeadlineTimer end(event.startsWith(u"page in/many.tif 30 ") ? 300 : 0);
            do {
                mostOpen = std::max(mostOpen, countOf(openFiles) - before);
                mostStaged = std::max(mostStaged, countOf(fixture.folder.path(u"out"_s), u".*"_s));
            } while (!end.hasExpired() && mostStaged <= window);
        };
        ::setrlimit(RLIMIT_NOFILE, &few);
        fixture.run();
        ::setrlimit(RLIMIT_NOFILE, &whole);
        // Each step has a source and an output; the rest is what two workers and the job hold.
        QVERIFY2(mostOpen <= 2 * window + 6, qPrintable(QString::number(mostOpen)));
        QVERIFY2(mostStaged <= window + 3, qPrintable(QString::number(mostStaged)));
        QVERIFY(mostOpen > 2); // or nothing was prepared
        QCOMPARE(fixture.events.filter(QRegularExpression(u"^page .* Written$"_s)).size(), 700);
        QVERIFY2(mostRecords <= 501, qPrintable(QString::number(mostRecords)));
        QCOMPARE(countOf(openFiles), before + 1); // one holds the older records of the log
    }

    void endsEveryRunOnceAndClean_data()
    {
        QTest::addColumn<int>("outputType");
        for (int type = 0; type < extensions.size(); ++type)
            QTest::newRow(qPrintable(extensions.at(type))) << type;
    }

    void endsEveryRunOnceAndClean()
    {
        QFETCH(const int, outputType);
        const int runs = (m_runs + 4) / 5;
        for (int i = 0; i < runs; ++i) {
            const Draw draw(m_seed + static_cast<quint32>(i), outputType);
            qInfo("%s", draw.text().constData()); // so a run that hangs is known
            const qsizetype before = countOf(openFiles);
            bool isCancelled = false;
            const QString fault = faultOf(draw, isCancelled);
            QVERIFY2(fault.isEmpty(), (draw.text() + ": " + fault.toUtf8()).constData());
            QVERIFY2(countOf(openFiles) == before, draw.text().constData());
            m_cancelled += isCancelled ? 1 : 0;
            ++m_ended;
        }
    }

    void cleanupTestCase() { QVERIFY(m_cancelled > 0 || m_ended < 60); }

private:
    const int m_runs = std::max(1, qEnvironmentVariable("PAGESTACK_STORM", u"60"_s).toInt());
    const quint32 m_seed
        = qEnvironmentVariable("PAGESTACK_STORM_SEED",
                               QString::number(QRandomGenerator::global()->generate()))
              .toUInt();
    int m_ended = 0; // runs, and those that were cancelled
    int m_cancelled = 0;
};

QTEST_GUILESS_MAIN(StormTest)
#include "StormTest.moc"
