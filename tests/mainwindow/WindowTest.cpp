#include "mainwindow/ProgramText.h"
#include "mainwindow/desktop/ApplicationEvents.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/KeyLetter.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/mainwindow/Session.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QProgressBar>
#include <QSlider>
#include <QTabWidget>
#include <QTreeWidget>

class WindowTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("XDG_DATA_HOME", path(u"data"_s).toLocal8Bit());
    }

    void startsTheFirstTime()
    {
        Session session(ini());
        QVERIFY(session.controller.window()->isVisible());
        QCOMPARE(session.controller.window()->windowTitle(), u"Pagestack"_s);
        QCOMPARE(session.defaults.objectForKey(u"SHOWSETTINGS"_s).toString(), u"true"_s);
        QVERIFY(session.widget("rightBox").isVisible());
        QVERIFY(session.widget("lableDragAndDrop").isVisible());
        QCOMPARE(session.find<QTabWidget>("settingTabView").currentIndex(), 0);
        QCOMPARE(session.totals(), u"0, 0, 0, 0"_s);
        QCOMPARE(session.text("labelTimeTaken"), u"Total Time Taken : 0 sec(s) 0/0"_s);
        QVERIFY(QDir(path(u"data/Corvanta/Pagestack1/Logs"_s)).exists());

        const std::pair<const char*, QChar> letters[]
            = { { "removeBtn", u'r' },       { "importBtn", u'i' },  { "addFilesBtn", u'f' },
                { "addFolderBtn", u'o' },    { "convertBtn", u's' }, { "viewLogBtn", u'l' },
                { "cancelProcessBtn", u'c' } };
        for (const auto& [name, letter] : letters) {
            const auto& button = session.find<QAbstractButton>(name);
            QCOMPARE(keyLetterPosition(button),
                     button.text().indexOf(letter, 0, Qt::CaseInsensitive));
            QVERIFY2(keyLetterPosition(button) >= 0, name);
        }
        QVERIFY(keyLetterPosition(session.find<QAbstractButton>("inculdeSubfoldersBtn")) >= 0);

        // The hint lies over the table and lets the mouse and drops through.
        const QWidget& hint = session.widget("lableDragAndDrop");
        const QWidget& list = session.widget("leftBox");
        const QWidget* under = list.childAt(hint.mapTo(&list, hint.rect().center()));
        QVERIFY(session.table().isAncestorOf(under));
    }

    void enablesByTheContentsOfTheList()
    {
        Session session(ini());
        const auto check = [&](bool hasFiles) {
            for (const char* name : { "importBtn", "addFilesBtn", "addFolderBtn", "searchBtn",
                                      "inculdeSubfoldersBtn", "mainTableView", "cancelBtn" })
                QVERIFY2(session.widget(name).isEnabled(), name);
            for (const char* name :
                 { "removeBtn", "openFileButton", "getInfoButton", "openEnclosedFolderButton",
                   "selectAllButton", "deselectAllButton", "removeSelectedFilesButton",
                   "removeAllFilesButton", "convertBtn" })
                QVERIFY2(session.widget(name).isEnabled() == hasFiles, name);
            for (const char* name : { "moveUpButton", "moveDownButton" }) // nothing is highlighted
                QVERIFY2(!session.widget(name).isEnabled(), name);
            QCOMPARE(session.find<QAction>("convertMenuAction").isEnabled(), hasFiles);
            QCOMPARE(session.widget("lableDragAndDrop").isVisible(), !hasFiles);
        };
        check(false);
        QVERIFY(session.open({ sample(u"turned.tif"_s) }));
        check(true);
    }

    void loads_data()
    {
        QTest::addColumn<QStringList>("chosen");
        QTest::addColumn<bool>("areFolders");
        QTest::addColumn<bool>("includeSubfolders");
        QTest::addColumn<QString>("totals");

        QTest::newRow("files") << QStringList { u"a.tif"_s, u"sub/c.tif"_s } << false << false
                               << u"2, 2, 4, 4"_s;
        QTest::newRow("a file of any name")
            << QStringList { u"b.Tif"_s } << false << false << u"1, 1, 2, 2"_s;
        QTest::newRow("folder alone") << QStringList { u"."_s } << true << false << u"1, 1, 1, 1"_s;
        QTest::newRow("folders below") << QStringList { u"."_s } << true << true << u"2, 2, 4, 4"_s;
        QTest::newRow("nothing chosen") << QStringList {} << false << false << u"0, 0, 0, 0"_s;
    }

    void loads()
    {
        QFETCH(const QStringList, chosen);
        QFETCH(const bool, areFolders);
        QFETCH(const bool, includeSubfolders);
        makeFile(path(u"in/a.tif"_s), 1);
        makeFile(path(u"in/b.Tif"_s), 2);
        makeFile(path(u"in/sub/c.tif"_s), 3);
        QStringList paths;
        for (const QString& each : chosen)
            paths.append(QDir::cleanPath(path(u"in/"_s + each)));

        Session session(ini());
        if (includeSubfolders)
            session.click("inculdeSubfoldersBtn");
        session.chooser.setNextChoice(urlsOf(paths));
        const auto choose = [&] { session.click(areFolders ? "addFolderBtn" : "addFilesBtn"); };
        if (chosen.isEmpty())
            choose();
        else
            QVERIFY(session.load(choose));
        QCOMPARE(session.chooser.lastMessage(),
                 areFolders ? u"Select folder(s) contains TIFF File(s):"_s
                            : u"Select TIFF File(s):"_s);
        QTEST(session.totals(), "totals");
        QCOMPARE(session.table().model()->rowCount(), session.controller.files().count());
        QCOMPARE(session.widget("lableDragAndDrop").isVisible(), chosen.isEmpty());
        QVERIFY(session.widget("addFilesBtn").isEnabled());
        if (chosen.isEmpty())
            return;
        QVERIFY(!session.text("labelTimeTaken").contains(u"Process"_s));
        QCOMPARE(session.controller.window()->focusWidget(), &session.table());
    }

    void takesNoFileTwice()
    {
        Session session(ini());
        QVERIFY(session.open({ sample(u"turned.tif"_s), samples() }));
        const QString dots = samples() + u"/../samples/"_s;
        const QStringList again { samples(),        samples() + u"/turned.tif"_s,
                                  dots + u"."_s,    samples() + u"//./turned.tif"_s,
                                  samples() + u'/', sample(u"turned.tif"_s) };
        bool canConvert = true;
        connect(&session.controller, &PagestackAppDelegate::isProcessingChanged, this,
                [&](bool isProcessing) {
                    if (isProcessing)
                        canConvert = session.widget("convertBtn").isEnabled();
                });
        QVERIFY(session.load([&] { emit session.table().filesDropped(urlsOf(again)); }));
        QCOMPARE(session.totals(), u"6, 6, 8, 8"_s);
        QVERIFY(!canConvert); // while files are loaded
        QVERIFY(session.widget("convertBtn").isEnabled());

        session.chooser.setNextChoice(
            urlsOf({ dots + u"turned.tif"_s, dots + u"three-pages.tif"_s }));
        QVERIFY(session.load([&] { session.click("addFilesBtn"); }));
        const auto home = qScopeGuard([before = QDir::currentPath()] { QDir::setCurrent(before); });
        QDir::setCurrent(samples());
        QVERIFY(session.open({ u"."_s, u"../samples"_s, u"./turned.tif"_s }));
        QCOMPARE(session.totals(), u"6, 6, 8, 8"_s);

        // Behind a link ".." leads out of the folder that the link leads to.
        const QString near = makeFile(path(u"near/[1].tif"_s));
        const QString far = makeFile(path(u"far/[1].tif"_s), 2);
        QDir().mkpath(path(u"far/away"_s));
        QVERIFY(QFile::link(path(u"far/away"_s), path(u"near/link"_s)));
        QVERIFY(
            session.open({ near, path(u"near/link/../[1].tif"_s), far, path(u"none/../a.tif"_s) }));
        const QUrl encoded = QUrl::fromEncoded(
            "file://" + QUrl::toPercentEncoding(path(u"far/away/../[1].tif"_s), "/"));
        QVERIFY(session.load([&] { emit session.table().filesDropped({ encoded }); }));
        QCOMPARE(session.totals(), u"9, 9, 11, 11"_s);
        QCOMPARE(session.controller.files().at(7)->filePath(), QUrl::fromLocalFile(far));
    }

    // Else each file that is added would be compared with every range.
    void keepsAScatteredHighlightAside()
    {
        for (int i = 100; i < 400; ++i)
            makeFile(path(u"in/%1.tif"_s.arg(i)));
        makeFile(path(u"more/1.tif"_s));
        Session session(ini());
        session.table().sortByColumn(FileTableModel::Name, Qt::AscendingOrder);
        QVERIFY(session.open({ path(u"in"_s) }));
        QList<int> rows;
        for (int row = 1; row < 300; row += 2)
            rows.append(row);
        session.table().highlightRows(rows);
        session.table().selectionModel()->setCurrentIndex(session.table().model()->index(7, 1),
                                                          QItemSelectionModel::NoUpdate);
        qsizetype ranges = -1;
        connect(&session.controller.tableModel(), &QAbstractItemModel::rowsInserted, this,
                [&] { ranges = session.table().selectionModel()->selection().size(); });
        QVERIFY(session.open({ path(u"more"_s) }));
        QCOMPARE(ranges, 0);
        for (int& row : rows)
            ++row; // the new file is the first one
        QCOMPARE(session.table().highlightedRows(), rows);
        QCOMPARE(session.table().currentIndex().row(), 8);
        QVERIFY(session.widget("moveUpButton").isEnabled());
    }

    void keepsWhatACancelledLoadAdded()
    {
        for (int i = 100; i < 400; ++i)
            makeFile(path(u"in/%1.tif"_s.arg(i)));
        Session session(ini());
        session.table().sortByColumn(FileTableModel::Name, Qt::DescendingOrder);
        QString line;
        connect(&session.controller.tableModel(), &QAbstractItemModel::rowsInserted, this, [&] {
            if (session.controller.files().count() != 20)
                return;
            line = session.text("labelTimeTaken");
            QVERIFY(session.widget("loadingIndicator").isVisible());
            QVERIFY(!session.widget("addFilesBtn").isEnabled());
            session.click("cancelBtn");
        });
        QVERIFY(session.open({ path(u"in"_s) }));
        QCOMPARE(line, u"Total Time Taken : In Process... 0/0"_s);
        QCOMPARE(session.totals(), u"20, 20, 20, 20"_s);
        QVERIFY(!session.widget("loadingIndicator").isVisible());
        const QStringList names = session.names();
        QVERIFY(std::is_sorted(names.rbegin(), names.rend()));
        QTRY_VERIFY(!session.text("labelTimeTaken").contains(u"Process"_s));
    }

    void endsALoadWhenTheWindowCloses()
    {
        for (int i = 0; i < 300; ++i)
            makeFile(path(u"in/%1.tif"_s.arg(i)));
        for (const int loaded : { 0, 1, 100, 299 }) {
            Session session(ini());
            QSignalSpy ready(&session.controller, &PagestackAppDelegate::readyToTerminate);
            QWidget& window = *session.controller.window();
            connect(&session.controller.tableModel(), &QAbstractItemModel::rowsInserted, &window,
                    [&] {
                        if (session.controller.files().count() == loaded)
                            window.close();
                    });
            session.controller.openPaths({ path(u"in"_s) });
            if (loaded == 0)
                window.close(); // before the load has come to its first file
            QVERIFY(ready.wait(longMs));
            QCOMPARE(ready.size(), 1);
            QCOMPARE(session.totals(), u"%1, %1, %1, %1"_s.arg(loaded));
            QVERIFY(session.controller.applicationShouldTerminate());
        }
    }

    void ticksByMouseAndSpace()
    {
        Session session(ini());
        QVERIFY(session.open({ samples() }));
        session.table().sortByColumn(FileTableModel::Name, Qt::AscendingOrder);
        const auto clickCell = [&](int row, int column, Qt::KeyboardModifiers keys = {}) {
            const QRect cell
                = session.table().visualRect(session.table().model()->index(row, column));
            QTest::mouseClick(session.table().viewport(), Qt::LeftButton, keys, cell.center());
        };
        QCOMPARE(session.names().at(2), u"three-pages.tif"_s);
        clickCell(2, FileTableModel::IsSelected);
        QCOMPARE(session.totals(), u"5, 4, 4, 7"_s);
        clickCell(1, FileTableModel::Name);
        clickCell(2, FileTableModel::Name, Qt::ShiftModifier);
        QTest::keyClick(&session.table(), Qt::Key_Space); // the two swap their marks
        QCOMPARE(session.totals(), u"5, 4, 6, 7"_s);
        QVERIFY(session.widget("convertBtn").isEnabled());
        QTest::keyClick(&session.table(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&session.table(), Qt::Key_Space);
        QCOMPARE(session.totals(), u"5, 1, 1, 7"_s);
        clickCell(1, FileTableModel::IsSelected);
        QCOMPARE(session.totals(), u"5, 0, 0, 7"_s);
        QVERIFY(!session.widget("convertBtn").isEnabled());
    }

    void asksForTheOutputFolder_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<int>("answer");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("outcome"); // empty: no run

        const QString none = u"No output folder selected, file(s) will be saved in source folder.\n"
                             "Do you want to continue?"_s;
        QTest::newRow("missing") << u"nowhere"_s << 0
                                 << u"Output folder missing or invalid path!\r\n"
                                    "Please select valid output folder."_s
                                 << QString();
        QTest::newRow("not writable") << u"closed"_s << 0
                                      << u"Output folder is non-writable!\r\n"
                                         "Please select writable output folder."_s
                                      << QString();
        QTest::newRow("a file") << u"samples/turned.tif"_s << 0 << QString()
                                << u"Total 0 files converted successfully."_s;
        QTest::newRow("none, no") << QString() << 1 << none << QString();
        QTest::newRow("none, yes")
            << QString() << 0 << none << u"Total 7 files converted successfully."_s;
    }

    void asksForTheOutputFolder()
    {
        QFETCH(const QString, folder);
        QFETCH(const int, answer);
        QFETCH(const QString, question);
        QFETCH(const QString, outcome);
        Session session(ini());
        QVERIFY(session.open({ samples() }));
        if (folder == u"closed"_s) {
            QDir().mkpath(path(folder));
            QFile::setPermissions(path(folder), QFile::ReadOwner | QFile::ExeOwner);
            if (QFileInfo(path(folder)).isWritable())
                QSKIP("this user may write everywhere");
        }
        session.find<QAction>("toggleSettingsAction").trigger();
        QVERIFY(!session.widget("rightBox").isVisible());
        if (!folder.isEmpty())
            session.find<QLineEdit>("outputFolderPath").setText(path(folder)); // not committed yet
        session.alerts.setNextAnswer(answer);
        session.click("convertBtn");

        QCOMPARE(session.alerts.lastText(), question);
        QCOMPARE(session.alerts.askedCount(), question.isEmpty() ? 0 : 1);
        const bool isRefused = outcome.isEmpty();
        QCOMPARE(session.widget("rightBox").isVisible(), isRefused);
        QCOMPARE(session.find<QTabWidget>("settingTabView").currentIndex(), isRefused ? 1 : 0);
        QCOMPARE(session.controller.processViewPanel()->isVisible(), !isRefused);
        QCOMPARE(session.widget("addFilesBtn").isEnabled(), isRefused);
        if (isRefused) {
            QCOMPARE(session.controller.window()->focusWidget(),
                     &session.widget("chooseOutputFolderBtn"));
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(session.widget("closeProcessBtn").isEnabled(), longMs);
        QCOMPARE(session.text("processMessageLabel"), outcome);
        QCOMPARE(session.text("processCountLabel").contains(u"7 problem(s)"_s), !folder.isEmpty());
        if (folder.isEmpty())
            QCOMPARE(QDir(samples()).entryList({ u"*.jpg"_s }).size(), 7);
    }

    void beginsNoRunBesideALoad()
    {
        makeFile(path(u"in/a.tif"_s));
        Session session(ini());
        QVERIFY(session.open({ samples() }));
        session.click("convertBtn");
        const auto* question = session.controller.window()->findChild<QMessageBox*>();
        QVERIFY(question != nullptr);
        QVERIFY(session.load([&] {
            session.controller.openPaths({ path(u"in"_s) });
            question->buttons().first()->click(); // "Yes": to the folders of the sources
        }));
        QVERIFY(!session.controller.processViewPanel()->isVisible());
        QCOMPARE(session.totals(), u"6, 6, 8, 8"_s);
        QCOMPARE(QDir(samples()).entryList({ u"*.jpg"_s }).size(), 0);
    }

    void asksBeforeOutputsReplaceEachOther()
    {
        Session session(ini());
        for (const QString& folder : { u"a"_s, u"b"_s })
            makeFile(path(folder + u"/scan.tif"_s));
        QDir().mkpath(path(u"out"_s));
        QVERIFY(session.open({ path(u"a"_s), path(u"b"_s) }));
        session.controller.settings().setOutputFolderPath(path(u"out"_s));
        for (const bool isCancelled : { true, false }) {
            session.alerts.setNextAnswer(isCancelled ? 1 : 0);
            session.click("convertBtn");
            QTRY_COMPARE_WITH_TIMEOUT(session.alerts.askedCount(), isCancelled ? 1 : 2, longMs);
            QCOMPARE(session.alerts.lastText(),
                     u"Some outputs of this run would replace each other or a file of the list:\n"
                     "scan1.jpg would be written by %1/a/scan.tif and by %1/b/scan.tif\n\n"
                     "With a number, scan1.jpg of %1/b/scan.tif is written as scan1-2.jpg."_s.arg(
                         m_folder->path()));
            QCOMPARE(session.alerts.lastButtons(),
                     (QStringList { u"Number the later ones"_s, u"Cancel"_s }));
            QCOMPARE(session.controller.processViewPanel()->isVisible(), !isCancelled);
            QCOMPARE(session.widget("convertBtn").isEnabled(), isCancelled);
            QCOMPARE(session.widget("addFilesBtn").isEnabled(), isCancelled);
        }
        QTRY_VERIFY_WITH_TIMEOUT(session.widget("closeProcessBtn").isEnabled(), longMs);
        QCOMPARE(session.controller.process()->totalFileProcessed(), 2);
        session.click("closeProcessBtn");
        QVERIFY(session.widget("convertBtn").isEnabled());
    }

    void runsToTheEnd_data()
    {
        QTest::addColumn<bool>("clear");
        QTest::addColumn<QString>("totals");
        QTest::newRow("files stay") << false << u"5, 4, 6, 7"_s;
        QTest::newRow("ticked files go") << true << u"1, 0, 0, 1"_s;
    }

    void runsToTheEnd()
    {
        QFETCH(const bool, clear);
        const QString out = path(u"out"_s);
        QDir().mkpath(out);
        Session session(ini());
        QVERIFY(session.open({ samples() }));
        const qsizetype turned = session.names().indexOf(u"turned.tif"_s);
        session.controller.tableModel().mark({ static_cast<int>(turned) },
                                             FileTableModel::Mark::Uncheck);
        QTest::keyClick(&session.widget("outputType"), Qt::Key_Down);
        session.chooser.setNextChoice(urlsOf({ out }));
        session.find<QAbstractButton>("chooseOutputFolderBtn").click();
        session.find<QAbstractButton>("clearProcessedFilesBtn").setChecked(clear);

        session.click("convertBtn");
        const auto& bar = session.find<QProgressBar>("processProgressBar");
        QVERIFY(bar.minimum() < bar.maximum());
        QVERIFY(session.controller.processViewPanel()->isVisible());
        for (const char* name : { "convertBtn", "cancelBtn", "addFilesBtn", "rightBox",
                                  "mainTableView", "closeProcessBtn" })
            QVERIFY2(!session.widget(name).isEnabled(), name);
        QTRY_VERIFY_WITH_TIMEOUT(session.widget("closeProcessBtn").isEnabled(), longMs);
        QCOMPARE(session.text("processMessageLabel"), u"Total 6 files converted successfully."_s);
        QCOMPARE(bar.value(), bar.maximum());
        QCOMPARE(QDir(out).entryList(QDir::Files).size(), 6);
        for (const QFileInfo& file : QDir(out).entryInfoList(QDir::Files))
            QVERIFY2(!QImage(file.filePath(), "PNG").isNull(), qPrintable(file.filePath()));
        QVERIFY(session.text("labelTimeTaken").endsWith(u" 4/4"_s));
        QVERIFY(!session.widget("addFilesBtn").isEnabled());

        session.click("viewLogBtn");
        QVERIFY(!logFile().isEmpty());
        QCOMPARE(session.desktop.opened(), QStringList({ out, logFile() }));
        session.click("closeProcessBtn");
        QVERIFY(!session.controller.processViewPanel()->isVisible());
        QCOMPARE(session.controller.window()->focusWidget(), &session.table());
        QTEST(session.totals(), "totals");
        QCOMPARE(session.widget("convertBtn").isEnabled(), !clear);
        QVERIFY(session.widget("addFilesBtn").isEnabled());
        QCOMPARE(session.text("labelTimeTaken"), u"Total Time Taken : 0 sec(s) 0/0"_s);
        session.controller.viewLogAction(); // of no job
        QCOMPARE(session.desktop.opened().size(), 2);
    }

    // Else the user learns neither which page is missing nor which one has white rows.
    void showsTheProblemsOfARun()
    {
        const TestFolder folder;
        folder.make(u"in/a.tif:WBW in/b.tif:W in/c.tif:WF out/"_s);
        const QString damaged = folder.path(u"in/a.tif"_s);
        const QString fax = folder.path(u"in/c.tif"_s);
        Session session(ini());
        QVERIFY(session.open({ damaged, folder.path(u"in/b.tif"_s), fax }));
        session.controller.settings().setOutputFolderPath(folder.path(u"out"_s));
        session.controller.settings().setOutputType(1);
        const QWidget& button = session.widget("showProblemsBtn");
        auto& list = session.find<QTreeWidget>("problemList");
        const auto run = [&] {
            session.click("convertBtn");
            QVERIFY(!button.isVisible());
            QTRY_VERIFY_WITH_TIMEOUT(session.widget("closeProcessBtn").isEnabled(), longMs);
        };
        const auto toolTip = [&](int row) {
            const QAbstractItemModel& model = *session.table().model();
            return model.index(row, FileTableModel::Name).data(Qt::ToolTipRole).toString();
        };
        run();
        QVERIFY(session.text("processCountLabel").endsWith(u", 2 problem(s)"_s));
        QVERIFY(button.isVisible() && !list.isVisible());
        session.click("showProblemsBtn");
        QVERIFY(list.isVisible());
        QVERIFY(!session.widget("problemsLeftLabel").isVisible());

        QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&list, Qt::Key_C, Qt::ControlModifier);
        const QStringList lines = QGuiApplication::clipboard()->text().split(u'\n');
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines.first().startsWith(damaged + u"\t2\t"_s), qPrintable(lines.first()));
        QCOMPARE(lines.last(),
                 fax + u"\t2\tWarning: 1 row of the fax is damaged; what is lost of it is white"_s);
        QCOMPARE(toolTip(0), damaged + u"\nPage 2: "_s + lines.first().section(u'\t', 2));
        QVERIFY(toolTip(2).startsWith(fax + u"\nPage 2: Warning: 1 row"_s));

        const QRect row = list.visualItemRect(list.topLevelItem(1));
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, row.center());
        QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, row.center());
        QCOMPARE(session.table().highlightedRows(), QList<int> { 2 });
        session.click("closeProcessBtn");
        QCOMPARE(session.table().highlightedRows(), QList<int> { 2 });

        session.controller.tableModel().mark({ 0, 2 }, FileTableModel::Mark::Uncheck);
        run();
        QVERIFY(!button.isVisible() && !list.isVisible());
        QCOMPARE(toolTip(0), damaged);
    }

    void keepsFewOfVeryManyProblems()
    {
        QWidget window;
        ProcessPanel panel(&window);
        Process job;
        panel.follow(job, 1);
        for (int page = 1; page <= 1234; ++page)
            emit job.diagnosed({ .sourcePath = u"/in/a.tif"_s, .page = page, .reason = u"no"_s });
        emit job.logTroubleMet(u"/a.log"_s, u"full"_s);
        job.setLog(std::make_shared<Log>());
        job.setIsCompleted(true);
        panel.show();
        panel.findChild<QAbstractButton*>(u"showProblemsBtn"_s)->click();
        const auto& list = *panel.findChild<QTreeWidget*>(u"problemList"_s);
        QCOMPARE(list.topLevelItemCount(), 1000);
        QCOMPARE(panel.findChild<QLabel*>(u"problemsLeftLabel"_s)->text(),
                 u"235 more are in the log only."_s);
        QCOMPARE(panel.problemsByFile().value(u"/in/a.tif"_s).count(u'\n'), 10);
        QVERIFY(panel.problemsByFile().value(u"/in/a.tif"_s).endsWith(u"\nand more"_s));
    }

    void stopsACancelledRun()
    {
        Session session(ini());
        QVERIFY(session.beginLongRun(m_folder->path(), 60));
        session.click("cancelProcessBtn");
        QTRY_VERIFY_WITH_TIMEOUT(session.widget("closeProcessBtn").isEnabled(), longMs);
        QCOMPARE(session.text("processMessageLabel"), u"Process cancelled!"_s);
        const qsizetype written = QDir(path(u"out"_s)).entryList(QDir::Files | QDir::Hidden).size();
        QCOMPARE(written, session.controller.process()->totalFileCreated());
        QVERIFY(written < 60);
        const auto& bar = session.find<QProgressBar>("processProgressBar");
        QVERIFY(bar.value() < bar.maximum());
        QTest::keyClick(session.controller.processViewPanel(), Qt::Key_Escape);
        QVERIFY(!session.controller.processViewPanel()->isVisible());
        QVERIFY(session.widget("convertBtn").isEnabled());
    }

    void endsARunWhenTheWindowCloses()
    {
        Session session(ini());
        QVERIFY(session.beginLongRun(m_folder->path(), 60));
        QSignalSpy ready(&session.controller, &PagestackAppDelegate::readyToTerminate);
        session.controller.window()->close();
        QVERIFY(ready.wait(longMs));
        QCOMPARE(ready.size(), 1);
        const QFileInfoList written
            = QDir(path(u"out"_s)).entryInfoList(QDir::Files | QDir::Hidden);
        QVERIFY(!written.isEmpty() && written.size() < 60);
        for (const QFileInfo& file : written)
            QCOMPARE(QImage(file.filePath(), "PNG").size(), QSize(1748, 2480));
        QVERIFY(!logFile().isEmpty());
        QVERIFY(session.controller.applicationShouldTerminate());
    }

    // Nobody closes the window and nobody waits.
    void endsWhatIsUnderWayWithTheProgram()
    {
        for (int i = 0; i < 300; ++i)
            makeFile(path(u"in/%1.tif"_s.arg(i)));
        {
            Session session(ini());
            QSignalSpy inserted(&session.controller.tableModel(),
                                &QAbstractItemModel::rowsInserted);
            session.controller.openPaths({ path(u"in"_s) });
            QVERIFY(inserted.wait(longMs));
        }
        {
            Session session(ini());
            QVERIFY(session.beginLongRun(m_folder->path(), 60));
        }
        const QFileInfoList written
            = QDir(path(u"out"_s)).entryInfoList(QDir::Files | QDir::Hidden);
        QVERIFY(!written.isEmpty() && written.size() < 60);
        for (const QFileInfo& file : written)
            QCOMPARE(QImage(file.filePath(), "PNG").size(), QSize(1748, 2480));
        QVERIFY(!logFile().isEmpty());
    }

    // As on macOS: the window goes and comes back, and the system ends the program.
    void outlivesItsWindowWhereProgramsDo()
    {
        for (int i = 0; i < 300; ++i)
            makeFile(path(u"in/%1.tif"_s.arg(i)));
        int ends = 0;
        // Sees what the session lets through, and keeps it from ending the tests.
        ApplicationEvents system([&] { return ++ends < 0; }, [](bool) {});
        Session session(ini());
        session.controller.setEndsWithWindow(false);
        QMainWindow& window = *session.controller.window();
        window.close();
        QVERIFY(!window.isVisible());
        emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        QVERIFY(window.isVisible());

        QSignalSpy ready(&session.controller, &PagestackAppDelegate::readyToTerminate);
        session.controller.openPaths({ path(u"in"_s) });
        session.controller.settings().setSeparator(u"_p"_s);
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(!quit.isAccepted() && ends == 0); // not before the load has ended
        QVERIFY(ready.wait(longMs));
        session.controller.settings().setSeparator(u"_q"_s);
        window.close();
        QVERIFY(!window.isVisible());
        QCoreApplication::sendEvent(qApp, &quit);
        QCOMPARE(ends, 1);
        QCOMPARE(Settings(&session.defaults).separator(), u"_q"_s);
        session.controller.openAppAction();
        QVERIFY(window.close()); // which Qt does when a program ends
    }

    void comesBackAsItWasLeft()
    {
        QSize size;
        {
            Session session(ini());
            for (int i = 0; i < 2; ++i)
                QTest::keyClick(&session.widget("outputType"), Qt::Key_Down);
            QTest::keyClick(&session.widget("jpegQualitySlider"), Qt::Key_Left);
            session.find<QLineEdit>("fileNameSeparatorText").setText(u"_p"_s);
            session.click("inculdeSubfoldersBtn");
            session.find<QAction>("toggleSettingsAction").trigger();
            session.controller.window()->resize(760, 700);
            session.table().setColumnWidth(FileTableModel::Location, 222);
            session.table().setColumnWidth(FileTableModel::Name, 333);
            size = session.controller.window()->size();
            session.controller.window()->close();
        }
        Session session(ini());
        QCOMPARE(session.find<QComboBox>("outputType").currentText(), u"TIFF"_s);
        QCOMPARE(session.find<QLineEdit>("fileNameSeparatorText").text(), u"_p"_s);
        QVERIFY(session.find<QAbstractButton>("inculdeSubfoldersBtn").isChecked());
        QVERIFY(!session.widget("rightBox").isVisible());
        QVERIFY(!session.find<QAction>("toggleSettingsAction").isChecked());
        QCOMPARE(session.controller.window()->size(), size);
        QCOMPARE(session.table().columnWidth(FileTableModel::Name), 333);

        QFile store(ini());
        QVERIFY(store.open(QIODevice::WriteOnly) && store.write("odd line") > 0 && store.flush());
        QVERIFY(Session(ini()).alerts.lastText().contains(u"They are kept in "));
    }

    void enablesTheOptionsOfTheType_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("isSplit");
        QTest::addColumn<QString>("enabled"); // quality, compression and splitting, separator
        QTest::newRow("JPEG") << 0 << false << u"q-s"_s;
        QTest::newRow("PNG") << 1 << false << u"--s"_s;
        QTest::newRow("TIFF") << 2 << false << u"-t-"_s;
        QTest::newRow("TIFF, split") << 2 << true << u"-ts"_s;
        QTest::newRow("BMP") << 3 << true << u"--s"_s;
        QTest::newRow("GIF") << 4 << false << u"--s"_s;
    }

    void enablesTheOptionsOfTheType()
    {
        QFETCH(const int, type);
        QFETCH(const bool, isSplit);
        QFETCH(const QString, enabled);
        Session session(ini());
        for (int i = 0; i < type; ++i)
            QTest::keyClick(&session.widget("outputType"), Qt::Key_Down);
        session.find<QAbstractButton>("splitTiffCheckbox").setChecked(isSplit);
        QCOMPARE(session.controller.settings().outputType(), type);
        QCOMPARE(session.widget("jpegQualitySlider").isEnabled(), enabled.contains(u'q'));
        QCOMPARE(session.widget("tiffCompressionPopup").isEnabled(), enabled.contains(u't'));
        QCOMPARE(session.widget("splitTiffCheckbox").isEnabled(), enabled.contains(u't'));
        QCOMPARE(session.widget("fileNameSeparatorText").isEnabled(), enabled.contains(u's'));
        QCOMPARE(session.widget("fileNameSeparatorLabel").isEnabled(), enabled.contains(u's'));
    }

    void showsTheQuality_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<QString>("shown");
        QTest::newRow("0") << 0 << u"10%"_s;
        QTest::newRow("4") << 4 << u"50%"_s;
        QTest::newRow("9") << 9 << u"100%"_s;
        QTest::newRow("10") << 10 << u"100%"_s;
    }

    void showsTheQuality()
    {
        QFETCH(const int, step);
        Session session(ini());
        session.find<QSlider>("jpegQualitySlider").setValue(step == 10 ? 0 : 10);
        session.find<QSlider>("jpegQualitySlider").setValue(step);
        QTEST(session.text("qualityText"), "shown");
        QCOMPARE(session.controller.settings().jpegQuality(), step);
    }

    void filtersNumbers_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::newRow("zero") << 30001 << u"0"_s << u"2"_s;
        QTest::newRow("zero, other tag") << 30002 << u"00"_s << u"1"_s;
        QTest::newRow("empty") << 30001 << QString() << u"2"_s;
        QTest::newRow("no digit") << 30002 << u"xy"_s << u"1"_s;
        QTest::newRow("trimmed") << 30001 << u"x5x"_s << u"5"_s;
        QTest::newRow("trimmed at its ends only") << 30001 << u"1a2"_s << u"1a2"_s;
        QTest::newRow("reads as zero") << 30002 << u"0a2"_s << u"1"_s;
        QTest::newRow("no such field") << 30003 << u"x0"_s << u"x0"_s;
    }

    void filtersNumbers()
    {
        QFETCH(const int, tag);
        QFETCH(const QString, typed);
        Session session(ini());
        auto& field = session.find<QLineEdit>("fileNameSeparatorText");
        field.setProperty("tag", tag);
        field.setText(typed + u'z');
        QTest::keyClick(&field, Qt::Key_Backspace);
        QTEST(field.text(), "kept");
    }

    void opensTheGuideOnce()
    {
        Session session(ini());
        session.find<QAbstractButton>("helpHyperlink").click();
        QCOMPARE(session.desktop.opened().size(), 1);
        session.find<QAction>("helpAction").trigger();
        QCOMPARE(session.desktop.opened().size(), 2);
    }

    void answersItsMenus()
    {
        Session session(ini());
        const auto trigger = [&](const char* name) { session.find<QAction>(name).trigger(); };
        QMainWindow* window = session.controller.window();
        session.chooser.setNextChoice(urlsOf({ sample(u"turned.tif"_s) }));
        QVERIFY(session.load([&] { trigger("addFilesAction"); }));
        session.chooser.setNextChoice(urlsOf({ samples() }));
        QVERIFY(session.load([&] { trigger("addFolderAction"); }));
        QCOMPARE(session.controller.files().count(), 6);

        trigger("preferencesToolbarItem");
        QVERIFY(!session.widget("rightBox").isVisible());
        QVERIFY(session.find<QAction>("dummyToolbarItem").isChecked());
        window->showMaximized();
        trigger("minimizeAction");
        QVERIFY(window->isMinimized());
        trigger("openAppAction");
        QVERIFY(!window->isMinimized() && window->isMaximized() && window->isVisible());
        session.alerts.setNextAnswer(0);
        trigger("aboutAction");
        QVERIFY(session.alerts.lastText().contains(u"libtiff"_s, Qt::CaseInsensitive));
        trigger("websiteAction");
        QCOMPARE(session.desktop.requests(), QList<QUrl> { QUrl(u"https://pagestack.example/"_s) });

        QDir().mkpath(path(u"out"_s));
        session.controller.settings().setOutputFolderPath(path(u"out"_s));
        session.alerts.setNextAnswer(0); // one of the files is there twice, in different folders
        trigger("convertMenuAction");
        QTRY_VERIFY_WITH_TIMEOUT(session.widget("closeProcessBtn").isEnabled(), longMs);
        session.click("closeProcessBtn");
        QCOMPARE(QDir(path(u"out"_s)).entryList({ u"*.jpg"_s }).size(), 8);

        for (int i = 0; i < 300; ++i)
            makeFile(path(u"in/%1.tif"_s.arg(i)));
        connect(&session.controller.tableModel(), &QAbstractItemModel::rowsInserted, this,
                [&] { trigger("cancelMenuAction"); });
        QVERIFY(session.open({ path(u"in"_s) }));
        QVERIFY(session.controller.files().count() < 300);

        QVERIFY(window->isVisible());
        trigger("quitAction");
        QVERIFY(window->close()); // the program is about to end, so nothing holds the window
    }

    void followsTheTheme()
    {
        Session session(ini());
        const QPalette before = QApplication::palette();
        QPalette dark = before;
        dark.setColor(QPalette::Active, QPalette::WindowText, Qt::yellow);
        dark.setColor(QPalette::Disabled, QPalette::WindowText, Qt::darkYellow);
        const auto follows = [&](const QPalette& palette, QPalette::ColorGroup group) {
            QApplication::setPalette(palette); // is told to the widgets later
            for (const char* name : { "labelTotalFiles", "labelTotalTIFFPages", "labelTimeTaken" })
                QTRY_COMPARE(
                    session.widget(name).palette().color(QPalette::Active, QPalette::WindowText),
                    palette.color(group, QPalette::WindowText));
        };
        session.controller.startProcess();
        follows(dark, QPalette::Disabled);
        session.controller.stopProcess();
        follows(dark, QPalette::Active);
        follows(before, QPalette::Active);
    }

    void printsItsHelpWithoutADisplay()
    {
        for (const auto& [argument, beginning] : { std::pair(u"--help"_s, "Usage: pagestack ["),
                                                   std::pair(u"--version"_s, "pagestack ") }) {
            QProcess program;
            program.setEnvironment({ u"QT_QPA_PLATFORM=xcb"_s });
            program.start(qEnvironmentVariable("PAGESTACK_BIN") + u"/pagestack"_s,
                          { u"a.tif"_s, argument });
            QVERIFY(program.waitForFinished(longMs));
            QCOMPARE(program.exitStatus(), QProcess::NormalExit);
            QCOMPARE(program.exitCode(), 0);
            QVERIFY(program.readAllStandardOutput().startsWith(beginning));
            QCOMPARE(program.readAllStandardError(), QByteArray());
        }
        QVERIFY(!programText({ u"--"_s, u"--help"_s }));
        QCOMPARE(pathArguments({ u"--"_s, u"--help"_s }), QStringList { u"--help"_s });
    }

    void dividesTheWindow_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("small") << QSize(950, 600);
        QTest::newRow("medium") << QSize(1200, 700);
        QTest::newRow("large") << QSize(1811, 1003);
    }

    void dividesTheWindow()
    {
        QFETCH(const QSize, size);
        Session session(ini());
        QMainWindow& window = *session.controller.window();
        const int pane = session.widget("rightBox").width();
        const auto list = [&] { return session.widget("leftBox").width(); };
        window.resize(size);
        QTRY_COMPARE(list(), window.width() - (session.widget("rightBox").width() + 9));
        QCOMPARE(session.widget("rightBox").width(), pane);
        session.find<QAction>("toggleSettingsAction").trigger();
        QTRY_COMPARE(list(), window.width() - 5);
        window.resize(size + QSize(31, 7));
        QTRY_COMPARE(list(), window.width() - 5);
        session.find<QAction>("preferencesToolbarItem").trigger();
        QTRY_COMPARE(list(), window.width() - (pane + 9));
        QVERIFY(session.find<QAction>("toggleSettingsAction").isChecked());
    }

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString ini() const { return path(u"settings.json"_s); }
    /// The samples in a folder of their own, without what a run adds to them.
    QString samples() const
    {
        const QString folder = path(u"samples"_s);
        QDir().mkpath(folder);
        for (const QString& name : QDir(sample({})).entryList({ u"*.tif"_s }))
            QFile::copy(sample(name), folder + u'/' + name);
        return folder;
    }
    QString logFile() const
    {
        const QDir logs(path(u"data/Corvanta/Pagestack1/Logs"_s));
        const QStringList files = logs.entryList(QDir::Files);
        return files.size() == 1 ? logs.filePath(files.first()) : QString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_MAIN(WindowTest)
#include "WindowTest.moc"
