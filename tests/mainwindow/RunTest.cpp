#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/run/RunPace.h"
#include "tests/mainwindow/Session.h"
#include "tests/support/TestFolder.h"

#include <QHeaderView>
#include <QMimeData>
#include <QProgressBar>
#include <QTimer>

namespace {

/// How often the busiest timer of the program has gone off.
class Ticks : public QObject
{
public:
    Ticks() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Timer && qobject_cast<QTimer*>(watched) != nullptr)
            m_most = std::max(m_most, ++m_counts[watched]);
        return false;
    }
    int most() const { return m_most; }

private:
    QHash<QObject*, int> m_counts;
    int m_most = 0;
};

} // namespace

// A run as the window shows it: its sheet, the line that stands for it, the rows of the list.
class RunTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        takeNewFolder();
        start();
    }

    /// Files by "number x pages of KB" in their order, what a page and a megabyte take in
    /// milliseconds, and the worst estimate of the whole in percent of the truth at 10, 25, 50 and
    /// 75 % of the time.
    void foreseesItsEnd_data()
    {
        addTextRows({ "files", "page", "megabyte", "worst" }, R"(
            800x3x50           | 12 |  0 | 10 10 10 10
            800x3x50           |  0 | 90 | 10 10 10 10
            10x1x60000 500x1x40 | 15 |  8 | 40 40 40 10
            500x1x40 10x1x60000 | 15 |  8 | 40 40 40 10
            5x1x60000 100x5x40 5x1x60000 100x5x40 | 8 | 10 | 60 40 20 10
            1x2000x60          |  5 |  5 | 10 10 10 10)");
    }

    /// Large files before small ones made a run of seconds look like one of minutes.
    void foreseesItsEnd()
    {
        QFETCH(const QString, files);
        QFETCH(const QString, page);
        QFETCH(const QString, megabyte);
        QFETCH(const QString, worst);
        std::vector<double> pages; // bytes of each
        for (const QString& part : files.split(u' ')) {
            const QStringList numbers = part.split(u'x');
            pages.insert(pages.end(), numbers.at(0).toULong() * numbers.at(1).toULong(),
                         1000 * numbers.at(2).toDouble());
        }
        const auto costMs
            = [&](double bytes) { return page.toDouble() + megabyte.toDouble() * bytes / 1e6; };
        RunWork all;
        double wholeMs = 0;
        for (const double bytes : pages) {
            all = { all.pages + 1, all.bytes + bytes };
            wholeMs += costMs(bytes);
        }
        RunPace pace(all);
        RunWork done;
        double nowMs = 0;
        double shown = 0;
        QStringList found;
        const std::array<double, 4> marks { 0.10, 0.25, 0.50, 0.75 };
        std::size_t next = 0;
        for (const double bytes : pages) {
            nowMs += costMs(bytes);
            done = { done.pages + 1, done.bytes + bytes };
            pace.take(done, std::llround(nowMs));
            QVERIFY(pace.fraction() >= shown && pace.fraction() <= 1); // the bar goes on
            shown = pace.fraction();
            if (next == marks.size() || nowMs < marks.at(next) * wholeMs)
                continue;
            const double foreseen = nowMs + static_cast<double>(pace.remainingMs().value_or(0));
            const double off = std::abs(foreseen / wholeMs - 1) * 100;
            found.append(QString::number(std::llround(off)));
            const double most = worst.split(u' ').at(static_cast<qsizetype>(next++)).toDouble();
            QVERIFY2(off <= most, qPrintable(found.join(u' ')));
        }
        QCOMPARE(next, marks.size());
        QVERIFY(pace.fraction() > 0.999);
    }

    /// Made small a run leaves the list to be read, and changed by nothing: the job reads it.
    void leavesTheListToBeRead()
    {
        const TestFolder folder;
        folder.make(u"a.tif:WW b.tif:WWW c.tif:W"_s);
        QVERIFY(open({ folder.path({}) }));
        settings().setOutputFolderPath(outFolder());
        QMimeData files;
        files.setUrls(urlsOf({ folder.path(u"a.tif"_s) }));
        const auto useTheList = [&] {
            table().highlightRows({ 0 });
            for (const Qt::Key key : { Qt::Key_Space, Qt::Key_Delete, Qt::Key_F2 })
                QTest::keyClick(&table(), key);
            QTest::keyClick(&table(), Qt::Key_Down, Qt::ControlModifier);
            QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, placeOf(2, 0));
            QHeaderView& header = *table().horizontalHeader();
            QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                              { header.sectionViewportPosition(FileTableModel::Pages) + 5, 5 });
            table().highlightRows({ 1 });
            QTest::keyClick(&table(), Qt::Key_Down);
            return order() + u' ' + QString::number(controller().files().checkedCount());
        };
        press("convertBtn");
        press("pauseProcessBtn");
        press("hideDetailsBtn");
        const QWidget& panel = *controller().processViewPanel();
        QVERIFY(!panel.isVisible() && find("runStrip").isVisible());
        QVERIFY(table().isEnabled() && table().hasFocus());
        QCOMPARE(useTheList(), u"a b c 3"_s);
        QCOMPARE(table().highlightedRows(), QList<int> { 2 });
        QVERIFY(!table().validateDrop(nullptr, &files) && !isEnabled("rightBox"));
        QTRY_VERIFY(text("runStripLabel").endsWith(u"of 6 - paused"_s));

        press("runPauseBtn");
        QVERIFY(waitForRun());
        QVERIFY(!panel.isVisible() && !find("runCancelBtn").isVisible());
        QCOMPARE(text("runStripLabel"), u"Finished: 6 images written"_s);
        // A load that began before the Close would be waited for by that.
        controller().openFromOutside(files.urls());
        QTRY_COMPARE(text("additionLabel"), u"1 file(s) wait until the conversion is closed"_s);
        press("runDetailsBtn");
        QVERIFY(panel.isVisible() && !find("runStrip").isVisible());
        press("runCloseBtn");
        QTRY_COMPARE(text("additionLabel"), u"0 added, 1 already there"_s);
        QSignalSpy ended(&controller(), &PagestackAppDelegate::readyToTerminate);
        QVERIFY(controller().applicationShouldTerminate() || ended.wait(longMs)); // of the load
        QVERIFY(!panel.isVisible() && table().validateDrop(nullptr, &files));
        QCOMPARE(useTheList(), u"c b 2"_s); // removes and sorts again
    }

    /// A line that is not told of a change, or that goes on about the list before.
    void saysBeforehandWhatARunWouldWrite()
    {
        const TestFolder folder;
        folder.make(u"in/a.tif:WW in/b.tif:WWW in/c/a.tif:W out/"_s);
        const QString out = folder.path(u"out"_s);
        const auto line = [&] { return text("planLabel"); };
        const auto said = [&] { return find("convertBtn").accessibleDescription(); };
        QTRY_COMPARE(said(), u"The list is empty."_s);
        press("inculdeSubfoldersBtn");
        QVERIFY(open({ folder.path(u"in"_s) }));
        QTRY_COMPARE(line(), u"6 image(s) beside their sources"_s);
        settings().setOutputFolderPath(out);
        QTRY_COMPARE(line(), u"6 image(s) \u2192 %1, 1 clash"_s.arg(out));
        QCOMPARE(said(), line());
        QEvent hover(QEvent::ToolTip);
        QCoreApplication::sendEvent(&find("convertBtn"), &hover);
        QVERIFY(find("convertBtn").toolTip().endsWith(u'\n' + line()));
        makeFile(out + u"/b2.jpg"_s);
        makeFile(out + u"/a1.jpg"_s);
        settings().setSeparator(u"-"_s);
        QTRY_COMPARE(line(), u"6 image(s) \u2192 %1, 1 clash"_s.arg(out));
        settings().setSeparator(u""_s);
        QTRY_COMPARE(line(), u"6 image(s) \u2192 %1, 2 exist, 1 clash"_s.arg(out));
        table().model()->setData(table().model()->index(1, FileTableModel::PagesToConvert),
                                 u"2-3"_s, Qt::EditRole);
        QTRY_COMPARE(line(), u"5 image(s) \u2192 %1, 2 exist, 1 clash"_s.arg(out));
        QCOMPARE(totals(), u"3, 3, 5, 6"_s);
        find<QLineEdit>("pages").setText(u"1"_s); // of each file
        QTRY_VERIFY(!line().isEmpty() && !line().startsWith(u"5 image(s)"_s));
        find<QLineEdit>("pages").clear();
        QTRY_COMPARE(line(), u"5 image(s) \u2192 %1, 2 exist, 1 clash"_s.arg(out));
        settings().setOutputType(2); // the pages of a file together
        QTRY_COMPARE(line(), u"3 image(s) \u2192 %1, 1 clash"_s.arg(out));
        controller().tableModel().mark({ 0, 1, 2 }, FileTableModel::Mark::Uncheck);
        QTRY_COMPARE(said(), u"No page that can be read is ticked."_s);
        QCOMPARE(line(), u""_s);
        controller().tableModel().mark({ 1 }, FileTableModel::Mark::Check);
        settings().setOutputFolderPath(out + u"/none"_s);
        QTRY_COMPARE(line(), u"1 image(s) \u2192 %1/none, the folder is missing"_s.arg(out));
        controller().tableModel().mark({ 0 }, FileTableModel::Mark::Check);
        QTRY_VERIFY(line().startsWith(u"2 image(s)"_s));
        table().highlightRows({ 0 });
        press("removeSelectedAction");
        QTRY_VERIFY(line().startsWith(u"1 image(s)"_s));
    }

    /// Controls that stay as a run, a sheet or a search has left them, and timers that go on for
    /// nothing.
    void leavesTheWindowAsItWas()
    {
        QVERIFY(fill());
        press("toggleSettingsAction"); // which would make room for the preview
        settings().setOutputFolderPath(outFolder());
        press("uncheckAllAction");
        controller().tableModel().mark({ 1 }, FileTableModel::Mark::Check);
        const auto states = [this] {
            QStringList lines;
            for (const auto* part : window().findChildren<QWidget*>())
                if (part->isVisible() && !part->objectName().startsWith(u"qt_"_s))
                    lines.append(u"%1 %2%3"_s.arg(part->objectName())
                                     .arg(part->isEnabled())
                                     .arg(part->property("checked").toBool()));
            for (const auto* action : window().findChildren<QAction*>())
                if (!action->objectName().isEmpty())
                    lines.append(u"%1 %2%3"_s.arg(action->objectName())
                                     .arg(action->isEnabled())
                                     .arg(action->isChecked()));
            return lines;
        };
        const auto take = [this](const QString& step) {
            if (step == u"wait")
                return waitForRun();
            if (step != u"filter")
                return press(qPrintable(step)), true;
            find<QLineEdit>("filterField").setText(u"1"_s);
            const bool isDone = QTest::qWaitFor([&] { return table().model()->rowCount() == 1; });
            QTest::keyClick(&table(), Qt::Key_Escape);
            return isDone;
        };
        table().highlightRows({ 1 });
        const QStringList before = states();
        for (const QString& act :
             { u"convertBtn wait closeProcessBtn"_s,
               u"convertBtn stopAfterFileBtn wait closeProcessBtn"_s,
               u"convertBtn hideDetailsBtn wait closeProcessBtn"_s, u"filter"_s,
               u"togglePreviewAction togglePreviewAction"_s, u"findAction findCloseButton"_s,
               u"toggleSettingsAction toggleSettingsAction"_s,
               u"importAction cancelImportBtn"_s }) {
            QDir(outFolder()).removeRecursively();
            outFolder();
            for (const QString& step : act.split(u' '))
                QVERIFY2(take(step), qPrintable(act));
            table().highlightRows({ 1 });
            QStringList changed;
            const auto isAsBefore = [&] {
                const QStringList now = states();
                changed = now + before;
                changed.removeIf([&](const QString& line) {
                    return before.contains(line) && now.contains(line);
                });
                return changed.isEmpty();
            };
            QVERIFY2(QTest::qWaitFor(isAsBefore),
                     qPrintable(act + u": "_s + changed.join(u", "_s)));
        }
        const auto isAtRest = [] {
            const Ticks ticks;
            return !QTest::qWaitFor([&] { return ticks.most() > 2; }, 1000);
        };
        QVERIFY(QTest::qWaitFor(isAtRest));
    }

    /// A list that forgets with the sheet which files have failed, and why.
    void saysAtEachRowWhatBecameOfIt()
    {
        using State = RowStatus::State;
        const TestFolder folder;
        folder.make(u"in/a.tif:WBW in/b.tif:W in/c.tif:WF out/"_s);
        QVERIFY(open({ folder.path(u"in"_s) }));
        settings().setOutputType(1);
        settings().setOutputFolderPath(folder.path(u"out"_s));
        const auto status = [&](int row) { return controller().tableModel().status(row); };
        const auto states = [&] {
            return QList<State> { status(0).state, status(1).state, status(2).state };
        };
        press("convertBtn");
        press("pauseProcessBtn");
        QTRY_COMPARE(
            text("processPlanLabel"),
            u"3 file(s), 6 page(s): 6 image(s) in %1, such as a1.png"_s.arg(folder.path(u"out"_s)));
        press("pauseProcessBtn");
        QVERIFY(waitForRun());
        press("closeProcessBtn");
        QCOMPARE(states(), (QList<State> { State::Failed, State::Done, State::Warning }));
        QVERIFY(status(0).reason.startsWith(u"Page 2: "_s) && !status(0).reason.contains(u'\n'));
        QVERIFY(status(2).reason.startsWith(u"Page 2: Warning: 1 row"_s));

        alerts().setNextAnswer(3); // Cancel: no run
        press("convertBtn");
        QTRY_VERIFY(isEnabled("convertBtn"));
        QCOMPARE(status(0).text(), u"Failed"_s);
        alerts().setNextAnswer(1); // Skip
        press("convertBtn");
        press("pauseProcessBtn");
        press("cancelProcessBtn");
        QVERIFY(waitForRun());
        press("closeProcessBtn");
        QCOMPARE(states(), QList<State>(3, State::NotReached));
        QCOMPARE(controller().files().checkedCount(), 3);
    }

    /// Images of the sheet's summary that nobody writes, and a file without a page to convert that
    /// is told as not reached, or taken off the list as converted.
    void countsWhatItWrites()
    {
        const TestFolder folder;
        folder.make(u"in/a.tif:WW in/b.tif:T out/"_s);
        const QString out = folder.path(u"out"_s);
        makeFile(out + u"/a.tiff"_s);
        QVERIFY(open({ folder.path(u"in"_s) }));
        settings().setOutputFolderPath(out);
        settings().setOutputType(2);
        press("skip-reduced");
        alerts().setNextAnswer(1); // Skip
        press("convertBtn");
        QVERIFY(waitForRun()); // not paused meanwhile: the question begins it anew
        QCOMPARE(text("processPlanLabel"),
                 u"2 file(s), 2 page(s): 0 image(s) in %1, 0 bytes at most"_s.arg(out));
        QCOMPARE(text("processHeadlineLabel"),
                 u"Finished with problems: 0 images written, 1 of 2 files left out"_s);
        press("closeProcessBtn");
        QCOMPARE(controller().tableModel().status(1).state, RowStatus::State::Warning);
        press("removeConvertedAction");
        QCOMPARE(order(), u"b"_s);
        QTRY_VERIFY(!text("outputExampleLabel").startsWith(u'b')); // which has no output
    }

    /// A stop after the file in hand that was asked for before there was a run, and so ends it.
    void beginsAnewAfterAQuestion()
    {
        const TestFolder folder;
        folder.make(u"in/a.tif:W in/b.tif:W out/"_s);
        makeFile(folder.path(u"out/a1.jpg"_s));
        QVERIFY(open({ folder.path(u"in"_s) }));
        settings().setOutputFolderPath(folder.path(u"out"_s));
        alerts().setNextAnswer(2); // Replace
        press("convertBtn");
        press("stopAfterFileBtn");
        QVERIFY(waitForRun());
        QCOMPARE(text("processHeadlineLabel"), u"Finished: 2 images written"_s);
        press("closeProcessBtn");
    }

    /// Two images of one file and none of the other, which are as many images as files: "All
    /// files".
    void saysAllOnlyOfAll()
    {
        const TestFolder folder;
        folder.make(u"in/a.tif:WW in/b.tif:T out/"_s);
        QVERIFY(open({ folder.path(u"in"_s) }));
        settings().setOutputFolderPath(folder.path(u"out"_s));
        press("skip-reduced");
        press("convertBtn");
        QVERIFY(waitForRun());
        QVERIFY(text("processHeadlineLabel").contains(u"2 images written, 1 of 2 files left out"));
        QCOMPARE(text("processMessageLabel"), u""_s);
        press("closeProcessBtn");
    }

    /// What the rows are told: nothing before the first file is begun, and not of logs.
    void tellsOfTheFileInHand()
    {
        const QString file = makeFile(path(u"a.tif"_s), 3);
        Process job;
        job.setOutputFiles(
            { { .filename = file,
                .fileItems = { FileItem::initWithURL(QUrl::fromLocalFile(file)) } } });
        job.setIsCombining(true);
        RunOutcome outcome;
        RowStatus status;
        int others = 0;
        connect(&outcome, &RunOutcome::changed, &outcome,
                [&](const QHash<QString, RowStatus>& statuses) {
                    status = statuses.value(file);
                    others += statuses.size() == 1 ? 0 : 1;
                });
        outcome.follow(job);
        QVERIFY(!QSignalSpy(&outcome, &RunOutcome::changed).wait(500));
        job.setFileInProcess(u"a.tif"_s);
        QTRY_COMPARE(status.text(), u"Page 1 of 3"_s);
        emit job.pageDone(file, 1, u"a1.jpg"_s, Process::PageOutcome::Written);
        for (int page = 1; page <= 50; ++page)
            emit job.diagnosed({ .sourcePath = file, .page = page, .reason = u"no"_s });
        emit job.diagnosed({ .sourcePath = u"/logs/1.log"_s, .reason = u"not a source"_s });
        QTRY_COMPARE(status.text(), u"Page 2 of 3"_s);
        outcome.finish();
        QCOMPARE(status.state, RowStatus::State::Failed);
        const QStringList reasons = status.reason.split(u'\n');
        QCOMPARE(reasons.size(), 11);
        QVERIFY(reasons.first() == u"Page 1: no"_s && reasons.last() == u"and more"_s);
        QVERIFY(outcome.failed() == QSet<QString> { file } && others == 0);
    }

    /// A long list whose end is forgotten, or that goes on into the next run.
    void tellsOfVeryManyFiles()
    {
        Process job;
        QList<OutputFile> outputs;
        for (int i = 0; i < 2500; ++i)
            outputs.append({ .filename = u"/in/%1.tif"_s.arg(i), .fileItems = {} });
        job.setOutputFiles(outputs);
        RunOutcome outcome;
        qsizetype told = 0;
        connect(&outcome, &RunOutcome::changed, &outcome,
                [&](const QHash<QString, RowStatus>& statuses) { told += statuses.size(); });
        outcome.follow(job);
        outcome.finish();
        QVERIFY(told > 0 && told < 2500);
        QTRY_COMPARE(told, 2500);
        outcome.follow(job);
        outcome.finish();
        outcome.stopFollowing();
        const qsizetype until = told;
        QVERIFY(!QSignalSpy(&outcome, &RunOutcome::changed).wait(100));
        QCOMPARE(told, until);
    }
};

QTEST_MAIN(RunTest)
#include "RunTest.moc"
