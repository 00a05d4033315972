#include "mainwindow/list/FilterControl.h"

#include "filelist/FileTableModel.h"
#include "ui_MainWindow.h"

#include <QDeadlineTimer>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int filterPauseMs = 120;
    constexpr int statusRefreshMs = 400; // in a run
    constexpr qint64 longestTurnMs = 8;
    constexpr int rowsBetweenLooksAtTheClock = 256;

} // namespace

FilterControl::FilterControl(const WindowParts& parts)
    : m_parts(parts)
    , m_groups { { { RowGroup::Failed, parts.ui.filterFailedButton, QT_TR_NOOP("Failed (%1)") },
                   { RowGroup::Warnings, parts.ui.filterWarningsButton,
                     QT_TR_NOOP("Warnings (%1)") },
                   { RowGroup::NotReached, parts.ui.filterNotReachedButton,
                     QT_TR_NOOP("Not reached (%1)") } } }
    , m_pause(filterPauseMs, [this] { choose(); })
    , m_refresh(statusRefreshMs, [this] { followStatuses(); })
{
    connect(&m_turn, &QTimer::timeout, this, &FilterControl::look);
    connect(parts.ui.filterField, &QLineEdit::textChanged, &m_pause, qOverload<>(&QTimer::start));
    connect(parts.ui.filterAllButton, &QAbstractButton::clicked, this,
            [this] { chooseGroup(RowGroup::All); });
    for (const Group& group : m_groups)
        connect(group.button, &QAbstractButton::clicked, this,
                [this, chosen = group.group] { chooseGroup(chosen); });
    const FileTableModel& model = parts.model;
    connect(&model, &FileTableModel::rowsInserted, this, &FilterControl::followList);
    connect(&model, &FileTableModel::rowsRemoved, this, &FilterControl::lookAgain);
    connect(&model, &FileTableModel::layoutChanged, this, &FilterControl::lookAgain);
    connect(&model, &FileTableModel::modelReset, this, &FilterControl::lookAgain);
    connect(&model.statuses(), &RowStatuses::changed, &m_refresh, &Pause::begin);
    parts.ui.filterField->installEventFilter(this);
    parts.ui.mainTableView->installEventFilter(this);
    look();
}

void FilterControl::begin()
{
    m_parts.ui.filterField->setFocus(Qt::ShortcutFocusReason);
    m_parts.ui.filterField->selectAll();
}

void FilterControl::clear()
{
    m_parts.ui.filterField->clear();
    chooseGroup(RowGroup::All);
}

// By hand: Tab passes over the buttons of an exclusive group.
void FilterControl::chooseGroup(RowGroup chosen)
{
    m_parts.ui.filterAllButton->setChecked(chosen == RowGroup::All);
    for (const Group& group : m_groups)
        group.button->setChecked(chosen == group.group);
    choose();
}

/// Escape shows all files, and the keys go to the table.
bool FilterControl::eventFilter(QObject* watched, QEvent* event)
{
    const bool isField = watched == m_parts.ui.filterField;
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool isEnd
        = isField && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Down);
    if (key == Qt::Key_Escape && (isField || !m_filter.isEmpty()))
        clear();
    else if (!isEnd)
        return false;
    m_parts.ui.mainTableView->setFocus();
    return true;
}

/// Takes the filter from its controls.
void FilterControl::choose()
{
    const auto chosen = std::ranges::find_if(
        m_groups, [](const Group& group) { return group.button->isChecked(); });
    m_filter = ListFilter(m_parts.ui.filterField->text(),
                          chosen == m_groups.end() ? RowGroup::All : chosen->group);
    m_isApplied = m_filter.isEmpty();
    m_isChosenAnew = !m_isApplied;
    if (m_isApplied) {
        m_parts.ui.mainTableView->showAllRows();
        showNumber();
    }
    lookAgain();
}

void FilterControl::lookAgain()
{
    m_next = 0;
    m_found.clear();
    followList();
}

void FilterControl::followStatuses()
{
    if (m_turn.isActive()) { // it comes to the end of a long list first
        m_refresh.start();
        return;
    }
    m_isApplied = m_isApplied && m_filter.group() == RowGroup::All;
    lookAgain();
}

void FilterControl::followList()
{
    if (!m_turn.isActive())
        m_turn.start(0);
}

/// One turn: looks at some more rows, and shows at the end what was found.
void FilterControl::look()
{
    if (m_next == 0)
        for (Group& group : m_groups)
            group.count = 0;
    const auto stateOf = m_parts.model.statuses().states();
    const QDeadlineTimer end(longestTurnMs);
    for (; m_next < m_parts.files.count(); ++m_next) {
        if (m_next % rowsBetweenLooksAtTheClock == 0 && end.hasExpired())
            return;
        const FileItem& item = *m_parts.files.at(m_next);
        const RowStatus::State state = stateOf(item);
        count(state);
        if (!m_isApplied && m_filter.accepts(item, state))
            m_found.push_back(m_next);
    }
    m_turn.stop();
    if (!std::exchange(m_isApplied, true))
        apply();
    showGroups();
    showNumber();
}

void FilterControl::count(RowStatus::State state)
{
    if (state == RowStatus::State::None || state == RowStatus::State::Done)
        return; // as nearly all are
    for (Group& group : m_groups)
        group.count += isInGroup(state, group.group) ? 1 : 0;
}

void FilterControl::apply()
{
    m_parts.ui.mainTableView->showRows(
        m_found,
        [filter = m_filter, model = &m_parts.model](const FileItem& item) {
            return filter.accepts(item, model->statuses().of(item).state);
        },
        std::exchange(m_isChosenAnew, false) ? CustomTableView::InView::CurrentRow
                                             : CustomTableView::InView::TopRow);
    std::vector<int>().swap(m_found);
}

/// Only what the list has can be chosen.
void FilterControl::showGroups()
{
    bool isAny = false;
    for (const Group& group : m_groups) {
        isAny = isAny || group.count > 0;
        group.button->setText(tr(group.text).arg(m_parts.window.locale().toString(group.count)));
        group.button->setVisible(group.count > 0);
        if (group.count == 0 && group.button->isChecked())
            chooseGroup(RowGroup::All);
    }
    m_parts.ui.filterAllButton->setVisible(isAny);
    m_parts.ui.filterBar->setVisible(m_parts.files.count() > 0 || !m_filter.isEmpty());
}

void FilterControl::showNumber()
{
    const ShownRows& shown = m_parts.ui.mainTableView->shownRows();
    const QLocale locale = m_parts.window.locale();
    const QString text = shown.isFiltered()
        ? tr("%1 of %2 shown; all ticked ones convert")
              .arg(locale.toString(shown.rowCount()), locale.toString(m_parts.files.count()))
        : QString();
    if (m_parts.ui.shownLabel->text() != text)
        m_parts.ui.shownLabel->setText(text);
}

} // namespace pagestack
