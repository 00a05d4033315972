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
#include <QStyledItemDelegate>

#include <numeric>
#include <random>

namespace {

/// What a view asks of a delegate before it draws a cell.
struct Delegate : QStyledItemDelegate
{
    using QStyledItemDelegate::initStyleOption;
};

struct Header : QHeaderView
{
    using QHeaderView::initStyleOptionForIndex;
};

/// Whatever comes is dragged from the table itself.
struct DraggedTable : CustomTableView
{
    const QObject* sourceOf(const QDropEvent& /*event*/) const override { return this; }
};

/// Counts how often a widget is painted.
class Paints : public QObject
{
public:
    explicit Paints(QObject& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        ++count;
        region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
    int count = 0;
    QRegion region;
};

} // namespace

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

    // A table that is left by no Tab, that breaks names into lines or that takes a click for an
    // edit.
    void isSetUpAsAList_data()
    {
        addTextRows(R"(
            selectionBehavior    | 1
            selectionMode        | 3
            editTriggers         | 2
            tabKeyNavigation     | 0
            wordWrap             | 0
            showGrid             | 0
            alternatingRowColors | 1
            horizontalScrollMode | 1
            dragDropMode         | 3
            defaultDropAction    | 4
            showDropIndicator    | 0
            highlightSections    | 0
            stretchLastSection   | 1
            showSortIndicator    | 1)");
    }
    void isSetUpAsAList()
    {
        const auto [name, value] = textRow<2>();
        const QHeaderView& header = *m_table->horizontalHeader();
        const QVariant own = m_table->property(qPrintable(name));
        QCOMPARE((own.isValid() ? own : header.property(qPrintable(name))).toInt(), value.toInt());
        QVERIFY(header.sectionsMovable() && header.sectionsClickable());
        QCOMPARE(header.sortIndicatorSection(), -1);
        QVERIFY(m_table->verticalHeader()->isHidden());
        QCOMPARE(m_table->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    }

    // What cells say beside their texts, and who may change them.
    void answersForItsCells()
    {
        const auto align
            = [](const QVariant& answer) { return answer.toInt() & ~Qt::AlignVCenter; };
        for (const int column : { FileTableModel::IsSelected, FileTableModel::Name,
                                  FileTableModel::PagesToConvert, FileTableModel::Size }) {
            const QModelIndex cell = m_model->index(0, column);
            const auto header
                = [&](int role) { return m_model->headerData(column, Qt::Horizontal, role); };
            const bool isSize = column == FileTableModel::Size;
            const bool isMark = column == FileTableModel::IsSelected;
            const bool isChoice = column == FileTableModel::PagesToConvert;
            QCOMPARE(align(header(Qt::TextAlignmentRole)), isSize ? Qt::AlignRight : Qt::AlignLeft);
            QCOMPARE(align(cell.data(Qt::TextAlignmentRole)), isSize ? Qt::AlignRight : 0);
            QCOMPARE(!header(Qt::ToolTipRole).isNull(), isMark || isChoice);
            QCOMPARE(!header(Qt::AccessibleTextRole).isNull(), isMark);
            QCOMPARE(header(Qt::DisplayRole).toString().isEmpty(), isMark);
            QCOMPARE(cell.flags().testFlag(Qt::ItemIsUserCheckable), isMark);
            QCOMPARE(cell.flags().testFlag(Qt::ItemIsEditable), isChoice);
            QCOMPARE(cell.data(Qt::EditRole).isValid(), isChoice);
            QVERIFY(!m_model->headerData(column, Qt::Vertical, Qt::DisplayRole).isValid());
        }
        QVERIFY(!m_model->headerData(-1, Qt::Horizontal, Qt::DisplayRole).isValid());
        QCOMPARE(m_model->flags({}), Qt::ItemFlags());
        QCOMPARE(m_model->mimeTypes(), QStringList(u"text/uri-list"_s));
        const QModelIndex mark = m_model->index(0, FileTableModel::IsSelected);
        const QModelIndex choice = m_model->index(0, FileTableModel::PagesToConvert);
        QSignalSpy changes(m_model.get(), &FileTableModel::dataChanged);
        const auto set = [&](const QModelIndex& cell, const QVariant& value, int role) {
            return m_model->setData(cell, value, role);
        };
        QVERIFY(set(mark, Qt::Checked, Qt::CheckStateRole)); // as it is already
        QVERIFY(set(choice, u" "_s, Qt::EditRole));
        QVERIFY(!set(mark, Qt::Unchecked, Qt::EditRole) && !set({}, 0, Qt::CheckStateRole));
        QVERIFY(!set(choice.siblingAtColumn(FileTableModel::Name), u"1"_s, Qt::EditRole));
        QVERIFY(!set(choice, u"0"_s, Qt::EditRole));
        QCOMPARE(changes.size(), 0);
        QVERIFY(set(mark, Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(mark.data(Qt::AccessibleTextRole).toString(), u"Delta.tif is left out"_s);
        QVERIFY(set(choice, u" 2 "_s, Qt::EditRole));
        QCOMPARE(choice.data(Qt::EditRole).toString(), u"2"_s);
        changes.clear();
        m_model->choosePages({ 3, 1 }, u"7"_s);
        m_model->choosePages({}, u"8"_s);
        QCOMPARE(changes.size(), 1); // from the first to the last of them
        QCOMPARE(changes.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(changes.first().at(1).toModelIndex().row(), 3);
        m_model->append(itemOf(u"/<b>x<_b>.tif"_s));
        QVERIFY(m_model->index(5, 1).data(Qt::ToolTipRole).toString().contains(u"&lt;b&gt;x"_s));
    }

    // The current row, or a highlight, that stays behind at another file.
    void keepsIndexesWithTheirFiles()
    {
        QList<QPersistentModelIndex> kept;
        QStringList names;
        for (const QAbstractItemModel* model :
             { static_cast<const QAbstractItemModel*>(m_model.get()),
               static_cast<const QAbstractItemModel*>(m_table->model()) })
            for (int row = 0; row < 5; ++row)
                kept.append(model->index(row, FileTableModel::Name));
        for (const auto& index : std::as_const(kept))
            names.append(index.data().toString());
        QSignalSpy ownLayout(m_model.get(), &QAbstractItemModel::layoutChanged);
        QSignalSpy layout(m_table->model(), &QAbstractItemModel::layoutChanged);
        m_model->reorder({ 4, 2, 0, 1, 3 });
        m_model->reorder({});
        QCOMPARE(ownLayout.size() + layout.size(), 2);
        for (qsizetype i = 0; i < kept.size(); ++i)
            QCOMPARE(kept.at(i).data().toString(), names.at(i));
        QSignalSpy inserted(m_table->model(), &QAbstractItemModel::rowsInserted);
        const auto* shown = m_table->model();
        QCOMPARE(shown->columnCount(kept.first()) + shown->rowCount(kept.last()), 0);
        m_table->setModel(nullptr);
        m_model->append(itemOf(u"/later.tif"_s));
        QCOMPARE(inserted.size(), 0); // it is no list of the table any more
        QVERIFY(m_table->highlightedRows().isEmpty() && m_table->highlightedSpan().first == -1);
    }

    // A long path in the list of another language read from its end, names in steps beside pictures
    // of all shapes, and rows that letters do not fit in.
    void laysOutItsCells()
    {
        const QModelIndex name = m_table->model()->index(3, FileTableModel::Name);
        const auto option = [&](Qt::LayoutDirection direction) {
            QStyleOptionViewItem result;
            result.direction = direction;
            const auto& cells = dynamic_cast<const QStyledItemDelegate&>(
                *m_table->itemDelegateForColumn(FileTableModel::Name));
            (cells.*(&Delegate::initStyleOption))(&result, name);
            return result;
        };
        const QString mark(QChar(0x200E));
        QCOMPARE(option(Qt::LeftToRight).text, u"Bravo.tif"_s);
        QCOMPARE(option(Qt::RightToLeft).text, mark + u"Bravo.tif"_s + mark);
        QCOMPARE(option(Qt::LeftToRight).textElideMode, Qt::ElideMiddle);
        QVERIFY(option(Qt::LeftToRight).decorationSize.width() < ShownThumbnails::side);
        QCOMPARE(m_table->itemDelegateForColumn(FileTableModel::Location),
                 m_table->itemDelegateForColumn(FileTableModel::Name));
        const int height = m_table->rowHeight(0);
        m_table->showThumbnails(true);
        QCOMPARE(option(Qt::LeftToRight).decorationSize.width(), ShownThumbnails::side);
        QVERIFY(m_table->rowHeight(0) > ShownThumbnails::side);
        m_table->showThumbnails(false);
        QCOMPARE(m_table->rowHeight(0), height);
        QFont large = m_table->font();
        large.setPixelSize(70);
        m_table->setFont(large);
        QVERIFY(m_table->rowHeight(0) > 70);
    }

    // Words, pixels, dates and pictures that come later than the row and that nobody draws.
    void announcesWhatItLearns()
    {
        const QString photo
            = qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + u"/samples/gray-photo.tif"_s;
        m_model->append(itemOf(photo));
        m_model->showThumbnails(true, 2);
        QSignalSpy changes(m_model.get(), &FileTableModel::dataChanged);
        const auto isAnnounced = [&](int column, int role) {
            return std::ranges::any_of(changes, [&](const QVariantList& change) {
                return change.at(0).toModelIndex().column() <= column
                    && change.at(1).toModelIndex().column() >= column
                    && change.at(1).toModelIndex().row() == m_files.count() - 1
                    && change.at(2).value<QList<int>>().contains(role);
            });
        };
        const std::pair<int, int> cells[] { { FileTableModel::Name, Qt::DecorationRole },
                                            { FileTableModel::Pixels, Qt::DisplayRole },
                                            { FileTableModel::DateModified, Qt::DisplayRole } };
        for (const auto& [column, role] : cells) {
            m_model->index(5, column).data(role);
            QTRY_VERIFY2(isAnnounced(column, role), qPrintable(QString::number(column)));
        }
        const QVariant picture = m_model->index(5, FileTableModel::Name).data(Qt::DecorationRole);
        QCOMPARE(picture.value<QImage>().devicePixelRatio(), 2.0);
        const QSize size = picture.value<QImage>().size(); // and not blurred
        QCOMPARE(std::max(size.width(), size.height()), 2 * ShownThumbnails::side);
        m_model->setStatus(photo, { RowStatus::State::Done });
        QTRY_VERIFY(isAnnounced(FileTableModel::Status, Qt::DecorationRole));
        changes.clear();
        m_model->showThumbnails(false, 1);
        QVERIFY(isAnnounced(FileTableModel::Name, Qt::DecorationRole)); // they go at once
        QSignalSpy shown(m_table->model(), &QAbstractItemModel::dataChanged);
        m_table->showRows({ 1, 5 }, [](const FileItem&) { return true; });
        m_model->choosePages({ 2, 3 }, u"1"_s);
        QCOMPARE(shown.size(), 0); // of rows that are hidden
        m_model->choosePages({ 1, 2 }, u"2"_s);
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown.first().at(1).toModelIndex().row(), 0);
    }

    // A run reads the list: a key that changes it then.
    void changesNothingWhileItIsReadOnly()
    {
        QSignalSpy asked[] { { m_table.get(), &CustomTableView::invertRequested },
                             { m_table.get(), &CustomTableView::removeRequested },
                             { m_table.get(), &CustomTableView::moveUpRequested },
                             { m_table.get(), &CustomTableView::moveDownRequested } };
        const auto press = [&] {
            for (const auto& [key, keys] : std::initializer_list<std::pair<Qt::Key, int>> {
                     { Qt::Key_Space, 0 },
                     { Qt::Key_Delete, 0 },
                     { Qt::Key_Backspace, 0 },
                     { Qt::Key_Up, Qt::ControlModifier },
                     { Qt::Key_Down, Qt::ControlModifier } })
                QTest::keyClick(m_table.get(), key, Qt::KeyboardModifiers(keys));
            QTest::keyClick(m_table.get(), Qt::Key_F2);
            return m_table->viewport()->findChildren<QWidget*>().size() // a field
                + asked[0].size() + asked[1].size() + asked[2].size() + asked[3].size();
        };
        m_table->highlightRows({ 2 });
        m_table->setReadOnly(true);
        QVERIFY(!m_table->horizontalHeader()->sectionsClickable());
        QCOMPARE(press(), 0);
        QCOMPARE(m_table->currentRow(), 2); // Control moves no frame either
        QTest::keyClick(m_table.get(), Qt::Key_Down);
        QCOMPARE(m_table->highlightedRows(), QList<int> { 3 });
        m_table->setReadOnly(false);
        QVERIFY(m_table->horizontalHeader()->sectionsClickable());
        QCOMPARE(press(), 6);
    }

    // A highlight of many ranges is painted another way: other colours, or a row too few.
    void paintsManyRangesAsAFew()
    {
        for (int i = 0; i < 400; ++i)
            m_model->append(itemOf(u"/many/%1.tif"_s.arg(i)));
        m_table->setFocus();
        QList<int> every;
        for (int row = 0; row < 400; row += 3)
            every.append(row);
        const auto pictureOf = [this](const QList<int>& rows) {
            m_table->highlightRows(rows);
            m_table->setCurrentRow(4);
            return m_table->viewport()->grab().toImage();
        };
        const QImage few = pictureOf(every.first(60)); // more than are in view
        QCOMPARE(pictureOf(every), few);
        QVERIFY(pictureOf(every.sliced(1)) != few);
    }

    // A list in shreds is compared with its successor range by range, which takes minutes.
    void highlightsAllWithoutComparing()
    {
        m_table->highlightRows({ 0, 2, 4 });
        m_table->setCurrentIndex(m_table->model()->index(4, FileTableModel::Location));
        m_table->keyboardSearch(u"br"_s); // names, in whatever column the user is
        QCOMPARE(m_table->currentRow(), 3);
        m_table->highlightRows({ 0, 2, 4 });
        QCOMPARE(m_table->currentRow(), 0);
        QSignalSpy changes(m_table->selectionModel(), &QItemSelectionModel::selectionChanged);
        m_table->selectAll();
        QCOMPARE(changes.size(), 2);
        QCOMPARE(changes.last().at(1).value<QItemSelection>().size(), 0);
        QCOMPARE(m_table->highlightedSpan(), std::pair(0, 4));
        m_table->highlightRows({});
        QVERIFY(m_table->highlightedRows().isEmpty());
        m_table->resize(900, 300);
        Paints paints(*m_table->viewport());
        QTRY_VERIFY(paints.count > 0);
        paints.region = {};
        m_table->highlightRows({ 1, 2 });
        const QModelIndex far = m_table->model()->index(2, FileTableModel::Size);
        QTRY_VERIFY(paints.region.contains(m_table->visualRect(far).center()));
    }

    // A frame that stays behind, a line at another place, rows that jump to where they were not
    // dropped, and a list that is too long to be dragged through.
    void movesRowsThatAreDragged()
    {
        DraggedTable table;
        table.setModel(m_model.get());
        table.resize(600, 300);
        table.show();
        QVERIFY(QTest::qWaitForWindowExposed(&table));
        for (int i = 0; i < 300; ++i)
            m_model->append(itemOf(u"/many/%1.tif"_s.arg(i)));
        const auto hasColour = [&](int x, int y) {
            return table.viewport()->grab().toImage().pixelColor(x, y)
                == table.palette().color(QPalette::Highlight);
        };
        const int height = table.rowHeight(0);
        const int right = 300;
        QMimeData rows;
        rows.setUrls({ QUrl::fromLocalFile(u"/one/Delta.tif"_s) });
        const auto move = [&](int y) {
            QDragEnterEvent enter({ 9, 9 }, Qt::LinkAction, &rows, Qt::LeftButton, {});
            QCoreApplication::sendEvent(table.viewport(), &enter); // makes it the target of moves
            QDragMoveEvent event({ 9, y }, Qt::LinkAction, &rows, Qt::LeftButton, {});
            QCoreApplication::sendEvent(table.viewport(), &event);
            return event.isAccepted() && event.dropAction() == Qt::LinkAction;
        };
        QSignalSpy moved(&table, &CustomTableView::dragRequested);
        const auto drop = [&](int y) {
            QDropEvent event({ 9.0, double(y) }, Qt::LinkAction | Qt::MoveAction, &rows,
                             Qt::LeftButton, {});
            event.setDropAction(Qt::MoveAction); // after which the view would take the rows away
            QCoreApplication::sendEvent(table.viewport(), &event);
            return event.isAccepted() && event.dropAction() == Qt::LinkAction
                ? moved.last().first().toInt()
                : -1;
        };
        QVERIFY(move(2 * height + height / 2 - 2));
        QVERIFY(hasColour(right, 2 * height)); // the line above row 2
        QVERIFY(!hasColour(right, 3 * height) && !hasColour(0, 9)); // no frame
        QVERIFY(move(2 * height + height - 2));
        QVERIFY(hasColour(right, 3 * height) && !hasColour(right, 2 * height));
        QVERIFY(move(1) && hasColour(right, 1));
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(table.viewport(), &leave);
        QVERIFY(!hasColour(right, 1));
        QVERIFY(move(1));
        QCOMPARE(drop(2 * height + 1), 2);
        QVERIFY(!hasColour(right, 1));
        QVERIFY(move(1));
        QCOMPARE(drop(2 * height + height - 2), 3);
        QVERIFY(move(1));
        table.setReadOnly(true);
        QCOMPARE(drop(height), -1);
        QVERIFY(!move(height));
        table.setReadOnly(false);
        table.showRows({ 1, 2 }, [](const FileItem&) { return true; });
        QVERIFY(!move(height)); // rows between them are hidden
        table.showAllRows();
        table.scrollToTop();
        QVERIFY(move(table.viewport()->height() - 2));
        QTRY_VERIFY(table.verticalScrollBar()->value() > 0);
        m_model->clear();
        QVERIFY(move(1));
        QCOMPARE(drop(9 * height), 0); // behind the last one
        QCOMPARE(moved.size(), 3);
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
        // What a run says of a file replaces what it has said, a word or more than that.
        RowStatus said { RowStatus::State::Warning, 0, 2, u"text"_s };
        for (const auto state : { RowStatus::State::Warning, RowStatus::State::Done,
                                  RowStatus::State::Failed, RowStatus::State::Warning }) {
            said.state = state;
            m_model->setStatus(whole, said);
            QCOMPARE(m_model->status(4).reason, said.reason);
            QCOMPARE(m_model->statuses().isConverted(*m_files.at(4)),
                     state != RowStatus::State::Failed);
            m_model->setStatus(whole,
                               { state == RowStatus::State::Failed ? RowStatus::State::None
                                                                   : RowStatus::State::Done });
            QCOMPARE(m_model->status(4).reason, QString());
            QCOMPARE(m_model->statuses().isConverted(*m_files.at(4)),
                     state != RowStatus::State::Failed);
        }
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

    /// Catches a program that does not end since a computer does not answer.
    void endsWithoutAnAnswer()
    {
        const auto answers = std::make_shared<QSemaphore>();
        const auto ended = std::make_shared<QSemaphore>();
        {
            FileTableModel model(m_files, [answers, ended](const FileItem&) {
                answers->acquire();
                ended->release();
                return FileDates();
            });
            model.index(1, FileTableModel::DateCreated).data();
        }
        QCOMPARE(ended->available(), 0); // it would wait for ever here
        answers->release();
        QVERIFY(ended->tryAcquire(1, 10000)); // nothing that it uses has gone
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
        FileList::Items removed;
        for (int row = 0; row < before.size(); row += 2) {
            even.append(row);
            removed.append(before.at(row));
        }
        QCOMPARE(m_model->removeItems(even), 101);
        QCOMPARE(removals.size(), 1); // as many ranges would take as many signals
        QCOMPARE(m_files.at(1)->name(), u"1.tif"_s);
        QCOMPARE(m_table->highlightedRows(), (QList<int> { 0, 50 }));
        m_model->append(before.at(8)); // came back another way: not a second time
        m_model->insertItems(removed, even);
        QCOMPARE(m_files.count(), before.size());
        QCOMPARE(m_files.items().first(8), before.first(8));
        QCOMPARE(m_files.at(10), before.at(10));
        QCOMPARE(m_table->highlightedRows().size(), 2);
        QSignalSpy resets(m_model.get(), &FileTableModel::modelReset);
        QSignalSpy begun(m_table->model(), &QAbstractItemModel::modelAboutToBeReset);
        m_model->clear();
        QCOMPARE(m_model->rowCount() + resets.size(), 1);
        QCOMPARE(begun.size(), 1);
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
        const auto hasFrame = [this] {
            return m_table->viewport()->grab().toImage().pixelColor(1, 90)
                == m_table->palette().color(QPalette::Highlight);
        };
        for (QMimeData* offer : { &text, &pages, &files }) {
            QDragEnterEvent enter({ 5, 5 }, Qt::CopyAction | Qt::MoveAction, offer, Qt::LeftButton,
                                  {});
            enter.setDropAction(
                Qt::MoveAction); // after which the other side would delete the files
            QCoreApplication::sendEvent(m_table->viewport(), &enter);
            QCOMPARE(enter.isAccepted(), offer == &files); // no other has a file
            QVERIFY(!enter.isAccepted() || enter.dropAction() == Qt::CopyAction);
            QCOMPARE(hasFrame(), offer == &files);
            QDropEvent drop({ 5, 5 }, Qt::CopyAction | Qt::MoveAction, offer, Qt::LeftButton, {});
            drop.setDropAction(Qt::MoveAction);
            QCoreApplication::sendEvent(m_table->viewport(), &drop);
            QCOMPARE(drop.isAccepted(), offer == &files);
            QVERIFY(!drop.isAccepted() || drop.dropAction() == Qt::CopyAction);
            QVERIFY(!hasFrame());
        }
        QCOMPARE(drops.size(), 1);
        QCOMPARE(drops.first().first().value<QList<QUrl>>(), files.urls().sliced(1));
        QWidget window; // which a file may miss the table in
        m_table->setDropArea(window);
        QDragEnterEvent enter({ 5, 5 }, Qt::CopyAction, &files, Qt::LeftButton, {});
        QDropEvent drop({ 5, 5 }, Qt::CopyAction, &files, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &enter);
        QVERIFY(enter.isAccepted() && hasFrame());
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(&window, &leave);
        QVERIFY(!hasFrame());
        QCoreApplication::sendEvent(&window, &enter);
        QDragMoveEvent over({ 5, 5 }, Qt::CopyAction, &files, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &over);
        QVERIFY(over.isAccepted() && hasFrame());
        QCoreApplication::sendEvent(&window, &drop);
        QCOMPARE(drops.size(), 2);
        m_table->setEnabled(false);
        enter.accept();
        QCoreApplication::sendEvent(&window, &enter);
        QVERIFY(!enter.isAccepted());
        m_table->setEnabled(true);
        QMimeData folder;
        folder.setUrls({ QUrl::fromLocalFile(QDir::tempPath()) });
        QDragEnterEvent entering({ 5, 5 }, Qt::CopyAction, &folder, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &entering);
        QVERIFY(window.acceptDrops() && entering.isAccepted());
        QMimeData many; // to look at all would take long, and the last may be a folder
        many.setUrls(QList<QUrl>(2000, QUrl::fromLocalFile(u"/none.txt"_s)));
        QDragEnterEvent unseen({ 5, 5 }, Qt::CopyAction, &many, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&window, &unseen);
        QVERIFY(unseen.isAccepted());
        m_table->setReadOnly(true);
        QCoreApplication::sendEvent(&window, &enter);
        QVERIFY(!enter.isAccepted());
        QCoreApplication::sendEvent(&window, &leave); // or the next case's drag would leave it
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
        m_table->highlightRows({ 110, 120 });
        m_table->setCurrentRow(120);
        m_table->resize(300, 400);
        m_table->horizontalScrollBar()->setValue(50);
        m_table->verticalScrollBar()->setValue(80);
        const auto top = [this] { return m_table->shownRows().rowAt(m_table->rowAt(1)); };
        QCOMPARE(top(), 180);
        rows.insert(rows.begin(), { 20, 21, 22 });
        m_table->showRows(rows, all, CustomTableView::InView::TopRow);
        QCOMPARE(top(), 180);
        QCOMPARE(m_table->highlightedRows(), (QList<int> { 110, 120 }));
        QCOMPARE(m_table->horizontalScrollBar()->value(), 50);
        m_table->showAllRows();
        QCOMPARE(m_table->currentRow(), 120);
        const QRect current = m_table->visualRect(m_table->currentIndex());
        QVERIFY(m_table->viewport()->rect().intersects(current)); // where the user was
        m_table->showRows({}, all); // no row is there to go to
        m_table->setCurrentRow(120);
        QCOMPARE(m_table->currentRow(), -1);
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
        m_table->selectionModel()->clearCurrentIndex();
        m_table->keyboardSearch(u"br"_s); // from the first row on
        QCOMPARE(m_table->currentRow(), 3);
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
        const Paints paints(*header.viewport());
        QTRY_VERIFY(paints.count > 0);
        const int painted = paints.count;
        m_table->setSortOrders({ orders.first(), orders.last() });
        QTRY_VERIFY(paints.count > painted); // the numbers of the others
        m_table->setSortOrders(orders);
#ifdef Q_OS_MACOS
        constexpr bool pointsUp = false;
#else
        constexpr bool pointsUp = true; // for a descending order, as the arrow of the first column
#endif
        const auto title = [&header](int column) {
            QStyleOptionHeaderV2 option;
            (header.*(&Header::initStyleOptionForIndex))(&option, column);
            return option.text;
        };
        QCOMPARE(title(FileTableModel::Name) + title(FileTableModel::Pages)
                     + title(FileTableModel::Type),
                 pointsUp ? u"NamePages \u21912Type \u21913"_s
                          : u"NamePages \u21932Type \u21933"_s);
        QMenu menu;
        m_table->fillColumnMenu(menu);
        m_table->fillColumnMenu(menu); // as often as it is opened
        QCOMPARE(menu.actions().size(), int { FileTableModel::ColumnCount });
        QVERIFY(menu.actions().first()->isChecked());
        menu.actions().first()->setChecked(false);
        QVERIFY(header.isSectionHidden(FileTableModel::Status));
        QContextMenuEvent asked(QContextMenuEvent::Mouse, { 5, 5 },
                                header.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(header.viewport(), &asked);
        QPointer<QMenu> own = header.findChild<QMenu*>();
        QVERIFY(own && own->isVisible());
        QCOMPARE(own->actions().size(), menu.actions().size());
        own->close();
        QTRY_VERIFY(!own);
        const QByteArray state = m_table->saveColumns();
        CustomTableView other;
        other.setModel(m_model.get());
        QVERIFY(!other.restoreColumns("nonsense") && !other.restoreColumns(state.first(30)));
        other.horizontalHeader()->setSortIndicatorShown(false);
        const QByteArray arrowless = other.saveColumns(); // as earlier versions told it
        QVERIFY(other.restoreColumns(arrowless));
        QVERIFY(other.horizontalHeader()->isSortIndicatorShown());
        QVERIFY(other.restoreColumns(state));
        QCOMPARE(other.columnWidth(FileTableModel::Name), 321);
        QVERIFY(other.isColumnHidden(FileTableModel::Status));
        QCOMPARE(other.currentSortOrders(), orders);
        QVERIFY(!other.restoreColumns(QByteArray(state).replace(3, 1, "\3"))); // a later version's
        other.horizontalHeader()->moveSection(1, 4);
        other.fillColumnMenu(menu);
        const int digit = other.horizontalHeader()->fontMetrics().horizontalAdvance(u'0');
        const int pages = other.columnWidth(FileTableModel::Pages);
        other.hideColumn(FileTableModel::Pages);
        menu.actions().last()->trigger(); // "Reset Columns"
        const int reset = other.columnWidth(FileTableModel::Pages);
        QVERIFY(reset > 0 && reset <= pages);
        other.showColumn(FileTableModel::Pixels);
        QVERIFY(other.columnWidth(FileTableModel::Pixels) > reset);
        other.setColumnWidth(FileTableModel::Pixels, 0);
        other.hideColumn(FileTableModel::Pixels);
        other.fillColumnMenu(menu);
        menu.actions().at(FileTableModel::Pixels - FileTableModel::Name - 1)->trigger();
        QVERIFY(other.columnWidth(FileTableModel::Pixels) > digit);
        other.hideColumn(FileTableModel::Pixels);
        QVERIFY(!other.isColumnHidden(FileTableModel::Status));
        QVERIFY(other.isColumnHidden(FileTableModel::Pixels));
        QCOMPARE(other.horizontalHeader()->visualIndex(1), 1);
        QCOMPARE(other.columnWidth(FileTableModel::Name), 20 * digit);
        QVERIFY(other.columnWidth(FileTableModel::IsSelected) < 9 * digit);
    }

private:
    FileList m_files;
    std::unique_ptr<FileTableModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<CustomTableView> m_table;
};

QTEST_MAIN(FileTableTest)

#include "FileTableTest.moc"
