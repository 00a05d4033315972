#include "engine/support/Application.h"
#include "engine/support/Info.h"
#include "mainwindow/ProgramText.h"
#include "mainwindow/desktop/ApplicationEvents.h"
#include "mainwindow/run/ProcessPanel.h"
#include "tests/mainwindow/Session.h"
#include "tests/support/TestFolder.h"

#include <QComboBox>
#include <QDirIterator>
#include <QFileOpenEvent>
#include <QImage>
#include <QMenuBar>
#include <QProcess>
#include <QProgressBar>
#include <QSlider>
#include <QSplitter>
#include <QTreeWidget>
#include <QWindow>

class WindowTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        takeNewFolder();
        start();
    }

    void startsTheFirstTime()
    {
        QVERIFY(window().isVisible());
        QCOMPARE(window().windowTitle(), u"Pagestack"_s);
        QCOMPARE(getAppTitle(u" 1"_s), u"Pagestack 1"_s);
        QVERIFY(find("rightBox").isVisible());
        QCOMPARE(totals(), u"0, 0, 0, 0"_s);
        QCOMPARE(text("labelTimeTaken"), u"Total Time Taken : 0 sec(s) 0/0"_s);
        QCOMPARE(controller().process()->totalFileSelected(), 1);
        QVERIFY(QDir(path(u"data/Corvanta/Pagestack1/Logs"_s)).exists());
    }

    void enablesWhatHasSomethingToActOn_data()
    {
        // When the list is empty, filled, its first file highlighted, its last one, and it is busy.
        addTextRows({ "enabled", "controls" }, R"(
            xxxx- | importBtn addFilesBtn addFolderBtn searchBtn mainTableView inculdeSubfoldersBtn
            xxxx- | addFilesAction addFolderAction importAction preferencesToolbarItem rightBox
            xxxx- | toggleSettingsAction
            xxxxx | cancelBtn cancelMenuAction
            -xxx- | removeBtn openFileButton getInfoButton openEnclosedFolderButton selectAllButton
            -xxx- | deselectAllButton removeSelectedFilesButton removeAllFilesButton exportAction
            -xxx- | exportToolbarItem findAction selectAllRowsAction deselectAllRowsAction
            -xxx- | checkAllAction uncheckAllAction invertCheckAction removeAllAction
            -xxx- | convertBtn convertMenuAction
            --xx- | openFileAction revealAction getInfoAction checkSelectionAction
            --xx- | uncheckSelectionAction invertSelectionAction removeSelectedAction
            ---x- | moveUpButton moveUpAction
            --x-- | moveDownButton moveDownAction)");
    }

    void enablesWhatHasSomethingToActOn()
    {
        QFETCH(const QString, controls);
        QString found;
        const auto look = [&] {
            QString states;
            for (const QString& name : controls.split(u' '))
                states += isEnabled(qPrintable(name)) ? u'x' : u'-';
            found += states.count(states.front()) == states.size() ? states.front() : u'?';
        };
        look();
        // Else drops on the middle of an empty list would do nothing.
        QVERIFY(find("lableDragAndDrop").testAttribute(Qt::WA_TransparentForMouseEvents));
        QVERIFY(fill());
        look();
        for (const int row : { 0, 5 }) {
            table().highlightRows({ row });
            look();
        }
        controller().resetView(false);
        look();
        QTEST(found, "enabled");
    }

    void loads_data()
    {
        addTextRows({ "way", "chosen", "below", "counts" }, R"(
            addFilesBtn     | a.tif sub/c.tif |       | 2, 2, 4, 4
            addFolderBtn    | .               |       | 1, 1, 1, 1
            addFolderBtn    | .               | below | 2, 2, 4, 4
            addFilesAction  | sub/c.tif       |       | 1, 1, 3, 3
            addFolderAction | .               |       | 1, 1, 1, 1
            drop            | .               |       | 1, 1, 1, 1
            drop            | .               | below | 2, 2, 4, 4
                            | a.tif sub/c.tif |       | 2, 2, 4, 4
                            | .               | below | 2, 2, 4, 4)");
    }

    void loads()
    {
        QFETCH(const QString, way);
        QFETCH(const QString, chosen);
        QFETCH(const QString, below);
        makeFile(u"a.tif"_s, 1);
        makeFile(u"b.Tif"_s, 2);
        makeFile(u"sub/c.tif"_s, 3);
        if (!below.isEmpty())
            press("inculdeSubfoldersBtn");
        QStringList paths;
        for (const QString& name : chosen.split(u' '))
            paths.append(path(name));
        const QList<QUrl> urls = urlsOf(paths);
        const bool hasDialog = way.startsWith(u"add"_s);
        if (hasDialog) {
            chooser().setNextChoice({}); // cancelled
            press(qPrintable(way));
            chooser().setNextChoice(urls);
        }
        QVERIFY(load([&] {
            if (hasDialog)
                press(qPrintable(way));
            else if (way == u"drop"_s)
                emit table().filesDropped(urls);
            else
                controller().openPaths(chosen.split(u' '));
        }));
        QTEST(totals(), "counts");
        QVERIFY(!text("labelTimeTaken").contains(u"Process"_s));
        QCOMPARE(window().focusWidget(), &table());
        const bool areFiles = way.startsWith(u"addFile"_s);
        QCOMPARE(chooser().lastMessage() + chooser().lastExtensions().join(u','),
                 areFiles        ? u"Select TIFF File(s):tif,TIF,tiff,TIFF"_s
                     : hasDialog ? u"Select folder(s) contains TIFF File(s):"_s
                                 : QString());
    }

    void keepsWhatACancelledLoadAdded()
    {
        table().sortByColumn(FileTableModel::Name, Qt::DescendingOrder);
        QString line;
        connect(&controller().tableModel(), &QAbstractItemModel::rowsInserted, &window(), [&] {
            if (controller().files().count() != 20)
                return;
            line = text("labelTimeTaken");
            QVERIFY(find("loadingIndicator").isVisible());
            QVERIFY(!find("lableDragAndDrop").isVisible()); // from the first file on
            QVERIFY(!isEnabled("addFilesBtn") && !isEnabled("convertBtn"));
            press("cancelMenuAction");
        });
        QVERIFY(open({ manyFiles() }));
        QCOMPARE(line, u"Total Time Taken : In Process... 0/0"_s);
        QCOMPARE(totals(), u"20, 20, 20, 20"_s);
        QVERIFY(!find("loadingIndicator").isVisible());
        const QStringList loaded = names();
        QVERIFY(std::is_sorted(loaded.rbegin(), loaded.rend()));
        QTRY_VERIFY(!text("labelTimeTaken").contains(u"Process"_s));
    }

    void endsALoadWhenTheWindowCloses()
    {
        const QString folder = manyFiles();
        for (const int loaded : { 0, 1, 100, 299 }) {
            start();
            QSignalSpy ready(&controller(), &PagestackAppDelegate::readyToTerminate);
            connect(&controller().tableModel(), &QAbstractItemModel::rowsInserted, &window(), [&] {
                if (controller().files().count() == loaded)
                    window().close();
            });
            controller().openPaths({ folder });
            if (loaded == 0) { // before the load has come to its first file
                window().close();
                QVERIFY(!controller().applicationShouldTerminate());
            }
            QVERIFY(ready.wait(longMs));
            QCOMPARE(ready.size(), 1);
            QCOMPARE(totals(), u"%1, %1, %1, %1"_s.arg(loaded));
            QVERIFY(controller().applicationShouldTerminate());
        }
    }

    void asksForTheOutputFolder_data()
    {
        addTextRows(R"(
            nowhere            | 1 | Output folder missing or invalid path!         |
            nowhere            | 0 | Output folder m  | Total 7 files converted successfully.
            none/nowhere       | 0 | Output folder missing or invalid path!         |
            closed             | 0 | Output folder is non-writable!                 |
            samples/turned.tif | 0 |                  | Total 0 files converted successfully.
                               | 1 | No output folder selected, file(s) will be     |
                               | 0 | No output folder | Total 7 files converted successfully.)");
    }

    void asksForTheOutputFolder()
    {
        const auto [folder, answer, question, outcome] = textRow<4>();
        const bool isRefused = outcome.isEmpty();
        QVERIFY(open({ samples() }));
        if (folder == u"closed"_s) {
            QDir().mkpath(path(folder));
            QFile::setPermissions(path(folder), QFile::ReadOwner | QFile::ExeOwner);
            if (QFileInfo(path(folder)).isWritable())
                QSKIP("this user may write everywhere");
        }
        press("toggleSettingsAction");
        QVERIFY(!find("rightBox").isVisible());
        find<QTabWidget>("settingTabView").setCurrentIndex(isRefused ? 0 : 1);
        if (!folder.isEmpty())
            find<QLineEdit>("outputFolderPath").setText(path(folder)); // not committed yet
        alerts().setNextAnswer(answer.toInt());
        press("convertBtn");

        QCOMPARE(alerts().lastText().left(question.size()), question);
        QCOMPARE(alerts().askedCount(), question.isEmpty() ? 0 : 1);
        QCOMPARE(find("rightBox").isVisible(), isRefused);
        QCOMPARE(find<QTabWidget>("settingTabView").currentIndex(), isRefused ? 1 : 0);
        QCOMPARE(controller().processViewPanel()->isVisible(), !isRefused);
        QCOMPARE(window().focusWidget() == &find("chooseOutputFolderBtn"), isRefused);
        if (isRefused)
            return;
        QVERIFY(waitForRun());
        QCOMPARE(text("processMessageLabel"), outcome);
        QCOMPARE(text("processCountLabel").contains(u"7 problem(s)"_s), question.isEmpty());
        if (!folder.isEmpty())
            return;
        QCOMPARE(QDir(samples()).entryList({ u"*.jpg"_s }).size(), 7);
        press("showFolderBtn");
        QCOMPARE(desktop().opened.last().toLocalFile(), samples());
    }

    void beginsNoRunBesideALoad()
    {
        QVERIFY(open({ samples() }));
        press("convertBtn");
        const auto& question = find<QMessageBox>();
        QVERIFY(load([&] {
            controller().openPaths({ makeFile(path(u"in/a.tif"_s)) });
            question.buttons().first()->click(); // "Yes": to the folders of the sources
        }));
        QVERIFY(!controller().processViewPanel()->isVisible());
        QCOMPARE(totals(), u"6, 6, 8, 8"_s);
        QCOMPARE(QDir(samples()).entryList({ u"*.jpg"_s }).size(), 0);
    }

    void asksBeforeOutputsReplaceEachOther()
    {
        QVERIFY(open({ makeFile(path(u"a/scan.tif"_s)), makeFile(path(u"b/scan.tif"_s)) }));
        settings().setOutputFolderPath(outFolder());
        for (const bool isCancelled : { true, false }) {
            alerts().setNextAnswer(isCancelled ? 2 : 0);
            press("convertMenuAction");
            QTRY_COMPARE_WITH_TIMEOUT(alerts().askedCount(), isCancelled ? 1 : 2, longMs);
            QCOMPARE(alerts().lastText() + u'\n' + alerts().lastButtons().join(u'/'),
                     u"Some outputs of this run would replace each other or a file of the list:\n"
                     "scan1.jpg would be written by %1/a/scan.tif and by %1/b/scan.tif\n\n"
                     "With a number, scan1.jpg of %1/b/scan.tif is written as scan1-2.jpg.\n"
                     "Number the later ones/Keep folder structure/Cancel"_s.arg(path(u""_s)));
            QCOMPARE(controller().processViewPanel()->isVisible(), !isCancelled);
            for (const char* name : { "convertBtn", "addFilesBtn" })
                QCOMPARE(isEnabled(name), isCancelled);
        }
        QVERIFY(waitForRun());
        QCOMPARE(controller().process()->totalFileProcessed(), 2);
        // Two files without pixels, each reported once although the panel followed the job twice.
        QCOMPARE(find<QTreeWidget>("problemList").topLevelItemCount(), 2);
        press("closeProcessBtn");
        QVERIFY(isEnabled("convertBtn"));

        alerts().setNextAnswer(1);
        press("convertBtn");
        QVERIFY(waitForRun());
        QVERIFY(find<QAbstractButton>("mirror").isChecked());
        QVERIFY(controller().process()->log()->files.back()->targetPath.endsWith(u"/out/b"));
    }

    /// Files that are replaced unasked, or by another choice than that of the user, or asked about
    /// in each run.
    void asksAboutFilesThatExist_data()
    {
        addTextRows(R"(
            0 | a1.jpg old, a1-2.jpg new | 1 | Number
            1 | a1.jpg old               | 1 | Skip
            2 | a1.jpg new               | 1 | Replace
            3 | a1.jpg old               | 2 | Cancel)");
    }

    void asksAboutFilesThatExist()
    {
        const auto [answer, outcome, asked, button] = textRow<4>();
        QVERIFY(QFile::copy(sample(u"text-page.tif"_s), path(u"a.tif"_s)));
        QVERIFY(open({ path(u"a.tif"_s) }));
        settings().setOutputFolderPath(outFolder());
        const auto file = [&](const QString& name) { return path(u"out/"_s + name); };
        for (int i = 1; i <= 2; ++i) {
            QFile::remove(file(u"a1.jpg"_s));
            QFile::remove(file(u"a1-2.jpg"_s));
            QVERIFY(QFile::copy(sample(u"turned.tif"_s), file(u"a1.jpg"_s)));
            alerts().setNextAnswer(answer.toInt());
            press("convertBtn");
            if (button == u"Cancel")
                QTRY_COMPARE_WITH_TIMEOUT(alerts().askedCount(), i, longMs);
            else
                QVERIFY(waitForRun());
            QStringList found;
            for (const QString& name : { u"a1.jpg"_s, u"a1-2.jpg"_s })
                if (QFile::exists(file(name)))
                    found.append(name
                                 + (QImage(file(name), "JPEG").isNull() ? u" old"_s : u" new"_s));
            QCOMPARE(found.join(u", "_s), outcome);
            QCOMPARE(alerts().lastText(),
                     u"A file of this run exists already:\n"_s + file(u"a1.jpg"_s));
            QCOMPARE(alerts().lastButtons().value(answer.toInt()), button);
            press("closeProcessBtn");
        }
        QCOMPARE(alerts().askedCount(), asked.toInt());
    }

    void runsToTheEnd()
    {
        const QString out = outFolder();
        QVERIFY(open({ samples() }));
        controller().tableModel().mark({ static_cast<int>(names().indexOf(u"turned.tif"_s)) },
                                       FileTableModel::Mark::Uncheck);
        QTest::keyClick(&find("outputType"), Qt::Key_Down);
        chooser().setNextChoice(urlsOf({ out }));
        press("chooseOutputFolderBtn");
        desktop().isRefusing = true;
        QTest::ignoreMessage(QtWarningMsg, "Error in (Process=>viewLog) : refused");

        press("convertBtn");
        const auto& bar = find<QProgressBar>("processProgressBar");
        QVERIFY(bar.minimum() < bar.maximum());
        QVERIFY(controller().processViewPanel()->isVisible());
        QCOMPARE(controller().process()->totalFileSelected(), 4);
        QVERIFY(!find("loadingIndicator").isVisible());
        const QPalette palette = window().palette();
        const auto color = [&] { return find("labelTotalFiles").palette().windowText().color(); };
        QCOMPARE(color(), palette.color(QPalette::Disabled, QPalette::WindowText));
        QVERIFY(color() != palette.color(QPalette::Active, QPalette::WindowText));
        for (const char* name :
             { "convertBtn", "convertMenuAction", "cancelBtn", "cancelMenuAction", "addFilesBtn",
               "rightBox", "closeProcessBtn", "viewLogBtn" })
            QVERIFY2(!isEnabled(name), name);
        QVERIFY(waitForRun());
        QCOMPARE(text("processMessageLabel"), u"Total 6 files converted successfully."_s);
        QCOMPARE(text("processCountLabel"), u"6 written, page 6 of 6"_s);
        QCOMPARE(bar.value(), bar.maximum());
        QCOMPARE(wholePages().size(), 6);
        QVERIFY(text("labelTimeTaken").endsWith(u" 4/4"_s));
        QVERIFY(!isEnabled("addFilesBtn") && !isEnabled("cancelProcessBtn"));

        press("viewLogBtn");
        desktop().isRefusing = false;
        press("viewLogBtn");
        QVERIFY(!logFile().isEmpty());
        const QString page = logFile().chopped(4) + u".html"_s;
        QCOMPARE(desktop().opened.last().toLocalFile(), page);
        QVERIFY(QFile::remove(page));
        press("viewLogBtn");
        QCOMPARE(desktop().opened.last().toLocalFile(), logFile());
        press("closeProcessBtn");
        QVERIFY(!controller().processViewPanel()->isVisible());
        QCOMPARE(window().focusWidget(), &table());
        QCOMPARE(color(), palette.color(QPalette::Active, QPalette::WindowText));
        QCOMPARE(controller().processingLabelColor(), color());
        QCOMPARE(totals(), u"5, 4, 6, 7"_s);
        QVERIFY(isEnabled("convertBtn") && isEnabled("addFilesBtn"));
        QCOMPARE(text("labelTimeTaken"), u"Total Time Taken : 0 sec(s) 0/0"_s);
        controller().viewLogAction(); // of no job

        press("clearProcessedFilesBtn");
        alerts().setNextAnswer(2); // Replace
        press("convertBtn"); // shows nothing of the run before
        QCOMPARE(bar.value(), 0);
        QCOMPARE(text("processMessageLabel"), u""_s);
        QVERIFY(isEnabled("cancelProcessBtn") && find("processFileLabel").isVisible());
        QVERIFY(waitForRun());
        QCOMPARE(text("processCountLabel"), u"6 written, page 6 of 6"_s);
        QCOMPARE(desktop().opened.last().toLocalFile(), out);
        press("closeProcessBtn");
        QCOMPARE(totals(), u"1, 0, 0, 1"_s);
        QVERIFY(!isEnabled("convertBtn") && isEnabled("addFilesBtn"));
    }

    // Else the user learns neither which page is missing nor which one has white rows.
    void showsTheProblemsOfARun()
    {
        const TestFolder folder;
        folder.make(u"in/a.tif:WBW in/b.tif:W in/c.tif:WF out/"_s);
        const QString damaged = folder.path(u"in/a.tif"_s);
        const QString fax = folder.path(u"in/c.tif"_s);
        QVERIFY(open({ damaged, folder.path(u"in/b.tif"_s), fax }));
        settings().setOutputFolderPath(folder.path(u"out"_s));
        settings().setOutputType(1);
        const QWidget& button = find("showProblemsBtn");
        auto& list = find<QTreeWidget>("problemList");
        const auto run = [&] {
            alerts().setNextAnswer(2); // Replace
            press("convertBtn");
            return !button.isVisible() && waitForRun();
        };
        const auto toolTip = [&](int row) {
            const QAbstractItemModel& model = *table().model();
            return model.index(row, FileTableModel::Name).data(Qt::ToolTipRole).toString();
        };
        QVERIFY(run());
        QVERIFY(text("processCountLabel").endsWith(u", 2 problem(s)"_s));
        QVERIFY(button.isVisible() && !list.isVisible());
        press("showProblemsBtn");
        QVERIFY(list.isVisible());

        QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&list, Qt::Key_C, Qt::ControlModifier);
        const QStringList lines = QGuiApplication::clipboard()->text().split(u'\n');
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines.first().startsWith(damaged + u"\t2\t"_s), qPrintable(lines.first()));
        QCOMPARE(lines.last(),
                 fax + u"\t2\tWarning: 1 row of the fax is damaged; what is lost of it is white"_s);
        QCOMPARE(toolTip(0), damaged + u"\nPage 2: "_s + lines.first().section(u'\t', 2));
        QVERIFY(toolTip(2).startsWith(fax + u"\nPage 2: Warning: 1 row"_s));

        chooser().setNextChoice(urlsOf({ path(u"problems.txt"_s) }));
        press("saveProblemsBtn");
        QFile saved(path(u"problems.txt"_s));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(saved.readAll()), lines.join(u'\n') + u'\n');
        chooser().setNextChoice(urlsOf({ path(u"none/problems.txt"_s) }));
        press("saveProblemsBtn");
        QVERIFY(!alerts().lastText().isEmpty());

        const QRect row = list.visualItemRect(list.topLevelItem(1));
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, row.center());
        QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, row.center());
        QCOMPARE(table().highlightedRows(), QList<int> { 2 });
        QCOMPARE(text("processHeadlineLabel"),
                 u"Finished with problems: 5 images written, 1 of 3 files failed"_s);
        press("showFolderBtn");
        QCOMPARE(desktop().opened.last().toLocalFile(), folder.path(u"out"_s));
        press("tickFailedBtn");
        QCOMPARE(table().highlightedRows(), QList<int> { 2 });
        QCOMPARE(totals(), u"3, 1, 3, 6"_s);

        controller().tableModel().mark({ 0, 1 }, FileTableModel::Mark::Invert);
        QVERIFY(run());
        QVERIFY(!button.isVisible() && !list.isVisible());
        QCOMPARE(toolTip(0), damaged);
    }

    void keepsFewOfVeryManyProblems()
    {
        ProcessPanel& panel = *controller().processViewPanel();
        Process job;
        panel.follow(job);
        for (int page = 1; page <= 1234; ++page)
            emit job.diagnosed({ .sourcePath = u"/in/a.tif"_s, .page = page, .reason = u"no"_s });
        job.setLog(std::make_shared<Log>());
        job.setIsCompleted(true);
        panel.show();
        press("showProblemsBtn");
        QCOMPARE(find<QTreeWidget>("problemList").topLevelItemCount(), 1000);
        QCOMPARE(text("problemsLeftLabel"), u"234 more are in the log only."_s);
        QVERIFY(panel.problems().endsWith(u"\t1000\tno\n234 more are in the log only.\n"_s));
        panel.stopFollowing();
    }

    /// Keys that end a run by chance, a pause that does not hold or that nothing ends.
    void pausesARun()
    {
        QVERIFY(beginLongRun());
        press("pauseProcessBtn");
        Process& job = *controller().process();
        QWidget& panel = *controller().processViewPanel();
        QTest::keyClick(&panel, Qt::Key_Return);
        alerts().setNextAnswer(1);
        QTest::keyClick(&panel, Qt::Key_Escape);
        QCOMPARE(alerts().lastText(), u"Stop the conversion? Images that are written stay."_s);
        QVERIFY(!QTest::qWaitFor([&] { return job.isCompleted(); }, 500));
        QVERIFY(job.isCombining() && job.totalFileCreated() < 60);
        QVERIFY(text("processCountLabel").endsWith(u" - paused"_s));
        const int created = job.totalFileCreated();
        press("pauseProcessBtn");
        QVERIFY(QTest::qWaitFor([&] { return job.totalFileCreated() > created; }, longMs));
        press("stopAfterFileBtn");
        QVERIFY(waitForRun());
        QCOMPARE(text("processMessageLabel"), u"Process cancelled!"_s);
        QCOMPARE(wholePages().size(), job.totalFileCreated());
    }

    void stopsACancelledRun()
    {
        QVERIFY(beginLongRun());
        press("cancelProcessBtn");
        QVERIFY(waitForRun());
        QCOMPARE(text("processMessageLabel"), u"Process cancelled!"_s);
        const int created = controller().process()->totalFileCreated();
        QCOMPARE(wholePages().size(), created);
        QVERIFY(text("processHeadlineLabel")
                    .endsWith(u", %1 of 60 files not finished"_s.arg(60 - created)));
        const auto& bar = find<QProgressBar>("processProgressBar");
        QVERIFY(bar.value() < bar.maximum());
        QTest::keyClick(controller().processViewPanel(), Qt::Key_Escape);
        QVERIFY(!controller().processViewPanel()->isVisible());
        QVERIFY(isEnabled("convertBtn"));
    }

    // As the desktop closes it, which a modal sheet in front of it would make do nothing.
    void endsARunWhenTheWindowCloses()
    {
        QVERIFY(beginLongRun());
        QVERIFY(controller().processViewPanel()->isVisible());
        QSignalSpy ready(&controller(), &PagestackAppDelegate::readyToTerminate);
        alerts().setNextAnswer(1);
        QVERIFY(!window().windowHandle()->close());
        QCOMPARE(alerts().lastButtons().join(u'/'), u"Stop and Quit/Keep Converting"_s);
        QVERIFY(controller().process()->isCombining());
        alerts().setNextAnswer(1);
        QEvent quit(QEvent::Quit); // as the system asks it
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(!quit.isAccepted() && controller().process()->isCombining());
        alerts().setNextAnswer(0);
        QTest::keyClick(controller().processViewPanel(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(alerts().lastButtons().join(u'/'), u"Stop and Quit/Keep Converting"_s);
        QVERIFY(ready.wait(longMs));
        QCOMPARE(ready.size(), 1);
        QVERIFY(!wholePages().isEmpty() && !logFile().isEmpty());
        QVERIFY(controller().applicationShouldTerminate());
    }

    // Nobody closes the window and nobody waits.
    void endsWhatIsUnderWayWithTheProgram()
    {
        QSignalSpy inserted(&controller().tableModel(), &QAbstractItemModel::rowsInserted);
        controller().openPaths({ manyFiles() });
        QVERIFY(inserted.wait(longMs));
        start();
        QVERIFY(beginLongRun());
        end();
        QVERIFY(!wholePages().isEmpty() && !logFile().isEmpty());
    }

    // As on macOS: the window goes and comes back, and the system ends the program.
    void outlivesItsWindowWhereProgramsDo()
    {
        int ends = 0;
        end();
        // Sees what the session lets through, and keeps it from ending the tests.
        ApplicationEvents system([&] { return ++ends < 0; }, [](bool) {}, [](const QUrl&) {});
        start();
        controller().setEndsWithWindow(false);
        QVERIFY(!controller().applicationShouldHandleReopen(true));
        window().close();
        QVERIFY(!window().isVisible());
        QVERIFY(controller().applicationShouldHandleReopen(true) && window().isVisible());
        window().close();
        emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        QVERIFY(window().isVisible());
        QSignalSpy ready(&controller(), &PagestackAppDelegate::readyToTerminate);
        controller().openPaths({ manyFiles() });
        settings().setSeparator(u"_p"_s);
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(!quit.isAccepted() && ends == 0); // not before the load has ended
        QVERIFY(ready.wait(longMs));
        settings().setSeparator(u"_q"_s);
        QCoreApplication::sendEvent(qApp, &quit);
        QCOMPARE(ends, 1);
        QCOMPARE(Settings(&defaults()).separator(), u"_q"_s);
    }

    // An ampersand in a name marked a key; the order of use was that of the first time.
    void offersTheFoldersThatWereAddedLast()
    {
        const QString first = path(u"salt & lime"_s);
        const QString second = path(u"second"_s);
        makeFile(first + u"/a.tif"_s);
        makeFile(second + u"/b.tif"_s);
        for (const QString& folder : { first, second, first })
            QVERIFY(open({ folder }));
        start();
        auto& menu = find<QMenu>("menuRecentFolders");
        QVERIFY(menu.menuAction()->isEnabled());
        emit menu.aboutToShow();
        QCOMPARE(menu.actions().size(), 4); // with a separator and Clear
        QCOMPARE(menu.actions().at(1)->text(), second);
        QVERIFY(load([&] { menu.actions().first()->trigger(); }));
        QCOMPARE(order(), u"a"_s);
        menu.actions().last()->trigger();
        QVERIFY(!menu.menuAction()->isEnabled());
    }

    // What is opened from outside during a load was dropped without a word.
    void opensWhatTheSystemHandsItOnceItCan()
    {
        const QString first = makeFile(path(u"in/first.tif"_s));
        const QString second = makeFile(path(u"in/second.tif"_s));
        controller().openPaths({ manyFiles() });
        QVERIFY(QTest::qWaitFor([&] { return controller().isProcessing(); }, longMs));
        for (const QString& file : { first, second }) {
            QFileOpenEvent event(file);
            QCoreApplication::sendEvent(qApp, &event);
        }
        QVERIFY(QTest::qWaitFor([&] { return names().endsWith(u"second.tif"_s); }, longMs));
        QVERIFY(names().contains(u"first.tif"_s));
    }

    void comesBackAsItWasLeft()
    {
        QTest::keyClicks(&find("fileNameSeparatorText"), u"_p"_s);
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(&find("jpegQualitySlider"), Qt::Key_Left);
        QCOMPARE(text("qualityText"), u"90%"_s);
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(&find("outputType"), Qt::Key_Down);
        QTest::keyClick(&find("tiffCompressionPopup"), Qt::Key_Down);
        press("toggleSettingsAction");
        window().resize(760, 700);
        table().setColumnWidth(FileTableModel::Location, 222);
        table().setColumnWidth(FileTableModel::Name, 333);
        const QSize size = window().size();
        window().close();
        start();
        QCOMPARE(find<QComboBox>("outputType").currentText(), u"TIFF"_s);
        QCOMPARE(find<QComboBox>("tiffCompressionPopup").currentIndex(), 1);
        QCOMPARE(find<QSlider>("jpegQualitySlider").value(), 8);
        QCOMPARE(find<QLineEdit>("fileNameSeparatorText").text(), u"_p"_s);
        QVERIFY(!find("rightBox").isVisible());
        QVERIFY(!find<QAction>("toggleSettingsAction").isChecked());
        QCOMPARE(window().size(), size);
        QCOMPARE(table().columnWidth(FileTableModel::Name), 333);
        press("toggleSettingsAction");
        auto& sides = find<QSplitter>("mainSplitView");
        QList<int> widths = sides.sizes();
        const int pane = int(sides.indexOf(&find("rightBox")));
        widths[pane] += 30;
        sides.setSizes(widths);
        widths = sides.sizes();
        window().close();
        start();
        QCOMPARE(find<QSplitter>("mainSplitView").sizes().value(pane), widths.value(pane));

        QFile store(path(u"settings.json"_s));
        QVERIFY(store.open(QIODevice::WriteOnly) && store.write("odd line") > 0 && store.flush());
        start();
        QVERIFY(alerts().lastText().contains(u"They are kept in "));
    }

    void savesChoicesAtOnce()
    {
        const auto stored = [this] { return UserDefaults(path(u"settings.json"_s)); };
        press("inculdeSubfoldersBtn");
        QVERIFY(stored().boolForKey(u"INCLUDESUBFOLDERS"_s));
        QVERIFY(stored().objectForKey(u"SHOWSETTINGS"_s).toBool());
        press("toggleSettingsAction");
        QCOMPARE(stored().objectForKey(u"SHOWSETTINGS"_s), QVariant(false));
        press("toggleSettingsAction");
        press("thumbnailsAction");
        QVERIFY(stored().boolForKey(u"LISTTHUMBNAILS"_s));
        press("darkThemeAction");
        press("lightThemeAction");
        press("systemThemeAction");
        const auto& options
            = { "setCurrentAsDefaultOutputFolderPathBtn", "openFolderAfterConversionBtn" };
        for (const char* name : options)
            QVERIFY2(!isEnabled(name), name); // without a folder
        chooser().setNextChoice(urlsOf({ outFolder() }));
        press("chooseOutputFolderBtn");
        QVERIFY(!stored().objectForKey(u"SETTINGS"_s).toMap().isEmpty());
        for (const char* name : options)
            press(name);
        QVERIFY(!settings().isOpenFolderAfterConversion());
        QVERIFY(settings().isSetCurrentAsDefaultOutputFolderPath());
        QVERIFY(controller().applicationShouldTerminate());
        start();
        QCOMPARE(find<QLineEdit>("outputFolderPath").text(), path(u"out"_s));
        settings().setOutputFolderPath(u""_s);
        QVERIFY(!settings().isSetCurrentAsDefaultOutputFolderPath());
        for (const char* name : options)
            QVERIFY2(!isEnabled(name), name);
        start();
        QVERIFY(find<QAbstractButton>("inculdeSubfoldersBtn").isChecked());
    }

    /// Choices of before that are gone, and nobody knows.
    void tellsOfDamagedSettings()
    {
        for (const char* way : { "inculdeSubfoldersBtn", "toggleSettingsAction", "thumbnailsAction",
                                 "togglePreviewAction", "chooseOutputFolderBtn" }) {
            chooser().setNextChoice(urlsOf({ outFolder() }));
            alerts().setNextAnswer(0);
            putBytes(path(u"settings.json"_s), "odd");
            const int asked = alerts().askedCount();
            press(way);
            QVERIFY2(alerts().askedCount() == asked + 1, way);
            QVERIFY2(alerts().lastText().contains(u"-damaged"_s), way);
        }
    }

    // What is typed and not confirmed gets lost with a command that comes by a key or the mouse.
    void takesWhatIsTypedBeforeACommand_data()
    {
        addTextRows(R"(
            addFilesBtn
            addFolderBtn
            importBtn
            removeBtn
            searchBtn
            exportAction
            drop
            quit)");
    }

    void takesWhatIsTypedBeforeACommand()
    {
        const auto [way] = textRow<1>();
        QVERIFY(fill());
        auto& field = find<QLineEdit>("outputFolderPath");
        find<QTabWidget>("settingTabView").setCurrentIndex(1);
        field.setFocus();
        field.setText(u"/typed"_s);
        field.selectAll();
        chooser().setNextChoice({});
        QString found;
        connect(&settings(), &Settings::outputFolderPathChanged, &window(),
                [&](const QString& folder) { found = folder + field.selectedText(); });
        if (way == u"drop"_s)
            QVERIFY(load([&] { emit table().filesDropped(urlsOf({ path(u"in"_s) })); }));
        else if (way == u"quit"_s)
            QVERIFY(controller().applicationShouldTerminate());
        else
            press(qPrintable(way));
        QVERIFY(found.startsWith(u"/typed"_s));
        QVERIFY(!field.hasSelectedText()); // or the next key would replace it
    }

    // All of them from the outside of the process.
    void startsAndEndsAsAProgram()
    {
        makeFile(path(u"in/1.tif"_s));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        environment.insert(u"XDG_CONFIG_HOME"_s, path(u"config"_s));
        environment.insert(u"XDG_DATA_HOME"_s, path(u"home"_s));
        QProcess program;
        program.setProcessEnvironment(environment);
        const auto stored = [this] {
            QDirIterator files(path(u""_s), { u"*.json"_s }, QDir::Files,
                               QDirIterator::Subdirectories);
            QByteArray text;
            while (files.hasNext())
                text += bytesOf(files.next());
            return text;
        };
        const QDir logs(path(u"home/Corvanta/Pagestack1/Logs"_s));
        for (const bool hasFiles : { false, true }) { // at rest, and maybe while it loads
            program.start(qEnvironmentVariable("PAGESTACK_BIN") + u"/pagestack"_s,
                          { u"--new-window"_s, hasFiles ? path(u"in"_s) : u"--"_s });
            const auto hasBegun
                = [&] { return hasFiles ? stored().contains("RECENTFOLDERS") : logs.exists(); };
            QVERIFY(QTest::qWaitFor(hasBegun, longMs));
            program.terminate();
            QVERIFY(program.waitForFinished(longMs));
            QCOMPARE(program.exitStatus(), QProcess::NormalExit);
            QCOMPARE(program.exitCode(), 128 + 15);
            QVERIFY(logs.exists() && stored().contains("WINDOW"));
        }
    }

    void answersItsMenus()
    {
        press("helpAction");
        press("helpHyperlink");
        if (find<QAction>("websiteAction").isVisible())
            press("websiteAction");
        const QUrl guide = desktop().opened.value(0);
        QVERIFY(guide.fileName() == u"MACPagestack1.pdf" && QFile::exists(guide.toLocalFile()));
        QList<QUrl> pages { guide, guide };
        if (!website.isEmpty())
            pages.append(QUrl(website.toString()));
        QCOMPARE(desktop().opened, pages);
        QCOMPARE(find<QAction>("websiteAction").isVisible(), !website.isEmpty());
        press("preferencesToolbarItem");
        QVERIFY(!find("rightBox").isVisible());
        QVERIFY(find<QAction>("dummyToolbarItem").isChecked());
        window().showMaximized();
        press("minimizeAction");
        QVERIFY(window().isMinimized());
        table().setFocus();
        press("openAppAction");
        QVERIFY(!window().isMinimized() && window().isMaximized() && window().isVisible());
        QTRY_COMPARE(QApplication::activeWindow(), &window());
        alerts().setNextAnswer(0);
        press("aboutAction");
        QVERIFY(alerts().lastText().contains(u"libtiff"_s, Qt::CaseInsensitive));
        press("quitAction");
        QVERIFY(window().close()); // the program is about to end, so nothing holds the window
    }

    void answersItsShortcuts()
    {
        QVERIFY(QTest::qWaitForWindowActive(&window()));
        QStringList answering;
        for (QAction* action : window().findChildren<QAction*>()) {
            const QKeySequence keys = action->shortcut();
            if (keys.isEmpty())
                continue;
            action->disconnect(SIGNAL(triggered(bool)));
            action->setEnabled(true);
            QSignalSpy triggered(action, &QAction::triggered);
            QTest::keyClick(&window(), keys[0].key(), keys[0].keyboardModifiers());
            QVERIFY2(triggered.size() == 1, qPrintable(action->objectName()));
            answering.append(action->objectName());
        }
        QVERIFY(answering.size() > 15);
        for (const QString& name : { u"undoAction"_s, u"addFilesAction"_s, u"convertMenuAction"_s })
            QVERIFY2(answering.contains(name), qPrintable(name));
    }

    // Two owners of one key cancel each other out: neither answers.
    void givesEachAltKeyToOneControl()
    {
#ifdef Q_OS_MACOS
        QSKIP("Alt types characters here");
#endif
        QVERIFY(QTest::qWaitForWindowActive(&window()));
        auto& tabs = find<QTabWidget>("settingTabView");
        for (int tab = 0; tab < tabs.count(); ++tab) {
            tabs.setCurrentIndex(tab);
            QSet<QString> keys;
            const auto take = [&](const QString& key, const QObject& owner) {
                QVERIFY2(key.isEmpty() || !keys.contains(key), qPrintable(owner.objectName()));
                keys.insert(key);
            };
            for (const QMenu* menu :
                 window().menuBar()->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly))
                take(QKeySequence::mnemonic(menu->title()).toString(), *menu);
            for (const auto* label : window().findChildren<QLabel*>())
                if (label->buddy() != nullptr && label->buddy()->isVisible())
                    take(QKeySequence::mnemonic(label->text()).toString(), *label);
            for (const auto* button : window().findChildren<QAbstractButton*>())
                if (button->isVisible())
                    take(button->shortcut().toString(), *button);
            QVERIFY(keys.size() > 10);
        }
        QTest::keyClick(&window(), Qt::Key_U, Qt::AltModifier);
        QTRY_VERIFY(find<QAbstractButton>("inculdeSubfoldersBtn").isChecked());
    }

    void answersWithTheButtonPressed()
    {
        for (const auto& [key, count, answer] :
             { std::tuple(Qt::Key_Return, 2, 0), std::tuple(Qt::Key_Escape, 2, 1),
               std::tuple(Qt::Key_Escape, 1, 0), std::tuple(Qt::Key_Escape, 3, 2) }) {
            int pressed = -1;
            alerts().ask(&window(), AlertPanel::Style::Critical, u"Title"_s, u"<b>Text</b>?"_s,
                         QStringList { u"Yes"_s, u"No"_s, u"Maybe"_s }.first(count),
                         [&](int button) { pressed = button; });
            auto& box = *window().findChildren<QMessageBox*>().constLast();
            QVERIFY(box.isModal() && pressed == -1); // asking does not wait
            QCOMPARE(box.textFormat(), Qt::PlainText);
            QTest::keyClick(&box, key);
            QCOMPARE(pressed, answer);
        }
    }

    void opensTheFileDialogs()
    {
        QDir(path(u""_s)).mkpath(u"one"_s);
        QDir(path(u""_s)).mkpath(u"two"_s);
        makeFile(path(u"list.txt"_s));
        QDir::setCurrent(QDir::rootPath()); // where a dialog begins that knows no folder
        const QString title = u"Title"_s;
        const QStringList types { u"txt"_s };
        QStringList names;
        const auto done = [&](const QList<QUrl>& urls) {
            names.clear();
            for (const QUrl& url : urls)
                names.append(url.fileName());
            names.sort();
        };
        chooser().setNextChoice({ QUrl(u"file:///beforehand"_s) });
        chooser().chooseFolder(&window(), title, done);
        QVERIFY(names.join(u' ') == u"beforehand"_s
                && window().findChildren<QFileDialog*>().isEmpty());
        const QStringList chosen { u"list.txt"_s, u"one two"_s, u"one"_s, u"list.txt"_s,
                                   u"new name.txt"_s };
        const QStringList kinds { u"3 0 Add TIFF files (*.txt)"_s, u"2 1 Add All Files (*)"_s,
                                  u"2 1 Select All Files (*)"_s, u"1 0 Select Text files (*.txt)"_s,
                                  u"0 0 &Save All Files (*)"_s };
        for (int kind = 0; kind < 5; ++kind) {
            if (kind == 0)
                chooser().chooseFiles(&window(), title, types, done);
            else if (kind == 1)
                chooser().chooseFolders(&window(), title, done);
            else if (kind == 2)
                chooser().chooseFolder(&window(), title, done);
            else if (kind == 3)
                chooser().chooseTextFile(&window(), title, types, done);
            else
                chooser().chooseSaveFile(&window(), title, types.first(), u"new name"_s, done);
            QFileDialog& dialog = *window().findChildren<QFileDialog*>().constLast();
            QCOMPARE(dialog.acceptMode() == QFileDialog::AcceptSave, kind == 4);
            QVERIFY(!dialog.testOption(QFileDialog::DontConfirmOverwrite));
            QVERIFY(dialog.testAttribute(Qt::WA_DeleteOnClose));
            QCOMPARE(dialog.supportedSchemes(), QStringList(u"file"_s));
            QCOMPARE(u"%1 %2 %3 %4"_s.arg(dialog.fileMode())
                         .arg(dialog.testOption(QFileDialog::ShowDirsOnly))
                         .arg(dialog.labelText(QFileDialog::Accept), dialog.nameFilters().first()),
                     kinds.at(kind));
            QCOMPARE(dialog.windowTitle(), title);
            QVERIFY(kind == 0 || dialog.directory() == QDir(path(u""_s))); // the last one
            dialog.setDirectory(path(u""_s));
            if (kind == 1) {
                QVERIFY(dialog.testOption(QFileDialog::DontUseNativeDialog)); // they return one
                auto& list = childOf<QAbstractItemView>(dialog, "listView");
                QTRY_COMPARE(list.model()->rowCount(list.rootIndex()), 3); // and that of the logs
                list.selectAll();
            } else if (kind != 4) {
                dialog.selectFile(path(chosen.at(kind)));
            }
            static_cast<QDialog&>(dialog).accept(); // as the button; protected in the class itself
            names.removeOne(u"data"_s);
            QCOMPARE(names.join(u' '), chosen.at(kind));
        }
        chooser().chooseFolder(&window(), title, done);
        window().findChildren<QFileDialog*>().constLast()->reject();
        QCOMPARE(names, QStringList());
    }

    void printsItsHelpWithoutADisplay()
    {
        QProcess program;
        program.setEnvironment({ u"QT_QPA_PLATFORM=xcb"_s });
        program.start(qEnvironmentVariable("PAGESTACK_BIN") + u"/pagestack"_s,
                      { u"a.tif"_s, u"--help"_s });
        QVERIFY(program.waitForFinished(longMs));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(program.readAllStandardOutput().startsWith("Usage: pagestack ["));
#ifdef Q_OS_LINUX
        program.setStandardOutputFile(u"/dev/full"_s);
        program.start(program.program(), { u"--version"_s });
        QVERIFY(program.waitForFinished(longMs));
        QCOMPARE(program.exitCode(), 1);
#endif
        QVERIFY(programText({ u"a"_s, u"--version"_s })->startsWith(u"pagestack "_s));
        QVERIFY(!programText({ u"--"_s, u"--help"_s }));
        const ProgramArguments given
            = programArguments({ u"pagestack"_s, u"a"_s, u"--new-window"_s, u"--"_s, u"-h"_s });
        QCOMPARE(given.paths.join(u' '), u"a -h"_s);
        QVERIFY(given.wantsNewWindow);
    }

private:
    QString logFile() const
    {
        const QDir logs(path(u"data/Corvanta/Pagestack1/Logs"_s));
        const QStringList files = logs.entryList({ u"*.log"_s }, QDir::Files);
        return files.size() == 1 ? logs.filePath(files.first()) : QString();
    }
    /// What lies in the output folder; nothing when a page of it is not whole or all 60 are there.
    QStringList wholePages() const
    {
        const QDir folder(path(u"out"_s));
        const QStringList names = folder.entryList(QDir::Files | QDir::Hidden);
        for (const QString& name : names)
            if (QImage(folder.filePath(name), "PNG").isNull())
                return {};
        return names.size() < 60 ? names : QStringList();
    }
    /// Begins a run that has something to do for a while, and waits for its first page.
    bool beginLongRun()
    {
        QStringList sources;
        for (int i = 0; i < 60; ++i) {
            sources.append(path(u"%1.tif"_s.arg(i)));
            QFile::copy(sample(u"text-page.tif"_s), sources.last());
        }
        if (!open(sources))
            return false;
        settings().setOutputType(1);
        settings().setOutputFolderPath(outFolder());
        press("convertBtn");
        // No spy: the signal comes from the job's thread, and a spy belongs to one.
        return QTest::qWaitFor([&] { return controller().process()->totalFileCreated() > 0; },
                               longMs);
    }
};

QTEST_MAIN(WindowTest)
#include "WindowTest.moc"
