#include "engine/log/Log.h"

#include "engine/log/Diagnostic.h"
#include "engine/support/Application.h"
#include "engine/support/Dates.h"
#include "tests/support/LogDocument.h"
#include "tests/support/Testing.h"

#include <thread>

// The log and the routines that it stands on: folders, times, the system log.
class LogTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home->path()));
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_log = std::make_unique<Log>();
        m_log->startTime = localTime(QTime(9, 5, 1)).toOffsetFromUtc(7200); // written in local time
        m_log->endTime = localTime(QTime(14, 7, 9));
    }

    void writesSourcesAndPagesInOrder()
    {
        addSource(u"b.tif"_s, u""_s, 2);
        LogFile& first = addPage(u"b1.png"_s, 1, u""_s);
        addPage(u"b2.png"_s, 2, u"Unable to save page!"_s).reason = u"no \"room\""_s;
        first.status = u"Completed"_s; // appending has moved no entry
        addSource(u"a.tif"_s, u"Unable to Open File!"_s, 0);
        m_log->files.back()->reason = u"no TIFF file"_s;
        for (const GatheredFile gathered : { GatheredFile::NotWritten, GatheredFile::Skipped }) {
            addSource(u"c.tif"_s, u""_s, 1);
            addPage(u"c.tiff"_s, 1, u"Completed"_s);
            m_log->files.back()->gathered = gathered;
        }
        m_log->isCancelled = true;
        m_log->reason = u"enough"_s;
        // The text itself: order of the attributes, one element a line, no targetPageNo.
        QCOMPARE(documentOf(*m_log), QByteArray(R"(<?xml version="1.0" encoding="UTF-8"?>
<Log StartTime="03/05/2024 09:05:01 AM" EndTime="03/05/2024 02:07:09 PM" Start="2024-03-05T09:05:01Z" End="2024-03-05T14:07:09Z" Cancelled="yes" Reason="enough">
    <Files FileName="b.tif" SourcePath="/in" TargetPath="/out" Status="" Pages="2">
        <File NewFileName="b1.png" SourcePageNo="1" Status="Completed"/>
        <File NewFileName="b2.png" SourcePageNo="2" Status="Unable to save page!" Reason="no &quot;room&quot;"/>
    </Files>
    <Files FileName="a.tif" SourcePath="/in" TargetPath="/out" Status="Unable to Open File!" Pages="0" Reason="no TIFF file"/>
    <Files FileName="c.tif" SourcePath="/in" TargetPath="/out" Status="" Pages="1" Written="no">
        <File NewFileName="c.tiff" SourcePageNo="1" Status="Completed" Written="no"/>
    </Files>
    <Files FileName="c.tif" SourcePath="/in" TargetPath="/out" Status="" Pages="1">
        <File NewFileName="c.tiff" SourcePageNo="1" Status="Skipped"/>
    </Files>
</Log>
)"));
    }

    void tellsTheHourByTwelveInsideAndByTwentyFourInTheName()
    {
        QTest::ignoreMessage(QtWarningMsg, "Could not write document out...");
        QVERIFY(m_log->save()); // without a folder; nobody is told by the result
        QVERIFY(createApplicationUsersFolder(u"Logs"_s, nullptr));
        for (const QString& row :
             { u"000000 12:00:00 AM"_s, u"123000 12:30:00 PM"_s, u"130009 01:00:09 PM"_s }) {
            m_log->endTime = localTime(QTime::fromString(row.first(6), u"HHmmss"_s));
            QVERIFY(
                documentOf(*m_log).contains("EndTime=\"03/05/2024 " + row.sliced(7).toLatin1()));
            QVERIFY(m_log->save());
            QCOMPARE(m_log->logFilePath(), inLogs(u"050324"_s + row.first(6) + u".log"_s));
        }
        QCOMPARE(logs().size(), 3);
    }

    void keepsEachLogOfASecond()
    {
        QVERIFY(createApplicationUsersFolder(u"Logs/050324140709-3.log"_s, nullptr));
        QVERIFY(QFile::link(u"nowhere"_s, inLogs(u"050324140709-5.log"_s)));
        // As two programs do, whose looks at the folder lie between each other's.
        constexpr int threads = 4;
        std::vector<std::thread> programs;
        for (int i = 0; i < threads; ++i)
            programs.emplace_back([i, end = m_log->endTime] {
                for (int run = 0; run < 10; ++run) {
                    Log log;
                    log.endTime = end;
                    log.reason = u"%1 %2"_s.arg(i).arg(run);
                    log.save();
                }
            });
        for (std::thread& program : programs)
            program.join();
        QCOMPARE(logs().size(), 10 * threads);
        QSet<QByteArray> told;
        for (const QString& name : logs())
            told.insert(bytesOf(inLogs(name)));
        QCOMPARE(told.size(), 10 * threads);
        QVERIFY(logs().contains(u"050324140709.log"_s)
                && logs().contains(u"050324140709-42.log"_s));
    }

    void isTheSameWhenRecordsArePutAside()
    {
        Log other;
        other.startTime = m_log->startTime;
        other.endTime = m_log->endTime;
        for (Log* log : { m_log.get(), &other })
            for (int i = 0; i < 800; ++i) {
                const int pages = i == 2 || i == 799 ? 1203 : i % 3;
                log->files.push_back(std::make_shared<LogFiles>(
                    LogFiles { u"%1.tif"_s.arg(i), u"/in"_s, u"/out"_s, u""_s, pages, {} }));
                for (int page = 1; page <= pages; ++page) {
                    log->files.back()->logFiles.push_back(
                        { u"\u00e4.png"_s, page, 0, page % 2 == 0 ? u"%1"_s : u"Completed"_s,
                          page % 5 == 0 ? u"\u4e2d"_s : QString() });
                    if (log != &other)
                        log->putAside();
                    QVERIFY(log == &other || log->files.back()->logFiles.size() <= 500);
                }
                // It is known late what becomes of a file, when most of its pages are gone.
                log->files.back()->gathered = static_cast<GatheredFile>(i % 3);
                log->files.back()->reason = i % 2 == 0 ? u"why"_s : QString();
                if (log != &other)
                    log->putAside();
                QVERIFY(log == &other || log->files.size() <= 500);
            }
        const QByteArray document = documentOf(*m_log);
        QCOMPARE(document.count("<File "), 2 * 1203 + 796);
        QVERIFY(document.count("\"Skipped\"") > 602 && document.count("Written=\"no\"") > 266);
        QVERIFY(document == documentOf(other));
        QVERIFY(document == documentOf(*m_log)); // it can be written again
    }

    // Without a text memory stays bounded too, and what is known of the sources stays known.
    void knowsOfErrorsWhenTheTextIsDropped()
    {
        m_log->setTextDropped(true);
        for (std::size_t i = 0; i < 1200; ++i) {
            m_log->files.push_back(std::make_shared<LogFiles>());
            m_log->files.back()->hasErrors = i % 7 == 0;
            m_log->putAside();
        }
        QVERIFY(m_log->files.size() <= 500);
        for (std::size_t i = 0; i < 1200; ++i)
            QCOMPARE(m_log->hasErrors(i), i % 7 == 0);
    }

    void leavesOutWhatACodecSaysTooOften()
    {
        PageDiagnostics page;
        for (int i = 0; i < 30; ++i)
            page.addLogLine(u"row"_s);
        for (int i = 0; i < 19; ++i)
            QTest::ignoreMessage(QtWarningMsg, "row");
        QTest::ignoreMessage(QtWarningMsg, "scan.tif: further messages are left out");
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        CodecLog log;
        log.write(u"scan.tif"_s, page.logLines.first(15));
        log.write(u"scan.tif"_s, page.logLines.first(15));
        QCOMPARE(page.logLines.size(), 20); // the rest could never be written
    }

    void tellsHowLongItTook()
    {
        const QDateTime start(QDate(2024, 3, 31), QTime(0, 30), Qt::UTC);
        for (const auto& [ms, text] : { std::pair(999, u""_s),
                                        { 2'999, u"2 sec(s) "_s },
                                        { 3'605'000, u"1 hr(s) 5 sec(s) "_s },
                                        { 93'660'000, u"26 hr(s) 1 min(s) "_s },
                                        { -3'690'000, u""_s } })
            QCOMPARE(timeTakenString(start, start.addMSecs(ms)), text);
        QCOMPARE(timeTakenString({}, start) + timeTakenString(start, {}), u""_s);
        QCOMPARE(totalTimeTakenText(u"%1 %2"_s, 7, 8), u"Total Time Taken : %1 %2 7/8"_s);
        QCOMPARE(zeroTotalTimeTakenText(), u"Total Time Taken : 0 sec(s) 0/0"_s);
    }

private:
    static QDateTime localTime(const QTime& time) { return QDateTime(QDate(2024, 3, 5), time); }
    QString inLogs(const QString& name) const { return getAppPath() + u"/Logs/"_s + name; }
    QStringList logs() const { return QDir(inLogs(u""_s)).entryList(QDir::Files); }
    void addSource(const QString& name, const QString& status, int pages)
    {
        const LogFiles source { name, u"/in"_s, u"/out"_s, status, pages, {} };
        m_log->files.push_back(std::make_shared<LogFiles>(source));
    }
    LogFile& addPage(const QString& name, int page, const QString& status)
    {
        return m_log->files.back()->logFiles.emplace_back(LogFile { name, page, 4711, status });
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<Log> m_log;
};

QTEST_GUILESS_MAIN(LogTest)
#include "LogTest.moc"
