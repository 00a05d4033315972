#include "filelist/NameSearch.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/mainwindow/Session.h"
#include "tests/support/Testing.h"

#include <QAbstractButton>
#include <QAction>
#include <QDropEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSemaphore>
#include <QToolButton>

/// The commands on the list, by the controls of the real window.
class ListTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("XDG_DATA_HOME", path(u"data"_s).toLocal8Bit());
        m_session = std::make_unique<Session>(path(u"settings.json"_s));
    }
    void cleanup() { m_session.reset(); }

    void marks_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QString>("marks");
        QTest::addColumn<QString>("totals");
        // Before: x--xxx with 1, 2 and 3 highlighted.
        QTest::newRow("check all") << "checkAllAction"_ba << u"xxxxxx"_s << u"6, 6, 15, 15"_s;
        QTest::newRow("uncheck all") << "uncheckAllAction"_ba << u"------"_s << u"6, 0, 0, 15"_s;
        QTest::newRow("invert all") << "invertCheckAction"_ba << u"-xx---"_s << u"6, 2, 3, 15"_s;
        QTest::newRow("check") << "checkSelectionAction"_ba << u"xxxxxx"_s << u"6, 6, 15, 15"_s;
        QTest::newRow("uncheck") << "uncheckSelectionAction"_ba << u"x---xx"_s << u"6, 3, 9, 15"_s;
        QTest::newRow("invert") << "invertSelectionAction"_ba << u"xxx-xx"_s << u"6, 5, 12, 15"_s;
    }

    void marks()
    {
        QFETCH(const QByteArray, command);
        QVERIFY(fill());
        table().highlightRows({ 1, 2 });
        action("uncheckSelectionAction").trigger();
        table().highlightRows({ 1, 2, 3 });
        QCOMPARE(marksText(), u"x--xxx"_s);
        action(command).trigger();
        QTEST(marksText(), "marks");
        QTEST(session().totals(), "totals");
        QCOMPARE(session().widget("convertBtn").isEnabled(), marksText().contains(u'x'));
        action("undoAction").trigger();
        QCOMPARE(marksText(), u"x--xxx"_s);
    }

    void highlightsAllAndTheFirst()
    {
        QVERIFY(fill());
        for (const auto& [all, first] :
             { std::pair("selectAllButton", "deselectAllButton"),
               std::pair("selectAllRowsAction", "deselectAllRowsAction") }) {
            const auto press = [&](const char* name) {
                if (auto* button = session().controller.window()->findChild<QToolButton*>(
                        QLatin1StringView(name)))
                    button->click();
                else
                    action(name).trigger();
            };
            press(all);
            QCOMPARE(table().highlightedRows().size(), 6);
            press(first);
            QCOMPARE(table().highlightedRows(), QList<int> { 0 });
        }
    }

    void removes_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<int>("answer"); // -1: no question
        QTest::addColumn<QString>("order");
        QTest::newRow("button") << "removeBtn"_ba << -1 << u"0 2 5"_s;
        QTest::newRow("icon") << "removeSelectedFilesButton"_ba << -1 << u"0 2 5"_s;
        QTest::newRow("menu") << "removeSelectedAction"_ba << -1 << u"0 2 5"_s;
        QTest::newRow("key") << ""_ba << -1 << u"0 2 5"_s;
        QTest::newRow("all, yes") << "removeAllFilesButton"_ba << 0 << QString();
        QTest::newRow("all, no") << "removeAllAction"_ba << 1 << u"0 1 2 3 4 5"_s;
    }

    void removes()
    {
        QFETCH(const QByteArray, command);
        QFETCH(const int, answer);
        QVERIFY(fill());
        table().highlightRows({ 1, 3, 4 });
        if (answer >= 0)
            session().alerts.setNextAnswer(answer);
        if (command.isEmpty())
            QTest::keyClick(&table(), Qt::Key_Backspace);
        else if (command.endsWith("Action"))
            action(command).trigger();
        else
            session().find<QAbstractButton>(command).click();
        QTEST(order(), "order");
        QCOMPARE(session().alerts.lastText(),
                 answer < 0 ? QString() : u"Are you sure to remove all file(s)?"_s);
        if (answer >= 0)
            QCOMPARE(session().alerts.lastButtons(), (QStringList { u"Yes"_s, u"No"_s }));
        const bool isEmpty = order().isEmpty();
        QCOMPARE(session().widget("lableDragAndDrop").isVisible(), isEmpty);
        QCOMPARE(session().widget("removeBtn").isEnabled(), !isEmpty);
        QVERIFY(QFile::exists(path(u"in/3.tif"_s)));
        if (answer != 1) {
            action("undoAction").trigger();
            QCOMPARE(order(), u"0 1 2 3 4 5"_s);
            QCOMPARE(table().highlightedRows(),
                     isEmpty ? (QList<int> { 0, 1, 2, 3, 4, 5 }) : (QList<int> { 1, 3, 4 }));
            action("redoAction").trigger();
            QTEST(order(), "order");
        }
    }

    void moves_data()
    {
        QTest::addColumn<QList<int>>("rows");
        QTest::addColumn<bool>("up");
        QTest::addColumn<QString>("order");
        QTest::addColumn<QList<int>>("after");
        QTest::newRow("block up") << QList<int> { 2, 3 } << true << u"0 2 3 1 4 5"_s
                                  << QList<int> { 1, 2 };
        QTest::newRow("two blocks up")
            << QList<int> { 1, 4, 5 } << true << u"1 0 2 4 5 3"_s << QList<int> { 0, 3, 4 };
        QTest::newRow("from the top")
            << QList<int> { 0, 3 } << true << u"0 1 2 3 4 5"_s << QList<int> { 0, 3 };
        QTest::newRow("block down")
            << QList<int> { 0, 1, 3 } << false << u"2 0 1 4 3 5"_s << QList<int> { 1, 2, 4 };
        QTest::newRow("from the bottom")
            << QList<int> { 1, 5 } << false << u"0 1 2 3 4 5"_s << QList<int> { 1, 5 };
        QTest::newRow("nothing") << QList<int> {} << false << u"0 1 2 3 4 5"_s << QList<int> {};
    }

    void moves()
    {
        QFETCH(const QList<int>, rows);
        QFETCH(const bool, up);
        QVERIFY(fill());
        const auto check = [&] {
            QTEST(order(), "order");
            QTEST(table().highlightedRows(), "after");
        };
        table().highlightRows(rows);
        session().find<QToolButton>(up ? "moveUpButton" : "moveDownButton").click();
        check();
        action("undoAction").trigger();
        table().highlightRows(rows);
        QTest::keyClick(&table(), up ? Qt::Key_Up : Qt::Key_Down, Qt::ControlModifier);
        check();
        action("undoAction").trigger();
        QCOMPARE(order(), u"0 1 2 3 4 5"_s);
        table().highlightRows(rows);
        action(up ? "moveUpAction" : "moveDownAction").trigger();
        check();
        // Without a control that is disabled at the edge, too.
        const QString before = order();
        if (rows.contains(up ? 0 : 5)) {
            up ? session().controller.moveUp() : session().controller.moveDown();
            QCOMPARE(order(), before);
        }
    }

    void takesBackEveryStep()
    {
        QVERIFY(fill());
        const auto state = [this] { return order() + marksText(); };
        QStringList states { state() };
        const auto step = [&](const std::function<void()>& act) {
            act();
            QVERIFY2(state() != states.last(), qPrintable(state()));
            states.append(state());
        };
        const auto clickTick = [this](int row) {
            const QRect cell = table().visualRect(table().model()->index(row, 0));
            QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, cell.center());
        };
        step([&] { clickTick(1); });
        step([&] {
            table().horizontalHeader()->setSortIndicator(FileTableModel::Pages,
                                                         Qt::DescendingOrder);
        });
        step([&] {
            table().highlightRows({ 1, 2 });
            session().click("moveDownButton");
        });
        step([&] { QTest::keyClick(&table(), Qt::Key_Space); });
        step([&] { session().click("removeBtn"); });
        step([&] { action("invertCheckAction").trigger(); });
        for (int round = 0; round < 2; ++round) {
            for (auto each = states.crbegin() + 1; each != states.crend(); ++each) {
                action("undoAction").trigger();
                QCOMPARE(state(), *each);
            }
            QVERIFY(!action("undoAction").isEnabled());
            for (auto each = states.cbegin() + 1; each != states.cend(); ++each) {
                action("redoAction").trigger();
                QCOMPARE(state(), *each);
            }
            QVERIFY(!action("redoAction").isEnabled());
        }
        QCOMPARE(action("undoAction").text(), u"&Undo Invert Ticks of 4 File(s)"_s);
    }

    void takesBackInSpiteOfLoadsAndRuns()
    {
        QVERIFY(fill());
        table().horizontalHeader()->setSortIndicator(FileTableModel::Name, Qt::DescendingOrder);
        QCOMPARE(order(), u"5 4 3 2 1 0"_s);
        table().highlightRows({ 0, 1, 2 }); // 5 4 3
        session().click("removeBtn");
        makeFile(path(u"in/9.tif"_s), 1);
        QVERIFY(session().open({ path(u"in/4.tif"_s), path(u"in/9.tif"_s) }));
        QCOMPARE(order(), u"9 4 2 1 0"_s);
        action("undoAction").trigger(); // 4 is there already
        QCOMPARE(order(), u"5 9 3 4 2 1 0"_s);
        action("redoAction").trigger();
        QCOMPARE(order(), u"9 4 2 1 0"_s);
        action("undoAction").trigger();
        action("undoAction").trigger(); // the sort; what came later is last
        QCOMPARE(order(), u"0 1 2 3 5 9 4"_s);
        QVERIFY(!action("undoAction").isEnabled());

        // Files that a run has converted and taken off the list come back, too.
        QDir().mkpath(path(u"out"_s));
        session().controller.settings().setOutputFolderPath(path(u"out"_s));
        session().find<QAbstractButton>("clearProcessedFilesBtn").setChecked(true);
        session().click("convertBtn");
        QVERIFY(!action("undoAction").isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(session().widget("closeProcessBtn").isEnabled(), longMs);
        session().click("closeProcessBtn");
        QCOMPARE(order(), QString());
        action("undoAction").trigger();
        QCOMPARE(order(), u"0 1 2 3 5 9 4"_s);
    }

    void followsTheHighlightInItsMenus()
    {
        const auto enabled = [this](std::initializer_list<const char*> names) {
            int count = 0;
            for (const char* name : names)
                count += action(name).isEnabled() ? 1 : 0;
            return count;
        };
        const auto onList = [&] {
            return enabled({ "exportAction", "exportToolbarItem", "selectAllRowsAction",
                             "deselectAllRowsAction", "checkAllAction", "uncheckAllAction",
                             "invertCheckAction", "removeAllAction", "findAction" });
        };
        const auto onHighlight = [&] {
            return enabled({ "openFileAction", "revealAction", "getInfoAction",
                             "checkSelectionAction", "uncheckSelectionAction",
                             "invertSelectionAction", "removeSelectedAction" });
        };
        QCOMPARE(onList(), 0);
        QVERIFY(action("importAction").isEnabled());
        QVERIFY(fill());
        QCOMPARE(onList(), 9);
        QCOMPARE(onHighlight(), 0);
        table().highlightRows({ 0 });
        QCOMPARE(onHighlight(), 7);
        QVERIFY(!action("moveUpAction").isEnabled() && action("moveDownAction").isEnabled());
        table().highlightRows({ 5 });
        QVERIFY(action("moveUpAction").isEnabled() && !action("moveDownAction").isEnabled());
        session().controller.resetView(false);
        QCOMPARE(onList() + onHighlight(), 0);
        QVERIFY(!action("importAction").isEnabled() && !action("moveUpAction").isEnabled());
    }

    void opensTheContextMenu()
    {
        QVERIFY(fill());
        QMenu& menu = session().find<QMenu>("filesContextMenu");
        QCOMPARE(table().contextMenu(), &menu);
        const QPoint place = table().visualRect(table().model()->index(2, 1)).center();
        QTest::mouseClick(table().viewport(), Qt::RightButton, {}, place);
        QVERIFY(!menu.isVisible()); // nothing was highlighted
        table().highlightRows({ 2, 3 });
        QTest::mouseClick(table().viewport(), Qt::RightButton, {}, place);
        QVERIFY(menu.isVisible());
        QCOMPARE(table().highlightedRows(), (QList<int> { 2, 3 }));
        const QRect item = menu.actionGeometry(&action("uncheckSelectionAction"));
        QTest::mouseClick(&menu, Qt::LeftButton, {}, item.center());
        QCOMPARE(marksText(), u"xx--xx"_s);
        for (const QAction* each : menu.actions())
            QVERIFY(each->isSeparator() || each->isVisible());
    }

    void exportsTheList()
    {
        QVERIFY(fill());
        const auto file = session().controller.files().at(1);
        QFile::remove(path(u"in/2.tif"_s));
        const QString target = path(u"list.txt"_s);
        session().chooser.setNextChoice({});
        action("exportToolbarItem").trigger(); // cancelled
        QCOMPARE(session().chooser.lastMessage(), u"Export List To Tab Delimited Text File :"_s);
        session().chooser.setNextChoice(urlsOf({ target }));
        QVERIFY(session().load([&] { action("exportAction").trigger(); }));
        QFile exported(target);
        QVERIFY(exported.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(exported.readAll()).split(u'\n');
        QCOMPARE(lines.size(), 8);
        QVERIFY(lines.last().isEmpty());
        QCOMPARE(lines.first(),
                 u"Name\tPages\tSize\tType\tModified Date\tAccessed Date\t"
                 "Created Date\tLocation"_s);
        const QStringList fields = lines.at(2).split(u'\t');
        QCOMPARE(fields.size(), 8);
        QCOMPARE(fields.first(4), (QStringList { u"1.tif"_s, u"1"_s, file->sizeInKB(), u"tif"_s }));
        QCOMPARE(fields.at(4),
                 file->dateModified().toUTC().toString(u"yyyy-MM-dd HH:mm:ss '+0000'"_s));
        QCOMPARE(fields.at(7), path(u"in"_s));
        QCOMPARE(lines.at(3).split(u'\t').sliced(4, 3), QStringList(3, u"(null)"_s));

        // A folder that takes no file: nothing is said, and nothing is left.
        session().chooser.setNextChoice(urlsOf({ path(u"nowhere/list.txt"_s) }));
        QVERIFY(session().load([&] { action("exportAction").trigger(); }));
        QCOMPARE(session().alerts.askedCount(), 0);
    }

    void imports()
    {
        makeFile(path(u"in/a.tif"_s), 2);
        makeFile(path(u"in/b.tiff"_s), 3);
        QFile list(path(u"list.txt"_s));
        QVERIFY(list.open(QIODevice::WriteOnly));
        list.write(QStringList { path(u"in/b.tiff"_s), path(u"in/none.TIF"_s), path(u"in/a.tif"_s),
                                 path(u"in/a.tif"_s) }
                       .join(u'\n')
                       .toUtf8());
        list.close();
        for (int round = 0; round < 2; ++round) { // the second time everything is there already
            session().find<QAbstractButton>("importBtn").click();
            auto& panel = session().find<ImportFilesWindowController>("ImportFiles");
            QVERIFY(panel.isVisible() && panel.files().isEmpty());
            QCOMPARE(panel.allowedTypes(), u"tif,TIF,tiff,TIFF"_s);
            session().chooser.setNextChoice(urlsOf({ list.fileName() }));
            panel.browseImportFileAction();
            QVERIFY(session().load([&] { panel.importAction(); }));
            QVERIFY(!panel.isVisible());
            QCOMPARE(session().names(), (QStringList { u"b.tiff"_s, u"none.TIF"_s, u"a.tif"_s }));
            QCOMPARE(session().totals(), u"3, 3, 5, 5"_s);
        }
        action("importAction").trigger();
        QTest::keyClick(&session().find<ImportFilesWindowController>("ImportFiles"),
                        Qt::Key_Escape);
        QVERIFY(session().widget("addFilesBtn").isEnabled());
    }

    void takesDrops_data()
    {
        QTest::addColumn<QStringList>("dropped");
        QTest::addColumn<QString>("names");
        QTest::newRow("files and a folder")
            << QStringList { u"b.tif"_s, u"sub"_s } << u"b.tif c.tif"_s;
        QTest::newRow("a JPEG") << QStringList { u"photo.jpg"_s } << QString();
        QTest::newRow("a web page") << QStringList {} << QString();
    }

    void takesDrops()
    {
        QFETCH(const QStringList, dropped);
        QFETCH(const QString, names);
        for (const auto* name : { "b.tif", "sub/c.tif", "sub/below/d.tif", "photo.jpg" })
            makeFile(path(QLatin1StringView(name)), 1);
        QList<QUrl> urls { QUrl(u"https://pagestack.example/scan.tif"_s) };
        for (const QString& name : dropped)
            urls.append(QUrl::fromLocalFile(path(name)));
        QMimeData data;
        data.setUrls(urls);
        const auto send = [&] {
            QDragEnterEvent enter({ 20, 20 }, Qt::CopyAction, &data, Qt::LeftButton, {});
            QCoreApplication::sendEvent(table().viewport(), &enter);
            QDropEvent drop({ 20, 20 }, Qt::CopyAction, &data, Qt::LeftButton, {});
            QCoreApplication::sendEvent(table().viewport(), &drop);
        };
        if (dropped.isEmpty())
            send();
        else
            QVERIFY(session().load(send));
        QCOMPARE(session().names().join(u' '), names);
        QCOMPARE(session().widget("lableDragAndDrop").isVisible(), names.isEmpty());
    }

    void finds()
    {
        QVERIFY(session().open({ makeFile(path(u"in/Invoice 1.tif"_s), 1),
                                 makeFile(path(u"in/letter.tif"_s), 1),
                                 makeFile(path(u"in/invoice 2.tif"_s), 1) }));
        auto& bar = session().widget("findBar");
        auto& field = session().find<QLineEdit>("searchField");
        QVERIFY(!bar.isVisible());
        session().find<QToolButton>("searchBtn").click();
        QVERIFY(bar.isVisible());
        QCOMPARE(session().controller.window()->focusWidget(), &field);
        QTest::keyClicks(&field, u"INV"_s);
        QTRY_COMPARE(table().highlightedRows(), (QList<int> { 0, 2 }));
        QCOMPARE(session().totals(), u"3, 3, 3, 3"_s); // what is converted is as it was
        QCOMPARE(session().text("foundLabel"), u"1 of 2"_s);
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(table().currentIndex().row(), 2);
        QCOMPARE(session().text("foundLabel"), u"2 of 2"_s);
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(table().currentIndex().row(), 0);
        session().click("findPreviousButton");
        QCOMPARE(table().currentIndex().row(), 2);
        QCOMPARE(table().highlightedRows(), (QList<int> { 0, 2 }));
        QTest::keyClicks(&field, u"x"_s);
        QTRY_COMPARE(session().text("foundLabel"), u"No file has it"_s);
        QVERIFY(table().highlightedRows().isEmpty());
        QTest::keyClick(&field, Qt::Key_Escape);
        QVERIFY(!bar.isVisible());
        QCOMPARE(session().controller.window()->focusWidget(), &table());
        QTest::keyClicks(&table(), u"le"_s); // by the beginning of the name, in the table itself
        QCOMPARE(table().currentIndex().row(), 1);
        QCOMPARE(rowsWithName(session().controller.files().items(), u"in/INVOICE"_s),
                 (QList<int> { 0, 2 }));
    }

    void sortsDatesBesideTheWindow_data()
    {
        QTest::addColumn<bool>("isLoad"); // which sorts at its end
        QTest::addColumn<QByteArray>("ending");
        QTest::addColumn<QString>("order");
        QTest::newRow("to the end") << false << "nothing"_ba << u"5 4 3 2 1 0"_s;
        QTest::newRow("cancelled") << false << "Cancel"_ba << u"0 1 2 3 4 5"_s;
        QTest::newRow("the window closes") << false << "close"_ba << u"0 1 2 3 4 5"_s;
        QTest::newRow("load, to the end") << true << "nothing"_ba << u"5 4 3 2 1 0"_s;
        QTest::newRow("load, cancelled") << true << "Cancel"_ba << u"0 1 2 3 4 5"_s;
        QTest::newRow("load, the window closes") << true << "close"_ba << u"0 1 2 3 4 5"_s;
    }

    // The files are on a computer that answers only when it is told to.
    void sortsDatesBesideTheWindow()
    {
        QFETCH(const bool, isLoad);
        QFETCH(const QByteArray, ending);
        QSemaphore questions;
        QSemaphore answers;
        m_session = std::make_unique<Session>(path(u"slow.ini"_s), [&](const FileItem& item) {
            questions.release();
            answers.acquire();
            FileDates dates;
            dates.modified = QDateTime({ 2020, 1, 1 + item.pages() }, {});
            return dates;
        });
        const auto end = qScopeGuard([&] {
            answers.release(100);
            m_session.reset();
        });
        for (const int column : { FileTableModel::DateModified, FileTableModel::DateCreated,
                                  FileTableModel::DateAccessed })
            table().hideColumn(column); // nothing but sorts asks
        const auto sort = [this] {
            table().horizontalHeader()->setSortIndicator(FileTableModel::DateModified,
                                                         Qt::DescendingOrder);
        };
        if (isLoad) {
            sort();
            QStringList files;
            for (int i = 0; i < 6; ++i)
                files.append(makeFile(path(u"in/%1.tif"_s.arg(i)), i));
            session().controller.openPaths(files);
            QTRY_COMPARE_WITH_TIMEOUT(questions.available(), 1, longMs);
        } else {
            QVERIFY(fill());
            table().setFocus();
            sort();
        }
        QVERIFY(session().controller.isProcessing());
        for (const char* name : { "mainTableView", "addFilesBtn", "convertBtn" })
            QVERIFY2(!session().widget(name).isEnabled(), name);
        questions.acquire();
        QSignalSpy ended(&session().controller, &PagestackAppDelegate::readyToTerminate);
        if (ending == "Cancel")
            session().click("cancelBtn");
        else if (ending == "close")
            session().controller.window()->close();
        answers.release(ending == "nothing" ? 6 : 1);
        QTRY_VERIFY_WITH_TIMEOUT(table().isEnabled(), longMs);
        QTEST(order(), "order");
        QCOMPARE(questions.available(), ending == "nothing" ? 5 : 0); // nothing more was read
        // The next start has the columns that a load was to sort by.
        const bool hasArrow = ending == "nothing" || (isLoad && ending == "close");
        QCOMPARE(table().horizontalHeader()->sortIndicatorSection(),
                 hasArrow ? int { FileTableModel::DateModified } : -1);
        QCOMPARE(session().controller.window()->focusWidget(), &table());
        if (ending == "close")
            QVERIFY(ended.size() == 1 || ended.wait(longMs));
    }

    void keepsItsSortColumns()
    {
        const QHeaderView* header = table().horizontalHeader();
        const auto open = [this](std::initializer_list<std::pair<const char*, int>> files) {
            QStringList paths;
            for (const auto& [name, pages] : files)
                paths.append(makeFile(path(u"in/"_s + QLatin1StringView(name)), pages));
            return session().open(paths);
        };
        const auto sort = [&](int column) {
            table().horizontalHeader()->setSortIndicator(column, Qt::AscendingOrder);
        };
        QVERIFY(open({ { "d.tif", 1 }, { "b.tif", 2 }, { "c.tif", 1 } }));
        table().highlightRows({ 2 });
        sort(FileTableModel::Name);
        QVERIFY(session().widget("moveUpButton").isEnabled());
        QVERIFY(session().widget("moveDownButton").isEnabled());
        sort(FileTableModel::Pages);
        QCOMPARE(order(), u"c d b"_s);
        QVERIFY(!session().widget("moveUpButton").isEnabled()); // c came to the top
        QVERIFY(open({ { "a.tif", 2 }, { "e.tif", 1 }, { "a b.tif", 1 } }));
        QCOMPARE(order(), u"a b c d e a b"_s); // by name among those of one page
        action("undoAction").trigger();
        QCOMPARE(header->sortIndicatorSection(), FileTableModel::Name);
        action("undoAction").trigger();
        QCOMPARE(header->sortIndicatorSection(), -1);
        QVERIFY(open({ { "0.tif", 1 } }));
        QCOMPARE(session().names().last(), u"0.tif"_s);
        action("redoAction").trigger();
        action("redoAction").trigger();
        QCOMPARE(header->sortIndicatorSection(), FileTableModel::Pages);
        QCOMPARE(table().currentSortOrders().size(), 2);
    }

    void actsOnTheHighlightedFiles()
    {
        QVERIFY(fill());
        Desktop& desktop = session().desktop;
        for (const char* command : { "openFileAction", "revealAction", "getInfoAction" })
            action(command).trigger(); // disabled as long as no row is highlighted
        session().controller.openEnclodingFolder();
        QCOMPARE(desktop.revealed, QList<QList<QUrl>> { {} });
        QVERIFY(desktop.opened().isEmpty());
        desktop.revealed.clear();
        table().highlightRows({ 4, 1 });
        action("uncheckSelectionAction").trigger();
        const QStringList paths { path(u"in/1.tif"_s), path(u"in/4.tif"_s) };
        for (const char* button : { "openFileButton", "openEnclosedFolderButton", "getInfoButton" })
            session().find<QToolButton>(button).click();
        QCOMPARE(desktop.opened(), paths);
        QCOMPARE(desktop.revealed, QList<QList<QUrl>> { urlsOf(paths) });
        QCOMPARE(desktop.informed, QList<QList<QUrl>> { urlsOf(paths) });
    }

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    Session& session() { return *m_session; }
    CustomTableView& table() { return session().table(); }
    QAction& action(const char* name) { return session().find<QAction>(name); }
    /// Six files "0.tif" to "5.tif"; the pages of each are its number.
    bool fill()
    {
        QStringList files;
        for (int i = 0; i < 6; ++i)
            files.append(makeFile(path(u"in/%1.tif"_s.arg(i)), i));
        return session().open(files);
    }
    QString order() { return session().names().join(u' ').remove(u".tif"_s); }
    QString marksText()
    {
        QString text;
        for (const auto& item : session().controller.files().items())
            text += item->isSelected() ? u'x' : u'-';
        return text;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Session> m_session;
};

QTEST_MAIN(ListTest)

#include "ListTest.moc"
