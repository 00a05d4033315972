#include "engine/support/SystemLog.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "ui_MainWindow.h"

#include <numeric>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// The rows of a list of `count` in order.
    QList<int> rowsInOrder(int count)
    {
        QList<int> rows(count);
        std::iota(rows.begin(), rows.end(), 0);
        return rows;
    }

} // namespace

void PagestackAppDelegate::connectListCommands()
{
    CustomTableView* table = m_ui->mainTableView;
    connect(table, &CustomTableView::removeRequested, this, &PagestackAppDelegate::removeAction);
    connect(m_ui->removeBtn, &QPushButton::clicked, this, &PagestackAppDelegate::removeAction);
    connect(m_ui->removeSelectedAction, &QAction::triggered, this,
            &PagestackAppDelegate::removeAction);
    connect(m_ui->moveUpButton, &QToolButton::clicked, this, &PagestackAppDelegate::moveUp);
    connect(m_ui->moveDownButton, &QToolButton::clicked, this, &PagestackAppDelegate::moveDown);
    connect(table, &CustomTableView::moveUpRequested, m_ui->moveUpButton, &QToolButton::click);
    connect(table, &CustomTableView::moveDownRequested, m_ui->moveDownButton, &QToolButton::click);
    connect(m_ui->selectAllRowsAction, &QAction::triggered, table, &QTableView::selectAll);
}

void PagestackAppDelegate::removeAction()
{
    endEditing();
    removeFiles();
}

/// Takes the highlighted rows off the list; the files stay where they are.
void PagestackAppDelegate::removeFiles()
{
    try {
        if (m_worker || m_tableModel->removeItems(m_ui->mainTableView->highlightedRows()) == 0)
            return;
        resetView(true);
        updateTotalLabel();
    } catch (const std::exception& error) {
        systemLog(u"Error in (remove) : "_s + QString::fromUtf8(error.what()));
    }
}

void PagestackAppDelegate::moveUp()
{
    const QList<int> highlighted = m_ui->mainTableView->highlightedRows();
    if (highlighted.isEmpty() || highlighted.first() == 0)
        return;
    QList<int> rows = rowsInOrder(m_files.count());
    for (const int row : highlighted)
        rows.swapItemsAt(row - 1, row);
    m_tableModel->reorder(rows);
    showMoved(true);
}

void PagestackAppDelegate::moveDown()
{
    const QList<int> highlighted = m_ui->mainTableView->highlightedRows();
    QList<int> rows = rowsInOrder(m_files.count());
    for (auto row = highlighted.crbegin(); row != highlighted.crend(); ++row) {
        if (*row + 1 >= m_files.count())
            break;
        rows.swapItemsAt(*row, *row + 1);
    }
    m_tableModel->reorder(rows);
    showMoved(false);
}

/// The highlight has gone with the rows; its first or last one is brought into view.
void PagestackAppDelegate::showMoved(bool isFirst)
{
    m_ui->mainTableView->setFocus();
    const QList<int> rows = m_ui->mainTableView->highlightedRows();
    if (!rows.isEmpty())
        m_ui->mainTableView->scrollTo(
            m_tableModel->index(isFirst ? rows.first() : rows.last(), FileTableModel::Name));
    updateMoveButtons();
}

} // namespace pagestack
