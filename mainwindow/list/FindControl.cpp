#include "mainwindow/list/FindControl.h"

#include "filelist/FileTableModel.h"
#include "filelist/NameSearch.h"
#include "ui_MainWindow.h"

#include <QKeyEvent>
#include <QLocale>

#include <algorithm>

namespace pagestack {

namespace {

    constexpr int findPauseMs = 120;

} // namespace

FindControl::FindControl(Ui::MainWindow& ui, const FileList& files)
    : m_ui(ui)
    , m_files(files)
    , m_pause(findPauseMs, [this] { find(); })
{
    connect(ui.searchField, &QLineEdit::textChanged, &m_pause, qOverload<>(&QTimer::start));
    connect(ui.findPreviousButton, &QToolButton::clicked, this, [this] { showMatch(false); });
    connect(ui.findNextButton, &QToolButton::clicked, this, [this] { showMatch(true); });
    connect(ui.findCloseButton, &QToolButton::clicked, this, &FindControl::close);
    ui.findBar->installEventFilter(this);
}

void FindControl::begin()
{
    m_ui.findBar->show();
    m_ui.searchField->setFocus(Qt::ShortcutFocusReason);
    m_ui.searchField->selectAll();
}

/// The keys that no control of the bar has taken.
bool FindControl::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto* press = static_cast<QKeyEvent*>(event);
    if (press->key() == Qt::Key_Escape)
        close();
    else if (press->key() == Qt::Key_Return || press->key() == Qt::Key_Enter)
        showMatch(!press->modifiers().testFlag(Qt::ShiftModifier));
    else
        return false;
    return true;
}

void FindControl::close()
{
    m_ui.findBar->hide();
    m_ui.mainTableView->setFocus();
}

/// Highlights the files found and brings the first one into view.
void FindControl::find()
{
    const QString text = m_ui.searchField->text();
    const QList<int> rows = matches();
    m_ui.mainTableView->highlightRows(rows);
    if (!rows.isEmpty()) {
        m_ui.foundLabel->setText(
            tr("%1 of %2").arg(QLocale().toString(1), QLocale().toString(rows.size())));
        m_ui.mainTableView->scrollToRow(rows.first());
    } else {
        m_ui.foundLabel->setText(text.isEmpty() ? QString() : tr("No file has it"));
    }
}

/// Makes the next or the previous match the current row; from the last one to the first.
void FindControl::showMatch(bool isNext)
{
    const QList<int> rows = matches();
    if (rows.isEmpty()) {
        find();
        return;
    }
    const int current = m_ui.mainTableView->currentRow();
    qsizetype place = 0;
    if (isNext)
        place = std::upper_bound(rows.cbegin(), rows.cend(), current) - rows.cbegin();
    else
        place = std::lower_bound(rows.cbegin(), rows.cend(), current) - rows.cbegin() - 1;
    place = (place + rows.size()) % rows.size();
    m_ui.mainTableView->setCurrentRow(rows.at(place));
    m_ui.foundLabel->setText(
        tr("%1 of %2").arg(QLocale().toString(place + 1), QLocale().toString(rows.size())));
    m_ui.mainTableView->scrollToRow(rows.at(place));
}

QList<int> FindControl::matches() const
{
    QList<int> rows = rowsWithName(m_files.items(), m_ui.searchField->text());
    const ShownRows& shown = m_ui.mainTableView->shownRows();
    rows.removeIf([&](int row) { return shown.placeOf(row) < 0; });
    return rows;
}

} // namespace pagestack
