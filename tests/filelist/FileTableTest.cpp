#include "filelist/CustomTableView.h"
#include "filelist/FileTableModel.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"

#include <QAbstractItemModelTester>
#include <QDropEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QSemaphore>

#include <numeric>
#include <random>

class FileTableTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_files = FileList();
        m_model = std::make_unique<FileTableModel>(m_files);
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        m_table = std::make_unique<CustomTableView>();
        m_table->setModel(m_model.get());
        FileList::Items items;
        for (const auto* name : { "/one/Delta.tif", "/one/alpha.tif", "/two/charlie.tif",
                                  "/two/Bravo.tif", "/two/echo.tiff" })
            items.append(itemOf(QLatin1String(name)));
        for (const auto& item : std::as_const(items))
            QVERIFY(m_model->append(item));
        QVERIFY(!m_model->append(items.first()));
        m_table->resize(900, 400);
        m_table->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_table.get()));
    }
    void cleanup()
    {
        m_table.reset();
        m_tester.reset();
        m_model.reset();
    }

    void knowsItsColumns()
    {
        const QModelIndex name = m_model->index(4, FileTableModel::Name);
        QCOMPARE(name.data(), QVariant(u"echo.tiff"_s));
        QVERIFY(name.data(Qt::ToolTipRole).toString().startsWith(u"/two/echo.tiff\n"_s));
        QCOMPARE(m_model->index(4, FileTableModel::Pages).data(), QVariant(0));
        QCOMPARE(m_model->objectValue(-1, u"name"_s), QVariant(u""_s));
        QCOMPARE(m_model->objectValue(0, u"isselected"_s), QVariant(true));
        for (int column = 0; column < FileTableModel::ColumnCount; ++column) {
            const SortOrder order = FileTableModel::sortOrder(column, Qt::AscendingOrder);
            QCOMPARE(FileTableModel::columnSortedBy(order.key), column);
            QCOMPARE(needsDates({ order }), FileTableModel::identifier(column).startsWith(u"date"));
        }
    }

    // A file that gives nothing must not look like one that was just added.
    void tellsTheStatusOfEachFile()
    {
        const TestFolder folder;
        putBytes(folder.path(u"text.tif"_s), "no picture");
        makeFile(folder.path(u"empty.tif"_s), 0);
        putBytes(folder.path(u"ring.tif"_s), rawTiff({}, { { 256, 1 } }, { 0 }));
        makeFile(folder.path(u"whole.tif"_s), 2);
        for (const auto* name : { "text.tif", "empty.tif", "ring.tif", "whole.tif" })
            m_model->append(itemOf(folder.path(QLatin1String(name))));
        m_model->removeItems({ 1, 2, 3, 4 });
        const auto shown = [this](int role) {
            QStringList lines;
            for (int row = 0; row < m_files.count(); ++row)
                lines.append(m_model->index(row, FileTableModel::Status).data(role).toString());
            return lines.join(u'|').replace(u'\n', u':');
        };
        QCOMPARE(shown(Qt::DisplayRole), u"Missing|Unreadable|Unreadable|Warning|"_s);
        QCOMPARE(
            shown(Qt::ToolTipRole),
            u"Missing:cannot open the file: No such file or directory|Unreadable:it is no TIFF "
            "file|Unreadable:the file is empty|Warning:the chain of pages leads back to page 1 "
            "after page 1|"_s);
        int changes = 0; // dates come, too
        connect(m_model.get(), &FileTableModel::dataChanged, this, [&](const QModelIndex& first) {
            changes += first.column() == FileTableModel::Status ? 1 : 0;
        });
        const QString whole = folder.path(u"whole.tif"_s);
        for (int page = 1; page <= 50; ++page)
            m_model->setStatus(whole, { RowStatus::State::Converting, page, 50 });
        m_model->setStatus(u"/not/in/the/list.tif"_s, { RowStatus::State::Done });
        QTRY_COMPARE(changes, 1); // a run with many pages would draw all the time
        QCOMPARE(m_model->index(4, FileTableModel::Status).data(), QVariant(u"Page 50 of 50"_s));
        QVERIFY(!m_model->statuses().isConverted(*m_files.at(4)));
        m_model->setStatuses({ { m_files.at(0)->path(), { RowStatus::State::Failed } },
                               { whole, { RowStatus::State::Done } } });
        QVERIFY(m_model->statuses().isConverted(*m_files.at(4)));
        QVERIFY(!m_model->statuses().isConverted(*m_files.at(3))); // its warning is none of a run's
        m_model->sort(FileTableModel::Status, Qt::DescendingOrder);
        QCOMPARE(shown(Qt::DisplayRole), u"Failed|Warning|Done|Unreadable|Unreadable"_s);
        m_model->disconnect(this);
    }

    // Files are read for those who want to see it only, and never to sort by it.
    void showsThePixelsOfFirstPages()
    {
        const QString photo
            = qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + u"/samples/gray-photo.tif"_s;
        m_model->append(itemOf(photo));
        const int row = m_files.count() - 1;
        QTRY_COMPARE(m_model->index(row, FileTableModel::Pixels).data().toString(),
                     u"240 x 160, 150 dpi"_s);
        QCOMPARE(m_model->index(0, FileTableModel::Pixels).data(), QVariant(QString()));
        QVERIFY(m_table->isColumnHidden(FileTableModel::Pixels));
        QSignalSpy sorts(m_table.get(), &CustomTableView::sortRequested);
        m_table->horizontalHeader()->setSortIndicator(FileTableModel::Name, Qt::AscendingOrder);
        m_table->horizontalHeader()->setSortIndicator(FileTableModel::Pixels, Qt::AscendingOrder);
        QCOMPARE(sorts.size(), 1);
        QCOMPARE(m_table->horizontalHeader()->sortIndicatorSection(), int(FileTableModel::Name));
    }

    // The file is on a computer that answers when it is told to.
    void waitsForNoDate()
    {
        QSemaphore answers;
        FileTableModel model(m_files, [&answers](const FileItem&) {
            answers.acquire();
            FileDates dates;
            dates.created = QDateTime({ 2020, 1, 31 }, { 16, 5 });
            return dates;
        });
        const auto end = qScopeGuard([&answers] { answers.release(100); });
        const QModelIndex cell = model.index(1, FileTableModel::DateCreated);
        QSignalSpy changes(&model, &FileTableModel::dataChanged);
        for (int look = 0; look < 3; ++look)
            QCOMPARE(cell.data().toString(), QString());
        answers.release();
        QVERIFY(changes.wait());
        QCOMPARE(cell.data().toString(), u"31-Jan-2020 4:05 PM"_s);
        QCOMPARE(model.index(1, FileTableModel::DateModified).data().toString(), QString());
        QCOMPARE(answers.available(), 0);
        model.index(2, FileTableModel::DateCreated).data(); // goes without having been read
    }

    void removesRowsInAnyOrderAndManyAtOnce()
    {
        QCOMPARE(m_model->removeItems({ 3, 0, 1, 3 }), 3);
        for (int i = 0; i < 200; ++i)
            m_model->append(itemOf(u"/many/%1.tif"_s.arg(i)));
        QSignalSpy removals(m_model.get(), &FileTableModel::rowsRemoved);
        m_table->highlightRows({ 1, 100, 101 });
        const FileList::Items before = m_files.items();
        QList<int> even;
        QList<FileList::Place> places;
        for (int row = 0; row < before.size(); row += 2) {
            even.append(row);
            places.append({ row, before.at(row) });
        }
        QCOMPARE(m_model->removeItems(even), 101);
        QCOMPARE(removals.size(), 1); // as many ranges would take as many signals
        QCOMPARE(m_files.at(1)->name(), u"1.tif"_s);
        QCOMPARE(m_table->highlightedRows(), (QList<int> { 0, 50 }));
        m_model->append(before.at(8)); // came back another way: not a second time
        m_model->insertItems(places);
        QCOMPARE(m_files.count(), before.size());
        QCOMPARE(m_files.items().first(8), before.first(8));
        QCOMPARE(m_files.at(10), before.at(10));
        QCOMPARE(m_table->highlightedRows().size(), 2);
        m_model->clear();
        QCOMPARE(m_model->rowCount(), 0);
    }

    void takesFilesThatAreDropped()
    {
        QMimeData files;
        files.setUrls({ QUrl(u"https://example.com/a.tif"_s), QUrl::fromLocalFile(u"/b.tif"_s),
                        QUrl::fromLocalFile(u"/folder"_s) });
        QMimeData text;
        text.setText(u"/b.tif"_s);
        QMimeData pages;
        pages.setUrls({ QUrl(u"https://example.com/a.tif"_s) });
        for (const QObject* own :
             { static_cast<QObject*>(m_table.get()), static_cast<QObject*>(m_table->viewport()) })
            QVERIFY(!m_table->validateDrop(own, &files));
        QSignalSpy drops(m_table.get(), &CustomTableView::filesDropped);
        for (QMimeData* offer : { &text, &pages, &files }) {
            QDragEnterEvent enter({ 5, 5 }, Qt::CopyAction | Qt::MoveAction, offer, Qt::LeftButton,
                                  {});
            enter.setDropAction(
                Qt::MoveAction); // after which the other side would delete the files
            QCoreApplication::sendEvent(m_table->viewport(), &enter);
            QCOMPARE(enter.isAccepted(), offer == &files); // no other has a file
            QVERIFY(!enter.isAccepted() || enter.dropAction() == Qt::CopyAction);
            QDropEvent drop({ 5, 5 }, Qt::CopyAction, offer, Qt::LeftButton, {});
            QCoreApplication::sendEvent(m_table->viewport(), &drop);
        }
        QCOMPARE(drops.size(), 1);
        QCOMPARE(drops.first().first().value<QList<QUrl>>(), files.urls().sliced(1));
        QWidget window; // which a file may miss the table in
        m_table->setDropArea(window);
        QDragEnterEvent enter({ 5, 5 }, Qt::CopyAction, &files, Qt::LeftButton, {});
        QDropEvent drop({ 5, 5 }, Qt::CopyAction, &files, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &enter);
        QVERIFY(enter.isAccepted());
        QCoreApplication::sendEvent(&window, &drop);
        QCOMPARE(drops.size(), 2);
        QMimeData many; // to look at all would take long, and the last may be a folder
        many.setUrls(QList<QUrl>(2000, QUrl::fromLocalFile(u"/none.txt"_s)));
        QDragEnterEvent unseen({ 5, 5 }, Qt::CopyAction, &many, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &unseen);
        QVERIFY(unseen.isAccepted());
        m_table->setReadOnly(true);
        QCoreApplication::sendEvent(&window, &enter);
        QVERIFY(!enter.isAccepted());
        m_table->setDropArea(*m_table->viewport());
    }

    // Whatever happens to the list, the table must show what the filter leaves and keep the
    // highlight with its files: a command would else act on others.
    void showsWhatAFilterLeaves()
    {
        const ShownRows& shown = m_table->shownRows();
        const QAbstractItemModelTester tester(
            m_table->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        std::mt19937 random(7);
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(std::max(1, limit)));
        };
        const auto passes = [](const FileItem& item) { return item.name().contains(u'7'); };
        for (int i = 0; i < 150; ++i)
            m_model->append(itemOf(u"/many/%1.tif"_s.arg(i)));
        bool isFiltered = false;
        for (int step = 0; step < 300; ++step) {
            FileList::Items highlighted;
            for (const int row : m_table->highlightedRows())
                highlighted.append(m_files.at(row));
            const int act = below(6);
            if (act == 0) {
                m_model->append(itemOf(u"/more/%1.tif"_s.arg(step)));
            } else if (act == 1) {
                QList<int> rows;
                for (int i = 0; i < 3 && i < m_files.count(); ++i)
                    rows.append(below(m_files.count()));
                for (const int row : std::as_const(rows))
                    highlighted.removeAll(m_files.at(row));
                m_model->removeItems(rows);
            } else if (act == 2) {
                QList<int> order(m_files.count());
                std::iota(order.begin(), order.end(), 0);
                std::shuffle(order.begin(), order.end(), random);
                m_model->reorder(order);
            } else if (act == 3 && isFiltered) {
                m_table->showAllRows();
                isFiltered = false;
            } else if (act == 3) {
                std::vector<int> rows;
                for (int row = 0; row < m_files.count(); ++row)
                    if (passes(*m_files.at(row)))
                        rows.push_back(row);
                highlighted.removeIf([&](const auto& item) { return !passes(*item); });
                m_table->showRows(rows, passes);
                isFiltered = true;
            } else {
                const QList<int> rows
                    = ascending({ below(m_files.count()), below(m_files.count()) });
                m_table->highlightRows(rows);
                highlighted.clear();
                for (const int row : rows)
                    if (!isFiltered || passes(*m_files.at(row)))
                        highlighted.append(m_files.at(row));
            }
            QStringList names;
            QStringList expected;
            for (int place = 0; place < shown.rowCount(); ++place)
                names.append(shown.index(place, FileTableModel::Name).data().toString());
            for (const auto& item : m_files.items())
                if (!isFiltered || passes(*item))
                    expected.append(item->name());
            QCOMPARE(names, expected);
            QCOMPARE(m_table->highlightedRows(), m_files.rowsOf(highlighted));
        }
        m_table->showRows({}, passes);
        QCOMPARE(m_table->model()->headerData(1, Qt::Horizontal), QVariant(u"Name"_s));
    }

    // Rows that come into a group in a run must not move what the user reads.
    void keepsThePlaceWhileTheFilterFollows()
    {
        for (int i = 0; i < 300; ++i)
            m_model->append(itemOf(u"/many/%1.tif"_s.arg(i)));
        std::vector<int> rows;
        for (int row = 100; row < 300; ++row)
            rows.push_back(row);
        const auto all = [](const FileItem&) { return true; };
        m_table->showRows(rows, all);
        m_table->highlightRows({ 110 });
        m_table->verticalScrollBar()->setValue(80);
        const auto top = [this] { return m_table->shownRows().rowAt(m_table->rowAt(1)); };
        QCOMPARE(top(), 180);
        rows.insert(rows.begin(), { 20, 21, 22 });
        m_table->showRows(rows, all, CustomTableView::InView::TopRow);
        QCOMPARE(top(), 180);
        QCOMPARE(m_table->highlightedRows(), QList<int> { 110 });
    }

    // Each signal has the pages of the whole list counted.
    void choosesPagesOfManyFilesAtOnce()
    {
        QSignalSpy changes(m_model.get(), &FileTableModel::dataChanged);
        m_model->choosePages({ { m_files.at(1)->filePath(), u"1"_s },
                               { m_files.at(3)->filePath(), u"2-3"_s },
                               { QUrl::fromLocalFile(u"/none"_s), u"4"_s } });
        QCOMPARE(changes.size(), 1);
        QStringList choices;
        for (const auto& item : m_files.items())
            choices.append(item->pageChoice());
        QCOMPARE(choices.join(u'|'), u"|1||2-3|"_s);
    }

    void goesToTheEndsOfTheList()
    {
        const auto press = [this](int key, Qt::KeyboardModifiers keys) {
            QTest::keyClick(m_table.get(), static_cast<Qt::Key>(key), keys);
            return m_table->currentRow();
        };
        m_table->highlightRows({ 2 });
        QCOMPARE(press(Qt::Key_End, {}), 4);
        QCOMPARE(m_table->highlightedRows(), QList<int> { 4 });
        QCOMPARE(press(Qt::Key_Home, Qt::ControlModifier), 0);
        QCOMPARE(m_table->highlightedRows(), QList<int> { 0 });
        QCOMPARE(press(Qt::Key_End, Qt::ShiftModifier | Qt::ControlModifier), 4);
        QCOMPARE(m_table->highlightedRows().size(), 5);
    }

    void offersTheHighlightedFilesToOthers()
    {
        const std::unique_ptr<QMimeData> data(m_model->mimeData(
            { m_model->index(3, 0), m_model->index(3, 1), m_model->index(0, 1) }));
        QCOMPARE(data->urls(),
                 (QList<QUrl> { m_files.at(0)->filePath(), m_files.at(3)->filePath() }));
        QCOMPARE(m_model->supportedDragActions(), Qt::DropActions(Qt::LinkAction));
    }

    void remembersItsColumns()
    {
        m_table->setColumnWidth(FileTableModel::Name, 321);
        for (const int column : { FileTableModel::Name, FileTableModel::Type, FileTableModel::Pages,
                                  FileTableModel::Name })
            m_table->sortByColumn(column, Qt::DescendingOrder);
        const SortOrders orders = m_table->currentSortOrders();
        QCOMPARE(
            orders,
            (SortOrders { { u"name"_s, false }, { u"pages"_s, false }, { u"type"_s, false } }));
        auto& header = *m_table->horizontalHeader();
        const auto click = [&header](int column, Qt::KeyboardModifiers keys) {
            const int x = header.sectionViewportPosition(column) + header.sectionSize(column) / 2;
            QTest::mouseClick(header.viewport(), Qt::LeftButton, keys, { x, 5 });
        };
        click(FileTableModel::Pages, Qt::ControlModifier); // turned round where it is
        click(FileTableModel::Size, Qt::ShiftModifier); // comes last
        QCOMPARE(header.sortIndicatorSection(), int { FileTableModel::Name });
        SortOrders longer = orders;
        longer[1].isAscending = true;
        longer.append({ u"size"_s, true });
        QCOMPARE(m_table->currentSortOrders(), longer);
        m_table->setSortOrders(orders);
        QMenu menu;
        m_table->fillColumnMenu(menu);
        menu.actions().first()->setChecked(false);
        QVERIFY(header.isSectionHidden(FileTableModel::Status));
        const QByteArray state = m_table->saveColumns();
        CustomTableView other;
        other.setModel(m_model.get());
        QVERIFY(!other.restoreColumns("nonsense") && !other.restoreColumns(state.first(30)));
        QVERIFY(other.restoreColumns(state));
        QCOMPARE(other.columnWidth(FileTableModel::Name), 321);
        QVERIFY(other.isColumnHidden(FileTableModel::Status));
        QCOMPARE(other.currentSortOrders(), orders);
        QVERIFY(!other.restoreColumns(QByteArray(state).replace(3, 1, "\3"))); // a later version's
    }

private:
    FileList m_files;
    std::unique_ptr<FileTableModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<CustomTableView> m_table;
};

QTEST_MAIN(FileTableTest)

#include "FileTableTest.moc"
