#include "engine/log/Log.h"

#include "engine/support/AppFolders.h"
#include "engine/support/SystemLog.h"
#include "engine/support/TimeText.h"
#include "tests/engine/support/LogDocument.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;
using namespace pagestack;

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
        addPage(u"b2.png"_s, 2, u"Unable to save page!"_s);
        first.status = u"Completed"_s; // appending has moved no entry
        addSource(u"a.tif"_s, u"Unable to Open File!"_s, 0);

        // The text itself: order of the attributes, one element a line, no targetPageNo.
        QCOMPARE(documentOf(*m_log), QByteArray(R"(<?xml version="1.0" encoding="UTF-8"?>
<Log StartTime="03/05/2024 09:05:01 AM" EndTime="03/05/2024 02:07:09 PM">
    <Files FileName="b.tif" SourcePath="/in" TargetPath="/out" Status="" Pages="2">
        <File NewFileName="b1.png" SourcePageNo="1" Status="Completed"/>
        <File NewFileName="b2.png" SourcePageNo="2" Status="Unable to save page!"/>
    </Files>
    <Files FileName="a.tif" SourcePath="/in" TargetPath="/out" Status="Unable to Open File!" Pages="0"/>
</Log>
)"));
    }

    void tellsTheHourByTwelveInsideAndByTwentyFourInTheName()
    {
        QVERIFY(createApplicationUsersFolder(u"Logs"_s, nullptr));
        m_log->setStored(false);
        QVERIFY(m_log->save() && m_log->logFilePath().isNull() && logs().isEmpty());
        m_log->setStored(true);
        QStringList names;
        for (const QString& row :
             { u"000000 12:00:00 AM"_s, u"010203 01:02:03 AM"_s, u"123000 12:30:00 PM"_s,
               u"130009 01:00:09 PM"_s, u"235959 11:59:59 PM"_s }) {
            m_log->endTime = localTime(QTime::fromString(row.first(6), u"HHmmss"_s));
            QCOMPARE(documentOf(*m_log).split('\n').at(1), // there is nothing but the times
                     "<Log StartTime=\"03/05/2024 09:05:01 AM\" EndTime=\"03/05/2024 "
                         + row.sliced(7).toLatin1() + "\"/>");
            QVERIFY(m_log->save());
            names += u"050324"_s + row.first(6) + u".log"_s;
            QCOMPARE(m_log->logFilePath(), inLogs(names.last()));
        }
        addSource(u"later.tif"_s, u""_s, 1);
        QVERIFY(m_log->save()); // within the same second: replaces
        QCOMPARE(logs(), names);
        QFile file(m_log->logFilePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), documentOf(*m_log));
    }

    void isTheSameWhenRecordsArePutAside()
    {
        Log other;
        other.startTime = m_log->startTime;
        other.endTime = m_log->endTime;
        for (int i = 0; i < 800; ++i) {
            const int pages = i == 2 || i == 799 ? 1203 : i % 3;
            for (Log* log : { m_log.get(), &other })
                log->files.push_back(std::make_shared<LogFiles>(
                    LogFiles { u"%1.tif"_s.arg(i), u"/in"_s, u"/out"_s, u""_s, pages, {} }));
            for (int page = 1; page <= pages; ++page) {
                for (Log* log : { m_log.get(), &other })
                    log->files.back()->logFiles.push_back({ u"\u00e4.png"_s, page, 0, u"%1"_s });
                m_log->putAside();
                QVERIFY(m_log->files.back()->logFiles.size() <= 500);
            }
            m_log->putAside();
            QVERIFY(m_log->files.size() <= 500);
        }
        const QByteArray document = documentOf(*m_log);
        QCOMPARE(document.count("<File "), 2 * 1203 + 796);
        QVERIFY(document == documentOf(other));
        QVERIFY(document == documentOf(*m_log)); // it can be written again
    }

    void holdsAnyText()
    {
        // Markup, white space, other scripts and the last characters that are allowed; then those
        // that are not: control characters, no characters, surrogates alone or the wrong way round.
        const QString allowed
            = u"<a href=\"x\">'&amp;' ]]> a\tb\nc\rd\r\ne \u00e4 \u4e2d \U0001f4c4\ud7ff\ue000\ufffd\U0010ffff"_s;
        const QString wrong
            = u"\0\x01\x08\x0b\x0c\x1b\x1f|\xfffe\xffff|\xd800|\xdfff|\xdc00\xdbff|\xd83d"_s;
        const auto replaced = u"???????|??|?|?|??|?"_s.replace(u'?', QChar::ReplacementCharacter);
        addSource(allowed + wrong, wrong, 1);
        addPage(wrong, 1, wrong);
        const QByteArray document = documentOf(*m_log);
        QXmlStreamReader xml(document);
        QVERIFY(xml.readNextStartElement() && xml.readNextStartElement());
        QCOMPARE(xml.attributes().value(u"FileName"_s), allowed + replaced);
        while (!xml.atEnd())
            xml.readNext();
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        // A parser turns white space in an attribute into blanks unless it is a reference.
        QVERIFY(!document.contains('\t') && !document.contains('\r'));
        QCOMPARE(document.count('\n'), 6);
        // The system log takes one line of text.
        QTest::ignoreMessage(QtWarningMsg, "scan  [2J%1 \u00e9.tif");
        systemLog(u"scan\n\u001b[2J%1 \u00e9.tif"_s);
    }

    void holdsLinesBackAndKeepsToTheirQuota()
    {
        const auto quota = std::make_shared<LogQuota>(3, u"no more"_s);
        HeldLines held;
        {
            LogHold hold;
            systemLog(u"free"_s);
            for (int i = 0; i < 9; ++i)
                systemLog(QString::number(i), quota);
            held = hold.takeLines();
            QVERIFY(hold.takeLines().empty());
        }
        QCOMPARE(held.size(), 4U); // what could never be written is not kept
        // Held lines count when they are written, with those that came meanwhile.
        QTest::ignoreMessage(QtWarningMsg, "meanwhile");
        systemLog(u"meanwhile"_s, quota);
        for (const char* line : { "free", "0", "no more" })
            QTest::ignoreMessage(QtWarningMsg, line);
        writeHeldLines(held);
        systemLog(u"after"_s, quota);
    }

    void saysTrueWhenItCannotWriteButNotWithoutASource()
    {
        // At first there is no folder; then one of the log's name, so that only the last step
        // fails.
        for (const bool hasFolder : { false, true }) {
            QVERIFY(!hasFolder
                    || createApplicationUsersFolder(u"Logs/050324140709.log"_s, nullptr));
            QTest::ignoreMessage(QtWarningMsg, "Could not write document out...");
            QVERIFY(m_log->save());
            QCOMPARE(m_log->logFilePath(), inLogs(u"050324140709.log"_s));
            QVERIFY(QFile::exists(inLogs(u""_s)) == hasFolder && logs().isEmpty());
        }
        m_log->files.push_back(nullptr);
        m_log->endTime = m_log->endTime.addSecs(1); // a name that is free
        QTest::ignoreMessage(QtWarningMsg, "Error in (Log=>save) : a source of the log is missing");
        QVERIFY(!m_log->save());
    }

    void makesFoldersAndTellsWhyItCannot()
    {
        QCOMPARE(getAppPath(), m_home->filePath(u"Corvanta/Pagestack1"_s));
        QVERIFY(QDir(m_home->path()).isEmpty());
        QString error = u"untouched"_s;
        QVERIFY(createApplicationUsersFolder(u"Logs"_s, &error));
        QFile plainFile(getAppPath() + u"/Logs/plain"_s);
        QVERIFY(plainFile.open(QIODevice::WriteOnly));
        QVERIFY(createApplicationUsersFolder(u"Logs"_s, &error));
        QVERIFY(createApplicationUsersFolder(u""_s, nullptr) && plainFile.exists());
        QCOMPARE(error, u"untouched"_s);
        QVERIFY(!createApplicationUsersFolder(u"Logs/plain/deeper"_s, nullptr));
        QVERIFY(!createApplicationUsersFolder(u"Logs/plain"_s, &error));
        QVERIFY(!error.isEmpty() && error != u"untouched"_s);
    }

    void tellsHowLongItTook()
    {
        const QDateTime start(QDate(2024, 3, 31), QTime(0, 30), Qt::UTC);
        const QString table
            = u"0=;999=;1000=1 sec(s) ;2999=2 sec(s) ;60000=1 min(s) ;3540000=59 min(s) ;"
              "10800000=3 hr(s) ;3605000=1 hr(s) 5 sec(s) ;"
              "7384000=2 hr(s) 3 min(s) 4 sec(s) ;93660000=26 hr(s) 1 min(s) ;-3690000="_s;
        for (const QString& row : table.split(u';')) {
            const QString ms = row.section(u'=', 0, 0);
            QCOMPARE(ms + u'=' + timeTakenString(start, start.addMSecs(ms.toInt())), row);
        }
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
