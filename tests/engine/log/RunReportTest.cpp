#include "engine/log/RunReport.h"

#include "engine/log/Log.h"
#include "tests/support/Angles.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

#include <QTemporaryDir>
#include <QXmlStreamReader>

// The page that tells a run to people.
class RunReportTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_log = std::make_unique<Log>(); }

    /// A name that is markup, a path that is no URL, a failure that is nowhere but in the table of
    /// its source.
    void tellsEverything()
    {
        addSource(u"a&<b>.tif"_s);
        addPage(u"a #1%41.png"_s, u"Completed"_s);
        addPage(u"a2.png"_s, u"Completed"_s).reason = u"<script>1 row is damaged</script>"_s;
        addPage(u"a3.png"_s, u"Unable to save page!"_s).reason = u"no room"_s;
        addPage(u"a4.png"_s, u"Skipped"_s);
        addSource(u"b.tif"_s).status = u"Unable to Open File!"_s;
        m_log->files.back()->reason = u"it is no TIFF file"_s;
        LogFiles& together = addSource(u"c.tif"_s);
        addPage(u"c.tiff"_s, u"Completed"_s);
        addPage(u"c.tiff"_s, u"Completed"_s);
        together.leftBehind = u"Artist"_s;
        LogFiles& lost = addSource(u"d.tif"_s);
        addPage(u"d.tiff"_s, u"Completed"_s);
        lost.gathered = GatheredFile::NotWritten;
        lost.reason = u"the disk is full"_s;
        m_log->isCancelled = true;

        const Page page = read(6);
        QCOMPARE(page.titles, (QStringList { u"Cancelled"_s, u"Problems"_s, u"Files"_s }));
        QCOMPARE(page.tables.value(0).join(u' '),
                 u"Images written|3 Pages written|4 of these with a loss|1 Pages failed|2 "
                 "Pages skipped|1 Source files|6 of these not reached|2"_s);
        QCOMPARE(page.tables.value(1),
                 (QStringList { u"File|Page|What happened"_s,
                                u"a&<b>.tif|2|written with a loss: <script>1 row is "
                                "damaged</script>"_s,
                                u"a&<b>.tif|3|failed: no room"_s, u"b.tif||it is no TIFF file"_s,
                                u"d.tif||the disk is full"_s }));
        QCOMPARE(
            page.tables.value(2).mid(1, 2),
            (QStringList { u"1|a #1%41.png|written"_s,
                           u"2|a2.png|written with a loss: <script>1 row is damaged</script>"_s }));
        QCOMPARE(page.tables.size(), 5); // b.tif has no pages
        QVERIFY(page.text.contains(u"Left behind, since the format has no place for it: Artist"));
        QVERIFY(page.links.contains(u"file:///out/a%20%231%2541.png"_s));
        QVERIFY(page.links.contains(u"file:///in/a&%3Cb%3E.tif"_s));
        QVERIFY(!page.links.contains(u"file:///out/a3.png"_s) // which are not there
                && !page.links.contains(u"file:///out/d.tiff"_s));
        QVERIFY(!page.elements.contains(u"script"_s));
    }

    void namesHowTheRunEnded_data()
    {
        addTextRows({ "reason", "fault", "cancelled", "title" }, R"(
                   |      |     | Finished
                   | lost |     | Finished with problems
                   | lost | yes | Cancelled
            no room | lost | yes | Ended early)");
    }

    void namesHowTheRunEnded()
    {
        QFETCH(const QString, reason);
        QFETCH(const QString, fault);
        QFETCH(const QString, cancelled);
        addSource(u"a.tif"_s).reason = fault.isEmpty() ? QString() : fault;
        m_log->reason = reason.isEmpty() ? QString() : reason;
        m_log->isCancelled = !cancelled.isEmpty();
        QTEST(read(1).titles.first(), "title");
    }

    /// A warning in the colour of failures, or counted as nothing; what is of no source left out.
    void tellsWarningsFromFailures()
    {
        QCOMPARE(read(0, { {}, { u"/out: little room"_s } }).titles.value(0),
                 u"Finished with problems"_s);
        for (int i = 0; i < 600; ++i) { // some of them are put aside
            addSource(u"%1.tif"_s.arg(i)).reason = i < 2 ? u"lost"_s : QString();
            m_log->files.back()->hasErrors = i == 1;
            m_log->putAside();
        }
        const Page page = read(600, { { u"no log"_s }, { u"/out: little room"_s } });
        QVERIFY(page.tables.value(0).contains(u"of these with a warning|1"_s));
        QCOMPARE(page.tables.value(1).join(u' '),
                 u"File|Page|What happened ||no log ||/out: little room 0.tif||lost 1.tif||lost"_s);
        QCOMPARE(page.text.count(u"class=\"odd\""), 4); // the total, twice of 0.tif, the room
        QCOMPARE(page.text.count(u"class=\"bad\""), 3);
    }

    /// A report that is put together in memory: here of eight megabytes.
    void goesOutAsItIsMade()
    {
        constexpr int pages = 20'000;
        addSource(u"a.tif"_s);
        for (int i = 0; i < pages; ++i) {
            addPage(u"a%1.png"_s.arg(i), u"Completed"_s).reason = QString(100, u'x');
            m_log->putAside();
        }
        qint64 rows = 0;
        qsizetype most = 0;
        writeReport(*m_log, 1, {}, [&](const QByteArray& text) {
            rows += text.count("<tr>");
            most = std::max(most, text.size());
        });
        QCOMPARE(rows, 2 * pages + 2 + 4); // heads of two tables, the totals
        QVERIFY(most < 100'000);
    }

    /// A ": " within a reason taken for the end of a path, and a path for a part of the reason.
    void showsTroublesInTheLanguage_data()
    {
        addTextRows({ "trouble", "shown" }, R"(
            the log could not be written: disk full | <the log could not be written: disk full>
            /out: it is no TIFF file; its strips are too large | \
                /out: <it is no TIFF file>; <its strips are too large>)");
    }

    void showsTroublesInTheLanguage()
    {
        QFETCH(const QString, trouble);
        const Angles language;
        QTEST(read(0, { { trouble }, {} }).tables.value(1).last().section(u'|', 2), "shown");
    }

    void leavesOtherFilesAlone()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"1.html"_s);
        QCOMPARE(reportPathBeside(folder.filePath(u"1.log"_s)), path);
        QCOMPARE(saveReport(*m_log, 0, {}, path, StagedFile::Existing::Kept), QString());
        QVERIFY_EXCEPTION_THROWN((void)saveReport(*m_log, 0, {}, path, StagedFile::Existing::Kept),
                                 StagedFile::NameTaken);
        QVERIFY(!saveReport(*m_log, 0, {}, folder.filePath(u"none/1.html"_s),
                            StagedFile::Existing::Kept)
                     .isNull());
    }

private:
    struct Page
    {
        QString text;
        QStringList titles; ///< of the page and its parts
        QList<QStringList> tables; ///< a text a row
        QStringList links;
        QSet<QString> elements;
    };

    LogFiles& addSource(const QString& name)
    {
        m_log->files.push_back(std::make_shared<LogFiles>());
        LogFiles& source = *m_log->files.back();
        source.filename = name;
        source.sourcePath = u"/in"_s;
        source.targetPath = u"/out"_s;
        return source;
    }
    LogFile& addPage(const QString& name, const QString& status)
    {
        LogFiles& source = *m_log->files.back();
        const int page = static_cast<int>(source.logFiles.size()) + 1;
        source.logFiles.push_back({ .targetFile = name, .sourcePageNo = page, .status = status });
        return source.logFiles.back();
    }

    /// The report as a reader of XML sees it, to which nothing may be odd.
    Page read(qsizetype sources, const RunTroubles& troubles = {}) const
    {
        QByteArray html;
        writeReport(*m_log, sources, troubles, [&](const QByteArray& text) { html += text; });
        Page page;
        page.text = QString::fromUtf8(html);
        QXmlStreamReader xml(html);
        bool isInCell = false;
        while (!xml.atEnd()) {
            xml.readNext();
            const QStringView name = xml.name();
            if (xml.isStartElement()) {
                page.elements.insert(name.toString());
                if (name == u"h1" || name == u"h2")
                    page.titles.append(xml.readElementText());
                else if (name == u"table")
                    page.tables.append(QStringList());
                else if (name == u"tr")
                    page.tables.last().append(QString());
                else if (name == u"a")
                    page.links.append(xml.attributes().value("href"_L1).toString());
            }
            const bool isCell = name == u"td" || name == u"th";
            isInCell = isCell ? xml.isStartElement() : isInCell;
            if (xml.isCharacters() && isInCell)
                page.tables.last().last() += xml.text();
            if (xml.isEndElement() && isCell)
                page.tables.last().last() += u'|';
            if (xml.isEndElement() && name == u"tr")
                page.tables.last().last().chop(1);
        }
        if (xml.hasError())
            qFatal("%s", qPrintable(xml.errorString()));
        return page;
    }

    std::unique_ptr<Log> m_log;
};

QTEST_MAIN(RunReportTest)
#include "RunReportTest.moc"
