#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "engine/threads/WorkerThread.h"
#include "tests/engine/job/JobFixture.h"
#include "tests/support/LogDocument.h"
#include "tests/support/Testing.h"

#include <QEventLoop>
#include <QHash>
#include <QRandomGenerator>
#include <QXmlStreamReader>

#include <tiffio.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

enum class Cancel {
    Never,
    AtOnce,
    AfterDelay,
    AtCheckPoint, ///< the job goes on meanwhile
    AtCheckPointAwaited, ///< the job waits for it there
};
constexpr const char* cancelNames[]
    = { "never", "at once", "after a delay", "at a check point", "at a check point, awaited" };

const QStringList extensions { u"jpg"_s, u"png"_s, u"tiff"_s, u"bmp"_s, u"gif"_s }; // by type

bool isCheckPoint(const QString& event)
{
    return event.startsWith(u"page ") || event.startsWith(u"processed ");
}

/// What a run that nobody stops shows and leaves, done by one thread.
struct Reference
{
    QMap<QString, QByteArray> files;
    QMap<QString, QString> words; ///< of TestFolder::changes, by file name
    qsizetype checkPoints = 0;
    std::chrono::microseconds duration {};
};

QMap<QString, QString> wordsByName(const QString& changes)
{
    QMap<QString, QString> words;
    for (const QString& word : changes.split(u' ', Qt::SkipEmptyParts))
        words[word.section(u'[', 0, 0)] = word;
    return words;
}

const Reference& referenceOf(const QString& sources, const QString& changes)
{
    static QHash<QString, Reference> known;
    Reference& reference = known[sources + u'\n' + changes];
    if (reference.checkPoints > 0)
        return reference;
    JobFixture fixture(sources, changes + u" jobs=1"_s);
    fixture.job.log()->setStored(false);
    const Clock::time_point start = Clock::now();
    fixture.run();
    reference.duration
        = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    reference.files = fixture.folder.entries();
    reference.words = wordsByName(fixture.folder.changes());
    reference.checkPoints
        = std::count_if(fixture.events.begin(), fixture.events.end(), isCheckPoint);
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
            sources
                = u"text.tif gone.tif>nowhere bad.tif:WBWUBV more.tif:W less.tif:WWWW c.tif:U"_s;
            changes += u" in/more.tif:WWW in/less.tif:WW"_s;
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
        const Reference& whole = referenceOf(sources, changes);
        jobs = random.bounded(1, 9);
        cancel = static_cast<Cancel>(random.bounded(5));
        checkPoint = random.bounded(whole.checkPoints);
        delay
            = std::chrono::microseconds(random.bounded(2 * qint64 { whole.duration.count() } + 1));
        hasEventLoop = random.bounded(4) != 0;
    }

    QByteArray text() const
    {
        return u"seed %1, jobs=%2, stopped %3 (check point %4, %5 us), %6, \"%7\", \"%8\""_s
            .arg(seed)
            .arg(jobs)
            .arg(QLatin1StringView(cancelNames[static_cast<int>(cancel)]))
            .arg(checkPoint)
            .arg(delay.count())
            .arg(hasEventLoop ? u"event loop"_s : u"joined"_s, sources, changes)
            .toUtf8();
    }

    quint32 seed;
    QString sources;
    QString changes;
    int jobs = 1;
    Cancel cancel = Cancel::Never;
    qsizetype checkPoint = 0;
    std::chrono::microseconds delay {};
    bool hasEventLoop = true; ///< else the main thread only joins, as when the program quits
};

/// Stops a job from a thread of its own when the draw says so, unless the run is over before.
class Canceller
{
public:
    Canceller(JobFixture& fixture, const Draw& draw)
        : m_fixture(fixture)
        , m_draw(draw)
    {
        fixture.onEvent = [this](const QString& event) { meet(event); };
        if (draw.cancel != Cancel::Never)
            m_thread = std::thread([this] { waitAndStop(); });
    }
    ~Canceller()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_all();
        if (m_thread.joinable())
            m_thread.join();
    }
    Canceller(const Canceller&) = delete;
    Canceller& operator=(const Canceller&) = delete;

private:
    void meet(const QString& event)
    {
        if (m_draw.cancel < Cancel::AtCheckPoint || !isCheckPoint(event))
            return;
        std::unique_lock lock(m_mutex);
        if (m_checkPoints++ != m_draw.checkPoint)
            return;
        m_isReached = true;
        m_changed.notify_all();
        if (m_draw.cancel == Cancel::AtCheckPointAwaited)
            m_changed.wait(lock, [this] { return m_isStopped; });
    }

    void waitAndStop()
    {
        {
            std::unique_lock lock(m_mutex);
            if (m_draw.cancel == Cancel::AfterDelay)
                m_changed.wait_for(lock, m_draw.delay, [this] { return m_isOver; });
            else if (m_draw.cancel != Cancel::AtOnce)
                m_changed.wait(lock, [this] { return m_isOver || m_isReached; });
            if (m_isOver)
                return;
        }
        m_fixture.record(u"stop asked"_s);
        m_fixture.job.stop();
        const std::scoped_lock lock(m_mutex);
        m_isStopped = true;
        m_changed.notify_all();
    }

    JobFixture& m_fixture;
    const Draw& m_draw;
    std::mutex m_mutex; ///< guards the fields below
    std::condition_variable m_changed;
    qsizetype m_checkPoints = 0;
    bool m_isReached = false;
    bool m_isStopped = false;
    bool m_isOver = false;
    std::thread m_thread; ///< last: it uses the others
};

/// Ends the program when no run ends for long, and tells which one it was.
class Watchdog
{
public:
    ~Watchdog()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

    void begin(const QByteArray& run)
    {
        const std::scoped_lock lock(m_mutex);
        m_run = run;
        ++m_runs;
        m_changed.notify_all();
    }

private:
    void watch()
    {
        std::unique_lock lock(m_mutex);
        int seen = m_runs;
        while (!m_isOver) {
            m_changed.wait_for(lock, std::chrono::seconds(60),
                               [&] { return m_isOver || m_runs != seen; });
            if (m_isOver)
                return;
            if (m_runs == seen) {
                std::fprintf(stderr, "no run has ended for 60 s: %s\n", m_run.constData());
                std::abort();
            }
            seen = m_runs;
        }
    }

    std::mutex m_mutex; ///< guards the fields below
    std::condition_variable m_changed;
    QByteArray m_run;
    int m_runs = 0;
    bool m_isOver = false;
    std::thread m_thread { [this] { watch(); } };
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
        if (job.outputFiles().size() < processed || job.settings() == nullptr)
            return u"an odd plan"_s;
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
    QXmlStreamReader xml(content);
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError() || content != documentOf(*job.log()))
        return u"the log is incomplete: "_s + QString::fromUtf8(content);
    for (const QString& name : folder.entries().keys())
        if (name.contains(u".pagestack-"))
            return u"left behind: "_s + name;
    return {};
}

/// Runs the job on a thread of its own while the main thread does what `draw` says.
void run(JobFixture& fixture, const Draw& draw)
{
    WorkerThread worker([&] { fixture.run(); });
    QEventLoop loop;
    QObject::connect(&worker, &QThread::finished, &loop, &QEventLoop::quit);
    worker.start();
    if (draw.hasEventLoop)
        loop.exec();
    joinWorker(worker);
}

/// What the final message must be among: one text, or two when the stop came while the run ended.
QStringList allowedMessages(const JobFixture& fixture)
{
    for (const std::shared_ptr<LogFiles>& source : fixture.job.log()->files)
        if (!source->status.isEmpty() && source->status != u"Unable to Open File!")
            return { u"Pagestack unable able to convert some of the files!\r\n"
                     "Please check log for more information."_s };
    const int created = fixture.job.totalFileCreated();
    const QString done = created == fixture.job.outputFiles().size()
        ? u"All files converted successfully."_s
        : u"Total %1 files converted successfully."_s.arg(created);
    const QString cancelled = u"Process cancelled!"_s;
    const QStringList& events = fixture.events;
    const qsizetype told = events.lastIndexOf(QRegularExpression(u"^message .*"_s));
    const qsizetype asked = events.indexOf(u"stop asked"_s);
    if (asked < 0 || asked > told)
        return { done };
    // What the job announces after the stop and before its message, it does with the stop seen.
    const qsizetype stopped = events.indexOf(u"isCombining false"_s);
    return told - stopped > 1 ? QStringList { cancelled } : QStringList { done, cancelled };
}

QString faultInAnnouncements(const JobFixture& fixture, const Draw& draw)
{
    const QStringList& events = fixture.events;
    QStringList jobsOwn = events;
    jobsOwn.removeAll(u"stop asked"_s);
    jobsOwn.removeAll(u"isCombining false"_s);
    if (events.count(u"isCompleted true"_s) != 1 || jobsOwn.last() != u"isCompleted true")
        return u"not completed once and last"_s;
    const QStringList messages = allowedMessages(fixture);
    if (!messages.contains(fixture.job.message()))
        return u"message \"%1\" instead of %2"_s.arg(fixture.job.message(), messages.join(u'|'));
    const qsizetype stopped = events.indexOf(u"isCombining false"_s);
    const int inHand = draw.cancel == Cancel::AtCheckPointAwaited ? 0 : 1;
    if (events.sliced(stopped).filter(QRegularExpression(u"^page "_s)).size() > inHand)
        return u"goes on after the stop"_s;
    return {};
}

/// Whether `path` is as the whole run leaves it, or holds `pages` first pages of that.
bool isWhole(const JobFixture& fixture, const QString& path, const QString& word, int pages,
             const Reference& whole)
{
    if (fixture.folder.entries().value(path) == whole.files.value(path))
        return true;
    return path.endsWith(u".tiff") && word.section(u'[', 1).count(u'/') == pages
        && whole.words.value(path).startsWith(word.chopped(1) + u',');
}

QString faultInFiles(const JobFixture& fixture, const Reference& whole)
{
    const QMap<QString, QString> words = wordsByName(fixture.folder.changes());
    QStringList written;
    for (const QString& event : fixture.events.filter(QRegularExpression(u"^written "_s))) {
        const QString path = event.section(u' ', 2, 2);
        written.append(path);
        if (!isWhole(fixture, path, words.value(path), event.section(u' ', 3).toInt(), whole))
            return u"incomplete: "_s + words.value(path, path);
    }
    written.sort();
    if (written != words.keys() || written.size() != fixture.job.totalFileCreated())
        return u"announced %1, there is %2, counted %3"_s.arg(written.join(u' '))
            .arg(words.keys().join(u' '))
            .arg(fixture.job.totalFileCreated());
    return {};
}

/// Carries out one run and returns what is wrong with it.
QString faultOf(const Draw& draw, bool& isCancelled)
{
    JobFixture fixture(draw.sources, draw.changes + u" jobs=%1"_s.arg(draw.jobs));
    QString seen;
    {
        const Canceller canceller(fixture, draw);
        std::thread window([&] { seen = watched(fixture.job, fixture.folder); });
        run(fixture, draw);
        window.join();
    }
    isCancelled = fixture.job.message() == u"Process cancelled!";
    if (seen.isEmpty())
        seen = faultInAnnouncements(fixture, draw);
    return seen.isEmpty() ? faultInFiles(fixture, referenceOf(draw.sources, draw.changes)) : seen;
}

/// 0 where the system does not tell.
qsizetype openFiles()
{
    return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
}

} // namespace

/// Many runs with random formats, numbers of threads and moments of cancel, watched by another
/// thread. PAGESTACK_STORM is how many, PAGESTACK_STORM_SEED the number from which they are drawn:
/// PAGESTACK_STORM=1, the seed that a failure tells and its row repeat that run.
class StormTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        TIFFSetWarningHandler(nullptr); // those of the sources' own reader
        QLoggingCategory::setFilterRules(u"pagestack=false"_s);
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
            m_watchdog.begin(draw.text());
            const qsizetype before = openFiles();
            bool isCancelled = false;
            const QString fault = faultOf(draw, isCancelled);
            QVERIFY2(fault.isEmpty(), (draw.text() + ": " + fault.toUtf8()).constData());
            QVERIFY2(openFiles() == before, draw.text().constData());
            ++m_drawn[draw.cancel];
            m_cancelled[draw.cancel] += isCancelled ? 1 : 0;
        }
    }

    void cleanupTestCase()
    {
        QStringList counts;
        for (const auto& [cancel, drawn] : m_drawn.asKeyValueRange())
            counts.append(u"%1 of %2 %3"_s.arg(m_cancelled[cancel])
                              .arg(drawn)
                              .arg(QLatin1StringView(cancelNames[static_cast<int>(cancel)])));
        qInfo("seed %u, cancelled: %s", m_seed, qPrintable(counts.join(u", ")));
    }

private:
    const int m_runs = std::max(1, qEnvironmentVariable("PAGESTACK_STORM", u"60"_s).toInt());
    const quint32 m_seed
        = qEnvironmentVariable("PAGESTACK_STORM_SEED",
                               QString::number(QRandomGenerator::global()->generate()))
              .toUInt();
    Watchdog m_watchdog;
    QMap<Cancel, int> m_drawn;
    QMap<Cancel, int> m_cancelled;
};

QTEST_GUILESS_MAIN(StormTest)
#include "StormTest.moc"
