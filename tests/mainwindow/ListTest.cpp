#include "filelist/NameSearch.h"
#include "mainwindow/desktop/InformationScript.h"
#include "mainwindow/import/ImportFilesWindowController.h"
#include "mainwindow/run/ProcessPanel.h"
#include "tests/mainwindow/Session.h"

#include <QHeaderView>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSemaphore>

/// The commands on the list, by the controls of the real window.
class ListTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        takeNewFolder();
        start();
    }

    void changesTheList_data()
    {
        // Of the files 0 to 5, a dash tells 1 and 2 from those that are ticked.
        addTextRows(R"(
            1 2 3 | checkAllAction            | 0 1 2 3 4 5       | 1 2 3
            1 2 3 | uncheckAllAction          | 0- 1- 2- 3- 4- 5- | 1 2 3
            1 2 3 | invertCheckAction         | 0- 1 2 3- 4- 5-   | 1 2 3
            1 3   | checkSelectionAction      | 0 1 2- 3 4 5      | 1 3
            1 2 3 | uncheckSelectionAction    | 0 1- 2- 3- 4 5    | 1 2 3
            1 2 3 | invertSelectionAction     | 0 1 2 3- 4 5      | 1 2 3
            1 3 4 | removeBtn                 | 0 2- 5            |
            1 3 4 | removeSelectedFilesButton | 0 2- 5            |
            1 3 4 | removeSelectedAction      | 0 2- 5            |
            1 3 4 | Del                       | 0 2- 5            |
            1 3 4 | Backspace                 | 0 2- 5            |
            1 3 4 | removeAllFilesButton      |                   |
            1 3 4 | removeAllAction, no       | 0 1- 2- 3 4 5     | 1 3 4
            2 3   | moveUpButton              | 0 2- 3 1- 4 5     | 1 2
            1 4 5 | moveUpAction              | 1- 0 2- 4 5 3     | 0 3 4
            5     | Ctrl+Up                   | 0 1- 2- 3 5 4     | 4
            0 1 3 | moveDownButton            | 2- 0 1- 4 3 5     | 1 2 4
            2     | moveDownAction            | 0 1- 3 2- 4 5     | 3
            3 4   | Ctrl+Down                 | 0 1- 2- 5 3 4     | 4 5
            0 3   | up, by no control         | 0 1- 2- 3 4 5     | 0 3
            1 5   | down, by no control       | 0 1- 2- 3 4 5     | 1 5
                  | down, by no control       | 0 1- 2- 3 4 5     |)");
    }

    void changesTheList()
    {
        const auto [rows, way, after, highlightedAfter] = textRow<4>();
        const QString before = u"0 1- 2- 3 4 5"_s;
        QVERIFY(fill());
        controller().tableModel().mark({ 1, 2 }, FileTableModel::Mark::Uncheck);
        QList<int> highlighted;
        for (const QString& row : rows.split(u' ', Qt::SkipEmptyParts))
            highlighted.append(row.toInt());
        table().highlightRows(highlighted);
        find("removeBtn").setFocus();
        const bool isAsked = way.startsWith(u"removeAll"_s);
        if (isAsked)
            alerts().setNextAnswer(way.endsWith(u"no"_s) ? 1 : 0);
        if (way.startsWith(u"up"_s))
            controller().moveUp();
        else if (way.startsWith(u"down"_s))
            controller().moveDown();
        else
            pressOrType(way.section(u',', 0, 0));
        QCOMPARE(state(), after);
        QCOMPARE(highlightedText(), highlightedAfter);
        if (way.startsWith(u"move"_s))
            QCOMPARE(window().focusWidget(), &table());
        QCOMPARE(alerts().lastText() + alerts().lastButtons().join(u'/'),
                 isAsked ? u"Are you sure to remove all file(s)?Yes/No"_s : QString());
        const FileList& files = controller().files();
        QCOMPARE(totals(),
                 u"%1, %2, %3, %4"_s.arg(files.count())
                     .arg(files.checkedCount())
                     .arg(files.checkedPages())
                     .arg(files.totalPages()));
        QCOMPARE(isEnabled("convertBtn"), files.checkedCount() > 0);
        QCOMPARE(isEnabled("removeBtn"), files.count() > 0);
        QCOMPARE(find("lableDragAndDrop").isVisible(), files.count() == 0);
        QCOMPARE(isEnabled("undoAction"), after != before);
        const QString step = find<QAction>("undoAction").text().mid(6);
        press("undoAction");
        QCOMPARE(state(), before);
        QCOMPARE(totals(), u"6, 4, 12, 15"_s);
        QCOMPARE(find<QAction>("redoAction").text(),
                 after == before ? u"&Redo"_s : u"&Redo "_s + step);
        press("redoAction");
        QCOMPARE(state(), after);
        QCOMPARE(isEnabled("redoAction"), false);
        QVERIFY(QFile::exists(path(u"in/3.tif"_s)));
    }

    void takesBackEveryStep()
    {
        QVERIFY(fill());
        QStringList states { state() };
        const std::function<void()> steps[] = {
            [this] { QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, placeOf(1, 0)); },
            [this] { sort(FileTableModel::Pages, Qt::DescendingOrder); },
            [this] {
                table().highlightRows({ 1, 2 });
                press("moveDownButton");
            },
            [this] { QTest::keyClick(&table(), Qt::Key_Space); },
            [this] { press("removeBtn"); },
            [this] { press("invertCheckAction"); },
        };
        for (const auto& step : steps) {
            step();
            QVERIFY2(state() != states.last(), qPrintable(state()));
            states.append(state());
        }
        for (int round = 0; round < 2; ++round) {
            for (auto each = states.crbegin() + 1; each != states.crend(); ++each) {
                press("undoAction");
                QCOMPARE(state(), *each);
            }
            QVERIFY(!isEnabled("undoAction"));
            for (auto each = states.cbegin() + 1; each != states.cend(); ++each) {
                press("redoAction");
                QCOMPARE(state(), *each);
            }
            QVERIFY(!isEnabled("redoAction"));
        }
        QCOMPARE(find<QAction>("undoAction").text(), u"&Undo Invert Ticks of 4 File(s)"_s);
        for (int i = 0; i < 110; ++i)
            press("invertCheckAction");
        int count = 0;
        for (; isEnabled("undoAction"); ++count)
            press("undoAction");
        QCOMPARE(count, 100); // a step may hold the whole list
    }

    void takesBackInSpiteOfLoadsAndRuns()
    {
        QVERIFY(fill());
        sort(FileTableModel::Name, Qt::DescendingOrder);
        QCOMPARE(order(), u"5 4 3 2 1 0"_s);
        table().highlightRows({ 0, 1, 2 }); // 5 4 3
        press("removeBtn");
        QVERIFY(openFiles({ { "4.tif", 4 }, { "9.tif", 1 } }));
        QCOMPARE(order(), u"9 4 2 1 0"_s);
        press("undoAction"); // 4 is there already
        QCOMPARE(highlightedText(), u"0 2"_s);
        QVERIFY(openFiles({ { "9.tif", 1 } })); // nothing came, so nothing is sorted
        QCOMPARE(order(), u"5 9 3 4 2 1 0"_s);
        press("redoAction");
        QCOMPARE(order(), u"9 4 2 1 0"_s);
        press("undoAction");
        press("undoAction"); // the sort; what came later is last
        QCOMPARE(order(), u"0 1 2 3 5 9 4"_s);
        QVERIFY(!isEnabled("undoAction"));

        // Files that a run has converted and taken off the list come back, too. Others stay.
        QVERIFY(open({ sample(u"turned.tif"_s) }));
        settings().setOutputFolderPath(outFolder());
        press("clearProcessedFilesBtn");
        press("convertBtn");
        QVERIFY(!isEnabled("undoAction"));
        QVERIFY(waitForRun());
        press("closeProcessBtn");
        QCOMPARE(order(), u"0 1 2 3 5 9 4"_s);
        press("undoAction");
        QCOMPARE(order(), u"0 1 2 3 5 9 4 turned"_s);
        const auto status = [this] { return controller().tableModel().status(7).text(); };
        QCOMPARE(status(), u"Done"_s);
        table().highlightRows({ 7 });
        press("removeBtn");
        QVERIFY(open({ sample(u"turned.tif"_s) })); // which may be another file by now
        QCOMPARE(order() + status(), u"0 1 2 3 5 9 4 turned"_s);

        start(); // what came later is last, though it was sorted before the others
        QVERIFY(fill());
        sort(FileTableModel::Name, Qt::DescendingOrder);
        QVERIFY(openFiles({ { "9.tif", 1 } }));
        QCOMPARE(order(), u"9 5 4 3 2 1 0"_s);
        press("undoAction");
        QCOMPARE(order(), u"0 1 2 3 4 5 9"_s);
    }

    void opensTheContextMenu()
    {
        QVERIFY(fill());
        table().hideColumn(FileTableModel::Status);
        emit find<QMenu>("menuColumns").aboutToShow();
        QVERIFY(!find<QMenu>("menuColumns").actions().first()->isChecked());
        table().showColumn(FileTableModel::Status);
        QMenu& menu = find<QMenu>("filesContextMenu");
        const auto click
            = [this] { QTest::mouseClick(table().viewport(), Qt::RightButton, {}, placeOf(2, 1)); };
        click();
        QVERIFY(!menu.isVisible()); // nothing was highlighted
        table().highlightRows({ 2, 3 });
        click();
        QVERIFY(menu.isVisible());
        QCOMPARE(table().highlightedRows(), (QList<int> { 2, 3 }));
        const QRect item = menu.actionGeometry(&find<QAction>("uncheckSelectionAction"));
        QTest::mouseClick(&menu, Qt::LeftButton, {}, item.center());
        QCOMPARE(state(), u"0 1 2- 3- 4 5"_s);
    }

    // What is no choice must not reach a run, and a choice must not get lost on the way of a list.
    void choosesPagesInTheRow()
    {
        QVERIFY(fill());
        const QPersistentModelIndex cell
            = table().model()->index(2, FileTableModel::PagesToConvert);
        const auto type = [&](const QString& text) {
            table().highlightRows({ 2 });
            QTest::keyClick(&table(), Qt::Key_F2);
            auto& field = childOf<QLineEdit>(*table().viewport());
            field.setText(text);
            return &field;
        };
        alerts().setNextAnswer(0);
        QTest::keyClick(type(u"3-1"_s), Qt::Key_Return);
        QTRY_VERIFY(alerts().lastText().startsWith(u"Pages '3-1' has '3-1', which is none "_s));
        QCOMPARE(cell.data().toString() + u'/' + state(), u"/0 1 2 3 4 5"_s);
        type(u" 1,-1 "_s);
        QVERIFY(table().endEditing()); // as Convert does
        QVERIFY(table().endEditing()); // nothing is being typed
        QTRY_VERIFY(table().viewport()->findChild<QLineEdit*>() == nullptr);
        alerts().setNextAnswer(0);
        type(u"0"_s);
        QVERIFY(!table().endEditing());
        QCOMPARE(cell.data(), QVariant(u"1,-1"_s));
        table().hideColumn(FileTableModel::PagesToConvert);
        QTest::keyClick(&table(), Qt::Key_F2);
        QTRY_VERIFY(table().viewport()->findChild<QLineEdit*>() == nullptr); // typed unseen
        table().showColumn(FileTableModel::PagesToConvert);
        chooser().setNextChoice(urlsOf({ path(u"list.txt"_s) }));
        QVERIFY(load([this] { press("exportAction"); }));
        const QString list = QString::fromUtf8(bytesOf(path(u"list.txt"_s)));
        QVERIFY(list.section(u'\n', 0, 0).endsWith(u"\tLocation\tPages To Convert"_s));
        press("undoAction");
        QCOMPARE(cell.data(), QVariant(u""_s));
        press("redoAction");
        alerts().setNextAnswer(0);
        press("removeAllFilesButton");
        QCOMPARE(state(), QString());
        press("importAction");
        auto& sheet = find<ImportFilesWindowController>();
        childOf<QAbstractButton>(sheet, "importFromTextBtn").click();
        childOf<QPlainTextEdit>(sheet, "importText").setPlainText(list);
        QVERIFY(load([&] { sheet.importAction(); }));
        QCOMPARE(table().model()->index(2, FileTableModel::PagesToConvert).data(),
                 QVariant(u"1,-1"_s));
    }

    // A row that nobody sees must not be touched, and whoever does not see it must be told that it
    // is converted.
    void leavesAloneWhatTheFilterHides_data()
    {
        // After typing pages>2 the files 3, 4 and 5 are shown, of which 4 and 5 are highlighted.
        addTextRows(R"(
            selectAllRowsAction uncheckSelectionAction | 0 1 2 3- 4- 5- | 3 4 5
            deselectAllRowsAction removeSelectedAction | 0 1 2 4 5      |
            Del                                        | 0 1 2 3        |
            Space                                      | 0 1 2 3 4- 5-  | 4 5
            uncheckAllAction                           | 0- 1- 2- 3- 4- 5- | 4 5
            moveUpAction                               | 0 1 2 3 4 5    | 4 5
            cutAction pasteAction                      | 0 1 2 3 4 5    |)");
    }
    void leavesAloneWhatTheFilterHides()
    {
        const auto [ways, after, highlightedAfter] = textRow<3>();
        QVERIFY(fill());
        table().highlightRows({ 0, 4, 5 });
        press("filterAction");
        auto& field = find<QLineEdit>("filterField");
        QCOMPARE(window().focusWidget(), &field);
        QTest::keyClicks(&field, u"pages>2"_s);
        QTRY_COMPARE(table().model()->rowCount(), 3);
        QCOMPARE(text("shownLabel"), u"3 of 6 shown; all ticked ones convert"_s);
        QCOMPARE(highlightedText(), u"4 5"_s);
        QVERIFY(!isEnabled("moveUpAction") && !isEnabled("moveDownButton"));
        press("filterAction");
        QCOMPARE(field.selectedText(), u"pages>2"_s);
        QTest::keyClick(&field, ways.startsWith(u"Del"_s) ? Qt::Key_Down : Qt::Key_Return);
        QCOMPARE(window().focusWidget(), &table());
        const QStringList steps = ways.split(u' ');
        if (ways.startsWith(u"cut"_s)) {
            press("cutAction");
            QCOMPARE(state(), u"0 1 2 3"_s);
            QVERIFY(load([this] { press("pasteAction"); }));
        } else {
            for (const QString& way : steps)
                pressOrType(way);
        }
        QCOMPARE(state(), after);
        QCOMPARE(highlightedText(), highlightedAfter);
        QTRY_COMPARE(text("shownLabel").section(u';', 0, 0),
                     u"%1 of %2 shown"_s.arg(table().model()->rowCount()).arg(names().size()));
        QTest::keyClick(&table(), Qt::Key_Escape);
        QCOMPARE(table().model()->rowCount(), int(after.split(u' ').size()));
        QCOMPARE(field.text() + text("shownLabel"), QString());
        press("undoAction");
        if (isEnabled("redoAction"))
            QCOMPARE(state(), u"0 1 2 3 4 5"_s);
    }

    void narrowsTheListToWhatFailed()
    {
        QVERIFY(open(sixFiles() + QStringList { path(u"gone.tif"_s), sample(u"turned.tif"_s) }));
        const auto hasButton = [this](const char* name) { return find(name).isVisible(); };
        QTRY_COMPARE(find<QAbstractButton>("filterFailedButton").text(), u"Failed (2)"_s);
        QVERIFY(hasButton("filterAllButton") && !hasButton("filterNotReachedButton"));
        press("filterFailedButton");
        QTRY_COMPARE(table().model()->rowCount(), 2);
        QHash<QString, RowStatus> statuses;
        using State = RowStatus::State;
        const State states[] { State::Failed, State::Done, State::Warning, State::NotReached };
        for (int row = 1; row < 5; ++row)
            statuses.insert(controller().files().at(row)->path(),
                            { states[row - 1], 0, 1 }); // of one page
        controller().tableModel().setStatuses(statuses);
        QTRY_COMPARE(table().model()->rowCount(), 3); // follows the run
        QVERIFY(hasButton("filterNotReachedButton") && hasButton("filterWarningsButton"));
        const auto isChosen
            = [this](const char* name) { return find<QAbstractButton>(name).isChecked(); };
        QCOMPARE(find<QAbstractButton>("filterFailedButton").text(), u"Failed (3)"_s); // not 5
        QVERIFY(isChosen("filterFailedButton") && !isChosen("filterAllButton"));
        QCOMPARE(text("shownLabel"), u"3 of 8 shown; all ticked ones convert"_s);
        press("filterAllButton");
        QVERIFY(isChosen("filterAllButton") && !isChosen("filterFailedButton"));
        QCOMPARE(table().model()->rowCount(), 8);
        press("filterFailedButton");
        QTRY_COMPARE(table().model()->rowCount(), 3);
        find<QLineEdit>("filterField").setText(u"1"_s);
        QTRY_COMPARE(table().model()->rowCount(), 1); // of the group
        for (const QEvent::Type type : { QEvent::ShortcutOverride, QEvent::KeyPress }) {
            QKeyEvent escape(type, Qt::Key_Escape, {});
            QCoreApplication::sendEvent(&table(), &escape);
            QCOMPARE(table().model()->rowCount(), type == QEvent::KeyPress ? 8 : 1);
        }
        QVERIFY(isChosen("filterAllButton"));
        press("filterFailedButton");
        QTRY_COMPARE(table().model()->rowCount(), 3);
        // One that a run tells of may be hidden.
        emit controller().processViewPanel()->fileRequested(controller().files().at(2)->path());
        QCOMPARE(highlightedText() + u' ' + QString::number(table().model()->rowCount()), u"2 8"_s);
        press("tickFailedAction");
        QCOMPARE(state(), u"0 1 2- 3- 4 5- gone turned-"_s);
        press("removeConvertedAction");
        QCOMPARE(state(), u"0 1 4 5- gone turned-"_s);
        press("undoAction");
        press("undoAction");
        QCOMPARE(state(), u"0 1 2 3 4 5 gone turned"_s);
        alerts().setNextAnswer(0);
        press("removeAllFilesButton");
        QTRY_VERIFY(!hasButton("filterFailedButton")); // nothing is left to be narrowed to
        QVERIFY(!hasButton("filterAllButton") && !find("filterBar").isVisible());
        QVERIFY(open({ sample(u"turned.tif"_s) }));
        QCOMPARE(table().model()->rowCount(), 1);
    }

    void tellsWhatALoadHasAdded()
    {
        auto& line = find<QLabel>("additionLabel");
        const QString twice = path(u"in/../in/0.tif"_s);
        QVERIFY(open(sixFiles() + QStringList { twice }));
        QCOMPARE(line.text(), u"6 added, 1 already there"_s);
        putBytes(path(u"in/readme.txt"_s), "");
        QVERIFY(load([this] { emit table().filesDropped(urlsOf({ path(u"in"_s) })); }));
        QCOMPARE(line.text(), u"0 added, 6 already there, 1 left out"_s);
        QVERIFY(line.isVisible() && line.toolTip().contains(u"not named .tif"_s));
        press("checkAllAction"); // changes nothing
        QVERIFY(line.isVisible());
        for (const char* command : { "moveDownButton", "removeBtn", "undoAction" }) {
            table().highlightRows({ 0 });
            press(command);
            QVERIFY2(!line.isVisible() && line.text().isEmpty(), command);
            QGuiApplication::clipboard()->setText(u"no path"_s);
            press("pasteAction");
            QVERIFY(line.isVisible());
        }
        press("uncheckAllAction");
        QVERIFY(!line.isVisible());
        QGuiApplication::clipboard()->setText(u"no path"_s);
        press("pasteAction");
        QCOMPARE(line.text(), u"The clipboard has no files and no paths of files"_s);
        connect(&controller(), &PagestackAppDelegate::isProcessingChanged, &line,
                [&](bool isProcessing) {
                    if (isProcessing)
                        QVERIFY(line.text().isEmpty()); // what was before is told no more
                });
        QVERIFY(load([this] { emit table().filesDropped(urlsOf({ path(u"in"_s) })); }));
        QVERIFY(!line.text().isEmpty());
    }

    void movesDraggedRowsAndBack()
    {
        QVERIFY(fill());
        sort(FileTableModel::Name, Qt::DescendingOrder);
        table().highlightRows({ 0, 3 }); // 5 and 2
        for (const auto& [target, after] :
             { std::pair(0, "5 2 4 3 1 0"), std::pair(2, "4 5 2 3 1 0"),
               std::pair(4, "4 3 5 2 1 0"), std::pair(6, "4 3 1 0 5 2") }) {
            emit table().dragRequested(target);
            QCOMPARE(order(), QLatin1String(after));
            QVERIFY(table().currentSortOrders().isEmpty()); // the next load would undo it
            press("undoAction");
            QCOMPARE(order(), u"5 4 3 2 1 0"_s);
            QCOMPARE(table().currentSortOrders().size(), 1);
        }
        press("moveDownAction"); // by hand as well
        QVERIFY(table().currentSortOrders().isEmpty());
        press("undoAction");
        QCOMPARE(table().currentSortOrders().size(), 1);
    }

    void exportsTheList()
    {
        QVERIFY(fill());
        const auto file = controller().files().at(1);
        QFile source(path(u"in/1.tif"_s));
        QVERIFY(source.open(QIODevice::ReadWrite));
        QVERIFY(source.setFileTime(QDateTime({ 2001, 2, 3 }, {}), QFile::FileAccessTime));
        QFile::remove(path(u"in/2.tif"_s));
        press("exportToolbarItem");
        QFileDialog& dialog = find<QFileDialog>();
        const QString proposal = dialog.selectedFiles().value(0);
        static const QRegularExpression name(u"/Export \\d\\d-\\w{3}-\\d{4} \\d\\d-\\d\\d-\\d\\d "
                                             "[AP]M.txt$"_s);
        QVERIFY2(name.match(proposal).hasMatch(), qPrintable(proposal));
        dialog.reject();
        QCOMPARE(chooser().lastMessage(), u"Export List To Tab Delimited Text File :"_s);
        chooser().setNextChoice(urlsOf({ path(u"list.txt"_s) }));
        QVERIFY(load([this] { press("exportAction"); }));
        const QStringList lines = QString::fromUtf8(bytesOf(path(u"list.txt"_s))).split(u'\n');
        QCOMPARE(lines.size(), 8);
        QVERIFY(lines.last().isEmpty());
        QCOMPARE(lines.first().split(u'\t').join(u'|'),
                 u"Name|Pages|Size|Type|Modified Date|Accessed Date|Created Date|Location"_s);
        QStringList fields { u"1.tif"_s, u"1"_s, file->sizeInKB(), u"tif"_s };
        for (const QDateTime& date :
             { file->dateModified(), file->dateAccessed(), file->dateCreated() })
            fields.append(date.isValid() ? date.toUTC().toString(u"yyyy-MM-dd HH:mm:ss '+0000'"_s)
                                         : u"(null)"_s);
        QCOMPARE(lines.at(2).split(u'\t'), fields + QStringList(path(u"in"_s)));
        QCOMPARE(lines.at(3).split(u'\t').sliced(4, 3), QStringList(3, u"(null)"_s));

        // A folder that takes no file: the system log alone tells.
        chooser().setNextChoice(urlsOf({ path(u"nowhere/list.txt"_s) }));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^Error in \\(export\\) : "_s));
        QVERIFY(load([this] { press("exportAction"); }));
        QCOMPARE(alerts().askedCount(), 0);
    }

    void finds()
    {
        QVERIFY(openFiles({ { "Invoice 1.tif", 1 }, { "letter.tif", 1 }, { "invoice 2.tif", 1 } }));
        auto& bar = find("findBar");
        auto& field = find<QLineEdit>("searchField");
        QVERIFY(!bar.isVisible());
        press("searchBtn");
        QVERIFY(bar.isVisible());
        QCOMPARE(window().focusWidget(), &field);
        QTest::keyClicks(&field, u"INV"_s);
        QTRY_COMPARE(table().highlightedRows(), (QList<int> { 0, 2 }));
        QCOMPARE(totals(), u"3, 3, 3, 3"_s); // what is converted is as it was
        QCOMPARE(text("foundLabel"), u"1 of 2"_s);
        const auto row = [this] { return table().currentIndex().row(); };
        for (const auto& [keys, found] :
             { std::pair(Qt::ShiftModifier, 0), std::pair(Qt::NoModifier, 2) }) {
            table().setCurrentIndex(table().model()->index(1, 1));
            QTest::keyClick(&field, Qt::Key_Return, keys);
            QCOMPARE(row(), found);
        }
        press("findNextButton");
        QCOMPARE(text("foundLabel"), u"1 of 2"_s);
        press("findPreviousButton");
        QCOMPARE(row(), 2);
        find<QLineEdit>("filterField").setText(u"2"_s);
        QTRY_COMPARE(table().model()->rowCount(), 1);
        press("findNextButton"); // none that is hidden
        QCOMPARE(text("foundLabel"), u"1 of 1"_s);
        find<QLineEdit>("filterField").clear();
        QTRY_COMPARE(table().model()->rowCount(), 3);
        press("searchBtn");
        QCOMPARE(field.selectedText(), u"INV"_s);
        field.deselect();
        QTest::keyClicks(&field, u"x"_s);
        QTRY_COMPARE(text("foundLabel"), u"No file has it"_s);
        press("findNextButton");
        QCOMPARE(text("foundLabel"), u"No file has it"_s);
        field.clear();
        QTRY_COMPARE(text("foundLabel"), u""_s);
        field.setText(u"none"_s);
        press("findNextButton"); // before the pause is over
        QCOMPARE(text("foundLabel"), u"No file has it"_s);
        QVERIFY(table().highlightedRows().isEmpty());
        press("findCloseButton");
        QVERIFY(!bar.isVisible());
        press("searchBtn");
        for (const QEvent::Type type : { QEvent::ShortcutOverride, QEvent::KeyPress }) {
            QKeyEvent escape(type, Qt::Key_Escape, {});
            QCoreApplication::sendEvent(&bar, &escape);
            QCOMPARE(bar.isVisible(), type != QEvent::KeyPress);
        }
        QCOMPARE(window().focusWidget(), &table());
        QTest::keyClicks(&table(), u"le"_s); // by the beginning of the name, in the table itself
        QCOMPARE(row(), 1);
        QTest::keyClick(&table(), Qt::Key_Tab);
        QVERIFY(window().focusWidget() != &table()); // no key stays in a table
        QCOMPARE(rowsWithName(controller().files().items(), u"in/INVOICE"_s),
                 (QList<int> { 0, 2 }));
    }

    // Whoever has scrolled away would not see what a command has done, or found.
    void bringsWhatItActsOnIntoView()
    {
        QVERIFY(open({ manyFiles() }));
        press("searchBtn");
        auto& field = find<QLineEdit>("searchField");
        field.setText(u"398"_s);
        QTRY_COMPARE(text("foundLabel"), u"1 of 1"_s);
        const QString path = controller().files().at(298)->path();
        const std::function<void()> steps[] = {
            [this] { press("findNextButton"); },
            [&] {
                field.clear();
                QTRY_COMPARE(text("foundLabel"), QString());
                table().setCurrentRow(298);
                table().scrollToTop();
                field.setText(u"398"_s);
                QTRY_COMPARE(text("foundLabel"), u"1 of 1"_s);
            },
            [&] { emit controller().processViewPanel()->fileRequested(path); },
            [this] {
                find<QLineEdit>("filterField").setText(u"9"_s);
                QTRY_VERIFY(table().model()->rowCount() < 300);
            },
            [this] { QTest::keyClick(&table(), Qt::Key_Escape); },
            [this] { press("moveUpAction"); },
            [this] { press("moveDownAction"); },
            [this] { press("undoAction"); },
            [this] { press("redoAction"); },
        };
        int number = 0;
        for (const auto& step : steps) {
            ++number;
            table().scrollToTop();
            step();
            const int row = int(names().indexOf(u"398.tif"_s));
            const QRect place
                = table().visualRect(table().model()->index(table().shownRows().placeOf(row), 1));
            QVERIFY2(table().viewport()->rect().intersects(place),
                     qPrintable(QString::number(number)));
            QCOMPARE(table().highlightedRows(), QList<int> { row });
        }
        emit controller().processViewPanel()->fileRequested(u"/none.tif"_s);
        QCOMPARE(table().highlightedRows(), QList<int> { 298 });
    }

    // A highlight of many pieces is put aside during a load, and may not come back.
    void keepsAHighlightInPiecesThroughALoad()
    {
        QVERIFY(open({ manyFiles() }));
        QList<int> rows;
        for (int row = 0; row < 300; row += 2)
            rows.append(row);
        table().highlightRows(rows);
        table().setCurrentRow(44);
        qsizetype meanwhile = -1;
        connect(&controller().tableModel(), &QAbstractItemModel::rowsInserted, &window(),
                [&] { meanwhile = table().highlightedRows().size(); });
        QVERIFY(openFiles({ { "0.tif", 1 } }));
        QCOMPARE(meanwhile, 0);
        QCOMPARE(table().highlightedRows(), rows);
        QCOMPARE(table().currentRow(), 44);
        table().highlightRows({ 0, 2 });
        QVERIFY(openFiles({ { "1.tif", 1 } }));
        QCOMPARE(meanwhile, 2); // as it is while there are few
        QCOMPARE(highlightedText(), u"0 2"_s);
    }

    // Pages that a list chooses for a file that is there already.
    void choosesPagesOfListedFiles()
    {
        QVERIFY(fill());
        press("importAction");
        auto& sheet = find<ImportFilesWindowController>();
        childOf<QAbstractButton>(sheet, "importFromTextBtn").click();
        childOf<QPlainTextEdit>(sheet, "importText")
            .setPlainText(u"%1\t2\n%2\n"_s.arg(path(u"in/5.tif"_s), path(u"in/4.tif"_s)));
        QVERIFY(load([&] { sheet.importAction(); }));
        QStringList choices;
        for (const auto& item : controller().files().items())
            choices.append(item->pageChoice());
        QCOMPARE(choices.join(u'|'), u"|||||2"_s);
        QCOMPARE(totals(), u"6, 6, 11, 15"_s); // one page of the last
        QCOMPARE(find<QLabel>("additionLabel").text(), u"0 added, 2 already there"_s);
    }

    void sortsDatesBesideTheWindow_data()
    {
        // A load sorts at its end; the next start has the columns that a load was to sort by.
        addTextRows(R"(
            sort |        | yes
            sort | Cancel |
            sort | close  |
            load |        | yes
            load | Cancel |
            load | close  | yes)");
    }

    // The files are on a computer that answers only when it is told to.
    void sortsDatesBesideTheWindow()
    {
        const auto [begin, ending, hasArrow] = textRow<3>();
        QSemaphore questions;
        QSemaphore answers;
        start([&](const FileItem& item) {
            questions.release();
            answers.acquire();
            FileDates dates;
            dates.modified = QDateTime({ 2020, 1, 1 + item.pages() }, {});
            return dates;
        });
        const auto atEnd = qScopeGuard([&] {
            answers.release(100);
            end();
        });
        for (const int column : { FileTableModel::DateModified, FileTableModel::DateCreated,
                                  FileTableModel::DateAccessed })
            table().hideColumn(column); // nothing but sorts asks
        if (begin == u"load"_s) {
            sort(FileTableModel::DateModified, Qt::DescendingOrder);
            controller().openPaths(sixFiles());
            QTRY_COMPARE_WITH_TIMEOUT(questions.available(), 1, longMs);
        } else {
            QVERIFY(fill());
            table().setFocus();
            sort(FileTableModel::DateModified, Qt::DescendingOrder);
        }
        QVERIFY(controller().isProcessing());
        for (const char* name : { "mainTableView", "addFilesBtn", "convertBtn" })
            QVERIFY2(!isEnabled(name), name);
        questions.acquire();
        QSignalSpy ended(&controller(), &PagestackAppDelegate::readyToTerminate);
        if (ending == u"Cancel"_s)
            press("cancelBtn");
        else if (ending == u"close"_s)
            window().close();
        const bool isWhole = ending.isEmpty();
        answers.release(isWhole ? 6 : 1);
        QTRY_VERIFY_WITH_TIMEOUT(table().isEnabled(), longMs);
        QCOMPARE(order(), isWhole ? u"5 4 3 2 1 0"_s : u"0 1 2 3 4 5"_s);
        QCOMPARE(questions.available(), isWhole ? 5 : 0); // nothing more was read
        QCOMPARE(table().horizontalHeader()->sortIndicatorSection(),
                 hasArrow.isEmpty() ? -1 : int { FileTableModel::DateModified });
        QCOMPARE(window().focusWidget(), &table());
        if (ending == u"close"_s)
            QVERIFY(ended.size() == 1 || ended.wait(longMs));
    }

    void actsOnTheHighlightedFiles()
    {
        QVERIFY(fill());
        for (const auto& [all, first] :
             { std::pair("selectAllButton", "deselectAllButton"),
               std::pair("selectAllRowsAction", "deselectAllRowsAction") }) {
            press(all);
            QCOMPARE(table().highlightedRows().size(), 6);
            press(first);
            QCOMPARE(table().highlightedRows(), QList<int> { 0 });
        }
        table().highlightRows({ 1, 4 });
        press("uncheckSelectionAction");
        const QList<QUrl> urls = urlsOf({ path(u"in/1.tif"_s), path(u"in/4.tif"_s) });
        for (const char* button : { "openFileButton", "openEnclosedFolderButton", "getInfoButton" })
            press(button);
        QCOMPARE(desktop().opened, urls);
        QCOMPARE(desktop().revealed, urls);
        QCOMPARE(desktop().informed, urls);
        desktop().isRefusing = true;
        for (const auto& [command, line] :
             { std::pair("helpAction", "Error in [helpAction:] : refused"),
               std::pair("openFileAction", "Error in (openFiles) : refused"),
               std::pair("revealAction", "Error in (openEnclodingFolder) : refused"),
               std::pair("getInfoAction", "Error in (getInfo) : refused") }) {
            QTest::ignoreMessage(QtWarningMsg, line);
            press(command);
        }
    }

    void namesAFileByItsFolders()
    {
        QCOMPARE(
            informationScript(u"/a.tif"_s),
            u"tell application \"Finder\"\nactivate \nopen information window of document file "
            "\"a.tif\" of startup disk\nend tell"_s);
        QVERIFY(
            informationScript(u"/%@/%2 ä/%1.tif"_s)
                .contains(u" file \"%1.tif\" of folder \"%2 ä\" of folder \"%@\" of startup "_s));
        // A name that could become a command is not put into the script.
        QVERIFY(isSafeInScript(u"/Büro 1/it's $(a) `b` %1\n.tif"_s));
        QVERIFY(!isSafeInScript(u"/a\" & (do shell script \"id\") & \".tif"_s));
        QVERIFY(!isSafeInScript(u"/folder\\/a.tif"_s)); // would take the closing quote along
    }

    // Pictures are asked for again at the next start, and one that cannot be made is no hole in the
    // row.
    void showsThumbnailsInTheRows()
    {
        QVERIFY(open({ sample(u"gray-photo.tif"_s) }));
        const int height = table().rowHeight(0);
        press("thumbnailsAction");
        start();
        QVERIFY(open({ sample(u"gray-photo.tif"_s) }));
        QVERIFY(table().rowHeight(0) > height);
        const QModelIndex name = table().model()->index(0, FileTableModel::Name);
        const auto picture = [&] { return name.data(Qt::DecorationRole).value<QImage>(); };
        QTRY_VERIFY(!picture().isNull());
        QVERIFY(picture().width() <= 40 && picture().height() <= 40);
        press("thumbnailsAction");
        QVERIFY(!name.data(Qt::DecorationRole).isValid());
        QCOMPARE(table().rowHeight(0), height);
    }

private:
    /// A control, or a key on the table.
    void pressOrType(const QString& way) const
    {
        const QKeySequence keys(way);
        if (way.endsWith(u"Button"_s) || way.endsWith(u"Btn"_s) || way.endsWith(u"Action"_s))
            press(qPrintable(way));
        else
            QTest::keyClick(&table(), keys[0].key(), keys[0].keyboardModifiers());
    }
    void sort(int column, Qt::SortOrder order) const
    {
        table().horizontalHeader()->setSortIndicator(column, order);
    }
    QString state() const
    {
        QStringList names;
        for (const auto& item : controller().files().items())
            names.append(item->name().chopped(4) + (item->isSelected() ? u""_s : u"-"_s));
        return names.join(u' ');
    }
    QString highlightedText() const
    {
        QStringList rows;
        for (const int row : table().highlightedRows())
            rows.append(QString::number(row));
        return rows.join(u' ');
    }
};

QTEST_MAIN(ListTest)

#include "ListTest.moc"
