#include "filelist/FileTableModel.h"
#include "filelist/NameSearch.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/FindBar.h"
#include "ui_MainWindow.h"

#include <algorithm>

namespace pagestack {

void PagestackAppDelegate::connectFindBar()
{
    const FindBar* bar = m_ui->findBar;
    connect(bar, &FindBar::searched, this, &PagestackAppDelegate::find);
    connect(bar, &FindBar::nextRequested, this, [this] { showMatch(true); });
    connect(bar, &FindBar::previousRequested, this, [this] { showMatch(false); });
    connect(bar, &FindBar::closed, m_ui->mainTableView, qOverload<>(&QWidget::setFocus));
}

void PagestackAppDelegate::searchAction()
{
    endEditing();
    m_ui->findBar->begin();
}

/// Highlights the files with `text` in their names and brings the first one into view.
void PagestackAppDelegate::find(const QString& text)
{
    const QList<int> rows = rowsWithName(m_files.items(), text);
    m_ui->mainTableView->highlightRows(rows);
    m_ui->findBar->showFound(1, text.isEmpty() ? -1 : rows.size());
    if (!rows.isEmpty())
        scrollToRow(rows.first());
}

/// Makes the next or the previous match the current row; from the last one to the first.
void PagestackAppDelegate::showMatch(bool isNext)
{
    const QList<int> rows = rowsWithName(m_files.items(), m_ui->findBar->text());
    if (rows.isEmpty()) {
        find(m_ui->findBar->text());
        return;
    }
    const int current = m_ui->mainTableView->currentIndex().row();
    qsizetype place = 0;
    if (isNext)
        place = std::upper_bound(rows.cbegin(), rows.cend(), current) - rows.cbegin();
    else
        place = std::lower_bound(rows.cbegin(), rows.cend(), current) - rows.cbegin() - 1;
    place = (place + rows.size()) % rows.size();
    m_ui->mainTableView->selectionModel()->setCurrentIndex(
        m_tableModel->index(rows.at(place), FileTableModel::Name), QItemSelectionModel::NoUpdate);
    m_ui->findBar->showFound(place + 1, rows.size());
    scrollToRow(rows.at(place));
}

void PagestackAppDelegate::scrollToRow(int row)
{
    m_ui->mainTableView->scrollTo(m_tableModel->index(row, FileTableModel::Name));
}

} // namespace pagestack
