#include "engine/plan/RunPlan.h"
#include "mainwindow/run/PlanQuestion.h"
#include "mainwindow/run/ProblemList.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/run/RunOutcome.h"
#include "tests/mainwindow/Session.h"

#include <QElapsedTimer>
#include <QProgressBar>
#include <QScrollBar>

// The parts of a run's window, with a job that does nothing but announce.
class RunPartsTest : public WindowFixture
{
    Q_OBJECT

    ProcessPanel& panel() const { return *controller().processViewPanel(); }
    /// Those that are there; in brackets what cannot be pressed.
    static QString buttons(const QWidget& parent)
    {
        QStringList names;
        for (const auto* button : parent.findChildren<QAbstractButton*>())
            if (button->isVisible())
                names.append(button->isEnabled() ? button->text() : u"(%1)"_s.arg(button->text()));
        return names.join(u'/');
    }
    QString spoken(const char* label) const { return find(label).accessibleName(); }
    QString fileOf(qsizetype number) const { return path(u"in/%1.tif"_s.arg(number)); }
    /// A job with files of so many pages.
    void giveFiles(Process& job, const QList<int>& pages) const
    {
        QList<OutputFile> outputs;
        for (const int count : pages) {
            const QString file = makeFile(fileOf(outputs.size()), count);
            outputs.append({ .filename = file, .fileItems = { itemOf(file) } });
        }
        job.setOutputFiles(outputs);
        job.setTotalFileSelected(static_cast<int>(outputs.size()));
        job.setLog(std::make_shared<Log>());
        job.setIsCombining(true);
    }
    static void doPage(Process& job, Process::PageOutcome outcome = Process::PageOutcome::Written)
    {
        emit job.pageDone({}, 1, {}, outcome);
    }

private slots:
    void init()
    {
        takeNewFolder();
        start();
    }

    /// Controls of the sheet that are of no use by then, and what it says of the run before.
    void showsHowTheRunStands()
    {
        Process jobs[2];
        disconnect(&panel(), &ProcessPanel::closeRequested, nullptr, nullptr); // the window's
        QSignalSpy small(&panel(), &ProcessPanel::isSmallChanged);
        QSignalSpy progressed(&panel(), &ProcessPanel::progressed);
        QSignalSpy cancelled(&panel(), &ProcessPanel::cancelRequested);
        QSignalSpy questioned(&panel(), &ProcessPanel::cancelQuestioned);
        QSignalSpy ended(&panel(), &ProcessPanel::ended);
        QSignalSpy closed(&panel(), &ProcessPanel::closeRequested);
        QVERIFY(!find("runBar").isVisible());
        panel().setSmall(true); // of no run
        QVERIFY(small.isEmpty());
        auto& bar = find<QProgressBar>("processProgressBar");
        for (int i = 0; i < 2; ++i) {
            Process& job = jobs[i];
            giveFiles(job, { 400, 200 });
            panel().follow(job);
            panel().show();
            QCOMPARE(panel().windowTitle(), u"Converting"_s);
            QCOMPARE(buttons(panel()),
                     u"(View Log)/Hide Details/Pause/Stop After This File/Cancel/(Close)"_s);
            QCOMPARE(panel().focusWidget(), &find("pauseProcessBtn"));
            QCOMPARE(text("processPlanLabel"), u"Looking at what is there..."_s);
            QCOMPARE(text("processMessageLabel") + text("processFileLabel"), QString());
            QCOMPARE(bar.value(), 0);
            QCOMPARE(bar.maximum(), 1000);
            QVERIFY(!find("processHeadlineLabel").isVisible() && !find("problemList").isVisible());
            QCOMPARE(spoken("processCountLabel"), u"Images: 0 written, page 0 of 0"_s);
            QCOMPARE(text("processTimeLabel"), u"0:00:00"_s);
            panel().setPlanned({ 600, 6000 }, u"plan"_s);
            QCOMPARE(text("processPlanLabel"), u"plan"_s);
            QCOMPARE(text("processCountLabel"), u"0 written, page 0 of 600"_s);

            job.setFileInProcess(u"a.tif"_s);
            job.setOutputFileInProcess(u"a1.jpg"_s);
            job.setTotalFileCreated(1);
            doPage(job);
            emit job.logTroubleMet(u"/logs/1"_s, u"full"_s);
            progressed.clear();
            QTRY_COMPARE(spoken("processOutputLabel"), u"Image: a1.jpg"_s);
            QCOMPARE(spoken("processFileLabel"), u"File: a.tif"_s);
            QCOMPARE(text("processCountLabel"), u"1 written, page 1 of 600, 1 problem(s)"_s);
            QTRY_VERIFY(bar.value() > 0 && bar.value() < 900 && !progressed.isEmpty());
            QCOMPARE(static_cast<int>(1000 * progressed.last().first().toDouble()), bar.value());
            alerts().setNextAnswer(1); // goes on
            QTest::keyClick(&panel(), Qt::Key_Escape);
            QCOMPARE(questioned.size(), i + 1);

            panel().setSmall(true);
            panel().setSmall(true);
            QVERIFY(!panel().isVisible() && find("runBar").isVisible() && panel().isSmall());
            QCOMPARE(small.size(), 1 + 2 * i);
            QCOMPARE(text("runStripLabel"), u"page 1 of 600, 1 problem(s)"_s);
            QCOMPARE(buttons(find("runStrip")), u"Details/Pause/Cancel"_s);
            QCOMPARE(find<QProgressBar>("runStripBar").value(), bar.value());
            QVERIFY(find("runStripBar").minimumWidth() > 0); // whatever the text
            QCOMPARE(find("runStripBar").x(), 0);
            int end = 0; // none lies over another
            for (const char* part : { "runStripBar", "runStripLabel", "runPauseBtn", "runCancelBtn",
                                      "runDetailsBtn" }) {
                QVERIFY2(find(part).x() >= end && find(part).width() > 0, part);
                end = find(part).geometry().right();
            }
            QVERIFY(!find("runDetailsBtn").toolTip().isEmpty());
            press("runPauseBtn");
            QCOMPARE(buttons(find("runStrip")), u"Details/Resume/Cancel"_s);
            QVERIFY(find<QAbstractButton>("runPauseBtn").isChecked());
            QTRY_VERIFY(text("runStripLabel").endsWith(u", 1 problem(s) - paused"_s));
            press("runPauseBtn");
            QTRY_VERIFY(text("runStripLabel").contains(u" pages/s, "_s));
            press("runDetailsBtn");
            QVERIFY(panel().isVisible() && !find("runBar").isVisible() && !panel().isSmall());
            QCOMPARE(small.size(), 2 + 2 * i);

            press("stopAfterFileBtn");
            QVERIFY(job.gate().endsAfterSource());
            QVERIFY(text("processCountLabel").endsWith(u" - finishing the file in hand"_s));
            press("cancelProcessBtn");
            QVERIFY(text("processCountLabel").endsWith(u" - finishing the page in hand"_s));
            QCOMPARE(cancelled.size(), i + 1);
            QCOMPARE(buttons(panel()),
                     u"(View Log)/Hide Details/Pause/(Stop After This File)/(Cancel)/(Close)"_s);
            QTest::keyClick(&panel(), Qt::Key_Escape);
            QVERIFY(questioned.size() == i + 1 && closed.size() == i);
            press("pauseProcessBtn"); // the end of the run ends the pause

            const int shown = bar.value();
            job.setTimeTaken(i == 0 ? u" 2 sec(s)"_s : QString());
            job.setMessage(u"a\r\nb"_s);
            doPage(job); // which the timer has not shown
            job.setIsCompleted(true);
            QCOMPARE(ended.size(), i + 1);
            QCOMPARE(text("processMessageLabel"), u"a\nb"_s);
            QCOMPARE(spoken("processTimeLabel"),
                     i == 0 ? u"Time: 2 sec(s)"_s : u"Time: under a second"_s);
            QCOMPARE(text("processCountLabel"), u"1 written, page 2 of 600, 1 problem(s)"_s);
            for (const char* name : { "processFileCaption", "processFileLabel",
                                      "processOutputCaption", "processOutputLabel" })
                QVERIFY(!find(name).isVisible());
            QVERIFY(bar.value() > shown && bar.value() < bar.maximum());
            QCOMPARE(buttons(panel()), u"(View Log)/Show &Problems/Show in Folder/Close"_s);
            QCOMPARE(panel().focusWidget(), &find("closeProcessBtn"));
            QTest::keyClick(&panel(), Qt::Key_Escape);
            QCOMPARE(closed.size(), i + 1);
            const int low = panel().height();
            for (int press = 0; press < 2; ++press) {
                this->press("showProblemsBtn");
                QCOMPARE(panel().height() > low, press == 0);
            }
            press("showProblemsBtn");
            QVERIFY(find("problemList").isVisible() && find("saveProblemsBtn").isVisible());
            QVERIFY(!find("problemsLeftLabel").isVisible());
            progressed.clear();
            QVERIFY(!progressed.wait(200));
        }
        panel().stopFollowing();
        QVERIFY(!panel().isVisible() && !controller().processViewPanel()->isFollowing());
        jobs[1].setIsCompleted(true);
        QCOMPARE(ended.size(), 2);
    }

    /// An end that is called by another name, and commands for what is not there.
    void saysHowTheRunEnded_data()
    {
        addTextRows(R"(
            -                | 0 | View Log/Close                 | Finished
            image            | 0 | View Log/Show in Folder/Close  | Finished
            problem          | 1 | View Log/Show &Problems/Close  | Finished with problems
            left             | 0 | View Log/Tick Failed Only/Close | Finished with problems
            cancelled left   | 0 | View Log/Tick Failed Only/Close | Cancelled
            reason cancelled left | 1 | View Log/Show &Problems/Tick Failed Only/Close | Ended early)");
    }

    void saysHowTheRunEnded()
    {
        const auto [what, problems, controls, title] = textRow<4>();
        const bool hasLeft = what.contains(u"left"_s);
        Process job;
        giveFiles(job, { 1 });
        job.setMessage(Process::allConvertedText());
        panel().follow(job);
        panel().show();
        panel().setSmall(true);
        if (what.contains(u"problem"_s))
            emit job.diagnosed({ .sourcePath = u"/in/0.tif"_s, .reason = u"torn"_s });
        if (what.contains(u"reason"_s))
            job.log()->reason = u"the disk is full"_s;
        job.log()->isCancelled = what.contains(u"cancelled"_s);
        job.setTotalFileCreated(what.contains(u"image"_s) ? 1 : 0);
        job.setIsCompleted(true);
        QCOMPARE(find<QProgressBar>("processProgressBar").value(), 1000);
        panel().showOutcome(u"0 images written"_s, hasLeft, !hasLeft);
        QCOMPARE(text("processMessageLabel"), hasLeft ? QString() : job.message());
        QCOMPARE(text("runStripLabel"), title + u": 0 images written"_s);
        QCOMPARE(buttons(find("runStrip")), u"Details/Close"_s);
        panel().setSmall(false);
        QCOMPARE(panel().windowTitle(), title);
        QCOMPARE(text("processHeadlineLabel"), title + u": 0 images written"_s);
        QVERIFY(find("processHeadlineLabel").isVisible());
        QCOMPARE(buttons(panel()).remove(u'(').remove(u')'), controls);
        const auto& list = find<ProblemList>("problemList");
        QCOMPARE(list.topLevelItemCount(), problems.toInt());
        if (problems.toInt() > 0)
            QCOMPARE(list.topLevelItem(0)->text(2),
                     what.startsWith(u'r') ? u"the disk is full"_s : u"torn"_s);
        panel().stopFollowing();
    }

    /// Problems that lose their page, their file or their lines on the way to where they are read.
    void listsProblems()
    {
        ProblemList list;
        list.resize(600, 200);
        list.show();
        list.add({ .severity = Diagnostic::Severity::Warning,
                   .sourcePath = u"/in/<b>.tif"_s,
                   .reason = u"odd\ttag"_s });
        list.add(
            { .sourcePath = u"/in/b.tif"_s, .page = 3, .reason = u"torn"_s, .detail = u"line"_s });
        const auto& item = *list.topLevelItem(0);
        QCOMPARE(item.text(0) + u'|' + item.text(1) + u'|' + item.text(2),
                 u"<b>.tif||Warning: odd\ttag"_s);
        QVERIFY(item.toolTip(0).contains(u"&lt;b&gt;"_s) && !item.toolTip(2).contains(u"<br"_s));
        const QString tip = list.topLevelItem(1)->toolTip(2);
        QVERIFY(tip.contains(u"torn"_s) && tip.contains(u"line"_s));
        QCOMPARE(list.headerItem()->text(2), u"What happened"_s);
        QVERIFY(!list.rootIsDecorated() && list.uniformRowHeights());
        QVERIFY(list.columnWidth(0) > 2 * list.columnWidth(1) && list.columnWidth(1) < 100);
        QCOMPARE(list.selectionMode(), QAbstractItemView::ExtendedSelection);
        QCOMPARE(list.contextMenuPolicy(), Qt::ActionsContextMenu);
        QCOMPARE(list.textElideMode(), Qt::ElideMiddle);
        const auto command = [&](int number) { list.actions().at(number)->trigger(); };
        QSignalSpy requested(&list, &ProblemList::fileRequested);
        command(2); // of nothing
        command(0);
        QVERIFY(requested.isEmpty());
        const QStringList lines { u"/in/<b>.tif\t\tWarning: odd tag"_s, u"/in/b.tif\t3\ttorn"_s };
        command(1);
        QCOMPARE(QGuiApplication::clipboard()->text().split(u'\n'), lines);
        list.setCurrentItem(list.topLevelItem(1));
        command(0);
        QCOMPARE(QGuiApplication::clipboard()->text(), lines.last());
        command(2);
        QCOMPARE(requested.takeFirst().first().toString(), u"/in/b.tif"_s);
        QCOMPARE(list.allText(), lines.join(u'\n') + u'\n');
        list.removeAll();
        QVERIFY(list.count() == 0 && list.topLevelItemCount() == 0);
    }

    /// Files that are told by another name than what became of them, and counts that go on into the
    /// next run.
    void tellsFilesApart()
    {
        using State = RowStatus::State;
        using Outcome = Process::PageOutcome;
        Process job;
        RunOutcome outcome;
        QHash<QString, RowStatus> statuses;
        connect(&outcome, &RunOutcome::changed, &outcome,
                [&](const auto& some) { statuses.insert(some); });
        const auto say = [&](int file, Diagnostic::Severity severity) {
            emit job.diagnosed(
                { .severity = severity, .sourcePath = fileOf(file), .reason = u"odd"_s });
        };
        for (int i = 0; i < 2; ++i) {
            statuses.clear();
            giveFiles(job, { 2, 1, 1, 1, 0, 0, 3, 1 });
            outcome.follow(job);
            if (i == 0)
                outcome.follow(job); // counts each page once
            QVERIFY(outcome.converted().isEmpty() && outcome.failed().isEmpty());
            doPage(job);
            doPage(job, Outcome::Skipped);
            job.setTotalFileProcessed(1);
            say(1, Diagnostic::Severity::Warning);
            say(7, Diagnostic::Severity::Error); // not the one in hand
            doPage(job);
            job.setTotalFileProcessed(2);
            doPage(job, Outcome::Failed);
            job.setTotalFileProcessed(3);
            say(3, Diagnostic::Severity::Error);
            doPage(job);
            job.setTotalFileProcessed(4);
            say(4, Diagnostic::Severity::Warning);
            job.setTotalFileProcessed(5);
            job.setTotalFileProcessed(6);
            doPage(job);
            outcome.finish();
            QList<State> states;
            for (int file = 0; file < 8; ++file)
                states.append(statuses.value(fileOf(file)).state);
            QCOMPARE(states,
                     (QList<State> { State::Done, State::Warning, State::Failed, State::Failed,
                                     State::Warning, State::NotReached, State::NotReached,
                                     State::NotReached }));
            QCOMPARE(statuses.value(fileOf(6)).reason, u"Cancelled when 1 of 3 pages were done."_s);
            QCOMPARE(statuses.value(fileOf(1)).reason, u"Warning: odd"_s);
            QVERIFY(statuses.value(fileOf(7)).reason.isEmpty());
            QCOMPARE(
                outcome.headline(1),
                u"1 image written, 2 of 8 files failed, 1 of 8 files left out, 3 of 8 files not finished"_s);
            QVERIFY(outcome.failed().size() == 2 && outcome.converted().size() == 2);
            QSignalSpy changes(&outcome, &RunOutcome::changed);
            say(0, Diagnostic::Severity::Error); // of no run
            doPage(job);
            QVERIFY(!changes.wait(300));
            job.setTotalFileProcessed(0);
        }
        QCOMPARE(outcome.headline(2).section(u',', 0, 0), u"2 images written"_s);
    }

    /// A clock that goes on during a pause, and figures of the run before.
    void knowsHowFarItIs()
    {
        Process job;
        giveFiles(job, { 2, 6 });
        const RunWork all = workOf(job.outputFiles(), job.runOptions());
        const auto sizeOf
            = [&](int file) { return job.outputFiles().at(file).fileItems.first()->size(); };
        QVERIFY(all.pages == 8 && all.bytes == sizeOf(0) + sizeOf(1) && all.bytes > 0);
        RunProgress alone(1); // nobody prepares pages beside it
        alone.follow(job);
        alone.setPlanned(all);
        doPage(job);
        alone.update();
        RunPace pace(all);
        pace.take({ 1, sizeOf(0) / 2.0 }, 0);
        QCOMPARE(alone.fraction(), pace.fraction());
        RunProgress progress(2);
        progress.update(); // of no job
        QCOMPARE(progress.fraction(), 0.0);
        for (int i = 0; i < 2; ++i) {
            QElapsedTimer total;
            total.start();
            progress.follow(job);
            QCOMPARE(progress.pageText(), u"page 0 of 0"_s);
            QCOMPARE(progress.paceText(), QString());
            QVERIFY(!progress.isPaused());
            QVERIFY(!QSignalSpy(&job, &Process::pageDone).wait(30)); // no part of the conversion
            progress.setPlanned(all);
            progress.update();
            QCOMPARE(progress.fraction(), 0.0);
            doPage(job);
            progress.update();
            QCOMPARE(progress.pageText(), u"page 1 of 8"_s);
            const double first = progress.fraction();
            QVERIFY(first >= 0.12 && first < 1);
            job.setTotalFileProcessed(1); // without its other page
            for (int page = 0; page < 6; ++page)
                doPage(job);
            progress.update();
            QCOMPARE(progress.fraction(), 1.0);
            QTRY_VERIFY_WITH_TIMEOUT((progress.update(), !progress.paceText().isEmpty()), longMs);
            QTRY_VERIFY_WITH_TIMEOUT(progress.paceText().contains(u" pages/s, "_s), longMs);
            progress.setPaused(true);
            const qint64 worked = progress.workedMs();
            QVERIFY(!QSignalSpy(&job, &Process::pageDone).wait(50));
            QVERIFY(progress.isPaused() && progress.workedMs() == worked);
            progress.setPaused(false);
            progress.setPaused(false);
            QVERIFY(!progress.isPaused() && total.elapsed() - progress.workedMs() >= 80);
            progress.setPaused(true);
            job.setTotalFileProcessed(0);
        }
        progress.stopFollowing();
        doPage(job);
        QCOMPARE(progress.pageText(), u"page 7 of 8"_s);
    }

    /// A pace of the whole run where it is that of the last seconds, and figures too early.
    void countsPagesASecond()
    {
        RunPace pace({ 1000, 1e6 });
        QVERIFY(!pace.remainingMs() && pace.pagesPerSecond() == 0 && pace.fraction() == 0);
        const std::tuple<int, double, double, int> steps[]
            = { { 500, 10, 0, -1 },      { 1000, 20, 20, 49000 },  { 2000, 40, 20, 48000 },
                { 4000, 80, 20, 46000 }, { 8000, 80, 9.3, 42000 }, { 8100, 90, 2.4, -2 } };
        for (const auto& [ms, pages, speed, left] : steps) {
            pace.take({ pages, pages * 1000 }, ms);
            QCOMPARE(std::round(pace.pagesPerSecond() * 10) / 10, speed);
            if (left > -2)
                QCOMPARE(pace.remainingMs().value_or(-1), left);
        }
        QCOMPARE(shortClockText(59499), u"0:59"_s);
        QCOMPARE(shortClockText(3'727'000), u"1:02:07"_s);
    }

    /// Questions that go on for pages, or that are silent on what they leave out.
    void namesTheFirstOfManyFiles()
    {
        QList<OutputFile> outputs;
        for (int i = 0; i < 6; ++i) {
            const QString file = makeFile(path(u"%1/a.tif"_s.arg(i)));
            outputs.append({ .filename = file, .fileItems = { itemOf(file) } });
        }
        settings().setOutputFolderPath(outFolder());
        settings().setOutputType(2);
        const RunOptions options;
        const auto planned = [&](RunPlan::Numbering numbering) {
            return RunPlan(outputs, settings(), options, numbering, {}, [] { return true; });
        };
        const RunPlan plan = planned(RunPlan::Numbering::None);
        const QStringList lines
            = planQuestion(plan, planned(RunPlan::Numbering::Clashing)).split(u'\n');
        QCOMPARE(lines.size(), 8);
        QCOMPARE(lines.at(5), u"and 1 more"_s);
        QVERIFY(lines.last().startsWith(u"With a number, a.tiff of "_s));
        QCOMPARE(planQuestion(plan, plan).split(u'\n').size(), 6); // which solves nothing
        outputs.resize(1);
        makeFile(path(u"out/a.tiff"_s));
        QVERIFY(existingQuestion(planned(RunPlan::Numbering::None))
                    .startsWith(u"A file of this run exists already:\n/"_s));
    }

    /// Rows in hand that are out of sight.
    void followsTheFileInHand()
    {
        QVERIFY(open({ manyFiles() }));
        settings().setOutputFolderPath(outFolder());
        QScrollBar& bar = *table().verticalScrollBar();
        for (int i = 0; i < 3; ++i) { // wherever the run before has left the list
            bar.setValue(0);
            if (i == 2) // the user goes back to the first row, and stays there
                connect(
                    &bar, &QScrollBar::valueChanged, this, [&] { bar.setValue(0); },
                    Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
            press("convertBtn");
            QVERIFY(waitForRun());
            const QRect last = table().visualRect(table().model()->index(299, 0));
            const bool isInView = table().viewport()->rect().intersects(last);
            press("closeProcessBtn");
            QCOMPARE(isInView || table().rowAt(0) > 0, i < 2);
            QCOMPARE(controller().tableModel().status(299).state, RowStatus::State::Failed);
        }
    }
};

QTEST_MAIN(RunPartsTest)
#include "RunPartsTest.moc"
