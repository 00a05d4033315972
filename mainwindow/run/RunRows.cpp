#include "mainwindow/run/RunRows.h"

#include "engine/plan/OutputFile.h"
#include "filelist/CustomTableView.h"
#include "filelist/FileTableModel.h"
#include "ui_MainWindow.h"

#include <QScrollBar>

namespace pagestack {

void RunRows::begin()
{
    m_row = 0;
    m_scrolled.reset();
    m_isFollowing = true;
    m_parts.model.setStatuses({});
}

void RunRows::show(const QHash<QString, RowStatus>& statuses)
{
    for (auto status = statuses.cbegin(); status != statuses.cend(); ++status)
        m_parts.model.setStatus(status.key(), status.value());
}

void RunRows::follow(const OutputFile& output)
{
    CustomTableView& table = *m_parts.ui.mainTableView;
    const QScrollBar& bar = *table.verticalScrollBar();
    m_isFollowing = m_isFollowing && (!m_scrolled || *m_scrolled == bar.value());
    if (!m_isFollowing || output.fileItems.isEmpty())
        return;
    while (m_row < m_parts.files.count() && m_parts.files.at(m_row) != output.fileItems.first())
        ++m_row;
    if (m_row < m_parts.files.count())
        table.scrollToRow(m_row);
    m_scrolled = bar.value();
    // What is scrolled is not painted anew: rows would differ in age.
    table.viewport()->update();
}

} // namespace pagestack
