#include "engine/job/Process.h"

#include "engine/threads/WorkerThread.h"
#include "tests/engine/job/JobFixture.h"
#include "tests/support/LogDocument.h"
#include "tests/support/Testing.h"

#include <QThread>

class ProcessTest : public QObject
{
    Q_OBJECT

private slots:
    void announcesEachStepInOrder()
    {
        const QString pages = uR"(output scan1.png
created 1
written in/scan.tif out/scan1.png 1
page in/scan.tif 1 out/scan1.png Written
output scan2.png
created 2
written in/scan.tif out/scan2.png 1
page in/scan.tif 2 out/scan2.png Written)"_s;
        const QString together = uR"(output scan.tiff
page in/scan.tif 1 out/scan.tiff Written
page in/scan.tif 2 out/scan.tiff Written
written in/scan.tif out/scan.tiff 2
created 1)"_s;
        const QString expected = uR"(isCompleted false
message
file scan.tif
%1
processed 1
time line Total Time Taken : In Process... 1/1
message %2 files converted successfully.
timeTaken
file
output
isCombining false
time line Total Time Taken :  1/1
isCompleted true)"_s;
        for (const bool isTogether : { false, true }) {
            JobFixture fixture(u"scan.tif:WW"_s, isTogether ? u"outputType=2"_s : QString());
            // Time lines are shown on the main thread, while the job waits; all else is its own.
            QThread* const mainThread = QThread::currentThread();
            QStringList misplaced;
            fixture.onEvent = [&](const QString& met) {
                if (met.startsWith(u"time line") != (QThread::currentThread() == mainThread))
                    misplaced.append(met);
            };
            fixture.job.viewLog();
            QVERIFY(fixture.opened.isEmpty());
            WorkerThread worker([&] { fixture.run(); });
            worker.start();
            QTRY_VERIFY(worker.isFinished());
            worker.wait();
            QCOMPARE(misplaced, QStringList());
            QCOMPARE(fixture.events.join(u'\n'),
                     isTogether ? expected.arg(together, u"All"_s)
                                : expected.arg(pages, u"Total 2"_s));
            const Log& log = *fixture.job.log();
            QVERIFY(log.startTime.isValid() && log.startTime <= log.endTime);
            QCOMPARE(log.files.at(0)->logFiles.at(1).targetPageNo, 0);
            fixture.job.viewLog();
            QCOMPARE(fixture.opened, QStringList({ log.logFilePath() }));
        }
    }

    void converts_data()
    {
        QTest::addColumn<QStringList>("texts");
        const auto row = [](const char* name, const QString& sources, const QString& changes,
                            const QString& summary) {
            QTest::newRow(name) << QStringList { sources, changes, summary };
        };
        row("nothing", {}, u"isOpenFolderAfterConversion=true"_s,
            u"0/0 All files converted successfully."_s);
        row("one page each", u"a.tif:W b.tif:W"_s, u"isOpenFolderAfterConversion=true"_s,
            uR"(in/a.tif to out, 1 pages [] a1.png 1 Completed
in/b.tif to out, 1 pages [] b1.png 1 Completed
opened out
2/2 out/a1.png out/b1.png All files converted successfully.)"_s);
        row("beside the source", u"größe~50%~#1.tif:W"_s,
            u"outputFolderPath= isOpenFolderAfterConversion=true"_s,
            uR"(in/größe 50% #1.tif to in, 1 pages [] größe 50% #11.png 1 Completed
1/1 in/größe~50%~#11.png All files converted successfully.)"_s);
        row("troubles", u"text.tif gone.tif>nowhere bad.tif:WBW more.tif:W"_s, u"in/more.tif:WWW"_s,
            uR"(in/text.tif to out, 0 pages [Unable to Open File!]
in/gone.tif to out, 0 pages [Unable to Open File!]
in/bad.tif to out, 2 pages [] bad1.png 1 Completed, bad2.png 2 Unable to save page!, bad3.png 3 Completed
in/more.tif to out, 1 pages [] more1.png 1 Completed
trouble in/text.tif 0 *
trouble in/gone.tif 0 *
trouble in/bad.tif 2 *
trouble in/more.tif 0 the file has 3 pages now, 1 were counted before the run
4/3 out/bad1.png out/bad3.png out/more1.png Total 3 files converted successfully.)"_s);
        row("lost pages, then cancelled", u"a.tif:WW b.tif:W"_s,
            u"in/a.tif:W stopAt=trouble~in/a.tif~0~index~1~beyond~bounds~[0~..~0]"_s,
            uR"(in/a.tif to out, 1 pages [index 1 beyond bounds [0 .. 0]] a1.png 1 Completed
trouble in/a.tif 0 index 1 beyond bounds [0 .. 0]
1/1 out/a1.png Pagestack unable able to convert some of the files!
Please check log for more information.)"_s.replace(u"!\n"_s, u"!\r\n"_s));
        row("no run flag", u"a.tif:W"_s, u"isCombining=false"_s, u"0/0 Process cancelled!"_s);
        row("together in the place of the source", u"a.tiff:WW"_s,
            u"outputType=2 outputFolderPath="_s,
            uR"(in/a.tiff to in, 2 pages [] a.tiff 1 Completed, a.tiff 2 Completed
1/1 in/a.tiff[1/1,2/1] All files converted successfully.)"_s);
        // It is never replaced by less than it holds.
        const auto kept = [&](const char* name, const QString& source, const QString& changes,
                              const QString& trouble = {}) {
            row(name, source, changes + u" outputType=2 outputFolderPath="_s,
                u"in/a.tiff *\n"_s + trouble + u"trouble in/a.tiff 0 the file is kept *\n1/0 *"_s);
        };
        kept("source with a bad page kept", u"a.tiff:WBW"_s, {}, u"trouble in/a.tiff 2 *\n"_s);
        kept("source with later pages kept", u"a.tiff:WW"_s, u"in/a.tiff:WWW"_s,
             u"trouble in/a.tiff 0 the file has 3 *\n"_s);
        kept("source kept at a cancel", u"a.tiff:WWW"_s,
             u"stopAt=page~in/a.tiff~2~in/a.tiff~Written"_s);
        row("what one source lost is not held against the next", u"a.tiff:U b.tiff:F c.tiff:W"_s,
            u"outputType=2 outputFolderPath="_s, uR"(in/a.tiff *
in/b.tiff *
in/c.tiff to in, 1 pages [] c.tiff 1 Completed
trouble in/a.tiff 0 the file is kept as it is, since 1 tag would be lost: tag 65100
trouble in/b.tiff 0 the file is kept as it is, since not all of its pixels are sure: *
3/1 in/c.tiff[1/1] Total 1 files converted successfully.)"_s);
        const QString chain
            = u"trouble in/a.tif 0 the chain of pages leads back to page 1 after page 2\n"_s;
        kept("source with a broken chain kept", u"a.tiff:WWL"_s, {},
             QString(chain).replace(u"tif "_s, u"tiff "_s));
        row("broken chain", u"a.tif:WWL"_s, {},
            u"in/a.tif to out, 2 pages [] a1.png 1 Completed, a2.png 2 Completed\n"_s + chain
                + u"1/2 out/a1.png out/a2.png Total 2 files converted successfully."_s);
        row("leftovers", u"a.tif:W"_s,
            u"out/.pagestack-1-2.part out/.pagestack-1-2-ä.part out/.pagestack-1.part"_s,
            uR"(in/a.tif to out, 1 pages [] a1.png 1 Completed
1/1 out/a1.png -out/.pagestack-1-2-ä.part -out/.pagestack-1-2.part All files converted successfully.)"_s);
        row("a leftover that is a source", u".pagestack-1-2.part:W"_s, u"outputFolderPath="_s,
            uR"(in/.pagestack-1-2.part to in, 1 pages [] .pagestack-1-21.png 1 Completed
1/1 in/.pagestack-1-21.png All files converted successfully.)"_s);
        row("together with troubles", u"bad.tif:WBW worse.tif:B less.tif:WWWW text.tif"_s,
            u"outputType=2 in/less.tif:WW in/text.tif:W"_s,
            uR"(in/bad.tif to out, 2 pages [] bad.tiff 1 Completed, bad.tiff 2 Unable to save page!, bad.tiff 3 Completed
in/worse.tif to out, 0 pages [] worse.tiff 1 Unable to save page!
in/less.tif to out, 2 pages [] less.tiff 1 Completed, less.tiff 2 Completed, less.tiff 3
in/text.tif to out, 0 pages []
trouble in/bad.tif 2 *
trouble in/worse.tif 1 *
trouble in/less.tif 0 index 2 beyond bounds [0 .. 1]
trouble in/text.tif 0 the file has 1 pages now, 0 were counted before the run
4/2 out/bad.tiff[1/1,3/1] out/less.tiff[1/1,2/1] Total 2 files converted successfully.)"_s);
        const auto stop = [&](const QString& event, const QString& summary) {
            row(qPrintable(event), u"a.tif:WW b.tif:WW c.tif:WW"_s, u"stopAt="_s + event,
                summary + u" Process cancelled!"_s);
        };
        stop(u"message"_s, u"0/0"_s);
        stop(u"file~a.tif"_s, u"in/a.tif to out, 0 pages []\n1/0"_s);
        const QString two
            = u"in/a.tif to out, 2 pages [] a1.png 1 Completed, a2.png 2 Completed\n"_s;
        stop(u"processed~1"_s, two + u"1/2 out/a1.png out/a2.png"_s);
        stop(u"file~b.tif"_s, two + u"in/b.tif to out, 0 pages []\n2/2 out/a1.png out/a2.png"_s);
        stop(u"page~in/a.tif~1~out/a.tiff~Written outputType=2"_s,
             u"in/a.tif to out, 1 pages [] a.tiff 1 Completed\n1/1 out/a.tiff[1/1]"_s);
    }

    void converts()
    {
        const auto [sources, changes, summary] = textRow<3>();
        JobFixture fixture(sources, changes);
        if (!changes.contains(u"separator"))
            fixture.settings.setSeparator(QString());
        if (sources.contains(u"less.tif"))
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"\\(saveAsTiff:.* index 2 "_s));
        fixture.run();
        QCOMPARE(withStars(fixture.summary(), summary), summary);
        QVERIFY(!fixture.settings.separator().isNull());
        QVERIFY(fixture.hasEnded());
        const Log& log = *fixture.job.log();
        const QString document = QString::fromUtf8(documentOf(log));
        for (const QString& trouble :
             fixture.events.filter(QRegularExpression(u"^(trouble|remark) "_s)))
            QVERIFY2(document.contains(QRegularExpression(u"Reason=\"([^\"]*; )?%1[;\"]"_s.arg(
                         QRegularExpression::escape(trouble.section(u' ', 3).toHtmlEscaped())))),
                     qPrintable(trouble + u'\n' + document));
        QCOMPARE(log.isCancelled, summary.contains(u"cancelled") || changes.contains(u"stopAt"));
        if (isKeptTogether(fixture.settings) && !changes.contains(u"filter"))
            QCOMPARE(document.count(QRegularExpression(u"<Files .* Written=\"no\""_s)),
                     static_cast<int>(log.files.size()) - fixture.job.totalFileCreated());
    }

    void keepsASourceThatAnotherProgramChanges()
    {
        for (const bool isRenamed : { true, false }) {
            JobFixture fixture(u"a.tiff:WW"_s, u"outputType=2 outputFolderPath= in/new:WWW"_s);
            fixture.onEvent = [&](const QString& met) {
                if (!met.startsWith(u"page in/a.tiff 1 "))
                    return;
                if (!isRenamed)
                    fixture.folder.make(u"in/a.tiff:WWW"_s);
                else if (::rename(
                             QFile::encodeName(fixture.folder.path(u"in/new"_s)).constData(),
                             QFile::encodeName(fixture.folder.path(u"in/a.tiff"_s)).constData()))
                    throw std::runtime_error("cannot rename");
            };
            fixture.run();
            QVERIFY(fixture.folder.changes().contains(u"in/a.tiff[1/8,2/8,3/8]"_s));
            QCOMPARE(fixture.events.filter(u"trouble "_s),
                     QStringList { u"trouble in/a.tiff 0 the file is kept as it is, since it has "
                                   "changed since its pages were read"_s });
        }
    }

    /// Pages of two files would come out without a word.
    void tellsOfASourceThatIsWrittenTo()
    {
        for (const QString& changes : { u"outputType=1"_s, u"outputType=2"_s }) {
            JobFixture fixture(u"a.tiff:WW"_s, changes);
            fixture.onEvent = [&](const QString& met) {
                QFile source(fixture.folder.path(u"in/a.tiff"_s));
                if (met.startsWith(u"page in/a.tiff 1 ") && source.open(QFile::ReadWrite))
                    source.setFileTime(source.fileTime(QFile::FileModificationTime).addSecs(1),
                                       QFile::FileModificationTime);
            };
            fixture.run();
            QCOMPARE(fixture.events.filter(u" 0 the file has changed while "_s).size(), 1);
        }
    }

    void keepsWhatHasComeToATarget_data()
    {
        addTextRows(R"(
outputType=1|skip |1 pages [] a1.png 1 Skipped, a2.png 2 *|   | 1/1 out/a1.png out/a2.png All *
outputType=1|error|1 pages [] a1.png 1 Unable to save *   | 1 | 1/1 out/a1.png out/a2.png All *
outputType=2|skip |0 pages [] a.tiff 1 Skipped, a.tiff 2 *|   | 1/0 out/a.tiff[101/8] Total 0 *
outputType=2|error|2 pages [] a.tiff 1 Completed, a.tiff *| 0 | 1/0 out/a.tiff[101/8] Total 0 *
)");
    }

    void keepsWhatHasComeToATarget()
    {
        const auto [changes, existing, source, trouble, end] = textRow<5>();
        JobFixture fixture(u"a.tif:WW"_s, changes + u" jobs=1"_s);
        fixture.job.setKeepsExisting(true);
        const bool isSkipped = existing == u"skip";
        fixture.job.setTargetFilter([&](const QString& path) {
            const bool isFree = !QFile::exists(path);
            if (isFree && !path.endsWith(u"a2.png")) // It comes as soon as somebody has looked.
                fixture.folder.make(u"out/%1:V"_s.arg(lastPathComponent(path)));
            return isFree || !isSkipped;
        });
        fixture.run();
        QStringList lines { u"in/a.tif to out, "_s + source };
        if (!trouble.isEmpty())
            lines << u"trouble in/a.tif %1 a file of that name has appeared during the run"_s.arg(
                trouble);
        const QString summary = (lines << end).join(u'\n');
        QCOMPARE(withStars(fixture.summary(), summary), summary);
        QCOMPARE(fixture.events.filter(u"skipped "_s).size(), source.startsWith(u"0 ") ? 1 : 0);
    }

    void bringsTheRunToItsEndAfterAnException_data()
    {
        // Without a reason it is no failure of the run that a message could tell.
        addTextRows(R"(
no line to write on | 1/2               | out/a1.png | Pagestack unable able to convert some *
                    | In Process... 1/2 | out/a1.png | Total 1 files converted successfully.
                    | page in/a.tiff 1 in/a.tiff Written | | Total 0 files converted successfully.
)");
    }

    void bringsTheRunToItsEndAfterAnException()
    {
        const auto [reason, place, changes, message] = textRow<4>();
        const bool isTogether = changes.isEmpty();
        JobFixture fixture(isTogether ? u"a.tiff:WW b.tiff:W"_s : u"a.tif:W b.tif:W"_s,
                           isTogether ? u"outputType=2 outputFolderPath="_s : QString());
        fixture.onEvent = [place = place, what = reason.toStdString()](const QString& met) {
            if (met.endsWith(place) && !what.empty())
                throw std::runtime_error(what);
            if (met.endsWith(place))
                throw 7;
        };
        for (int i = 0; !reason.isEmpty() && i < 2; ++i)
            QTest::ignoreMessage(QtWarningMsg, "Error in (Process=>start) : no line to write on");
        if (!reason.isEmpty())
            fixture.run();
        else
            QVERIFY_THROWS_EXCEPTION(int, fixture.run());
        QVERIFY(fixture.job.message().startsWith(message.chopped(1)));
        QCOMPARE(fixture.job.failure(), reason);
        QCOMPARE(fixture.folder.changes(), changes);
        QVERIFY(fixture.hasEnded());
    }
};

QTEST_GUILESS_MAIN(ProcessTest)
#include "ProcessTest.moc"
