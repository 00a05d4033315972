#include "engine/support/Application.h"
#include "engine/support/SystemLog.h"
#include "filelist/ListEditor.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "ui_MainWindow.h"

#include <numeric>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    int tagOf(const QObject* sender) { return sender->property("tag").toInt(); }

    QList<int> allRows(const FileList& files)
    {
        QList<int> rows(files.count());
        std::iota(rows.begin(), rows.end(), 0);
        return rows;
    }

} // namespace

void PagestackAppDelegate::connectListCommands()
{
    CustomTableView* table = m_ui->mainTableView;
    connect(table, &CustomTableView::removeRequested, this, &PagestackAppDelegate::removeAction);
    connect(table, &CustomTableView::moveUpRequested, m_ui->moveUpButton, &QToolButton::click);
    connect(table, &CustomTableView::moveDownRequested, m_ui->moveDownButton, &QToolButton::click);
    connect(table, &CustomTableView::sortRequested, this,
            &PagestackAppDelegate::sortDescriptorsDidChange);
    connect(table, &CustomTableView::invertRequested, this, [this](const QList<int>& rows) {
        m_editor->mark(rows, FileTableModel::Mark::Invert);
        updateTotalLabel(); // also when no row is highlighted
    });
    connect(m_ui->removeBtn, &QPushButton::clicked, this, &PagestackAppDelegate::removeAction);
    connect(m_ui->moveUpButton, &QToolButton::clicked, this, &PagestackAppDelegate::moveUp);
    connect(m_ui->moveDownButton, &QToolButton::clicked, this, &PagestackAppDelegate::moveDown);
    for (QToolButton* button : { m_ui->selectAllButton, m_ui->deselectAllButton,
                                 m_ui->removeAllFilesButton, m_ui->removeSelectedFilesButton })
        connect(button, &QToolButton::clicked, this,
                [this, button] { selectDeselectRemoveAction(button); });
    connect(m_editor.get(), &ListEditor::stepped, this, &PagestackAppDelegate::showStep);
    connect(m_editor.get(), &ListEditor::sorted, table, &CustomTableView::setSortOrders);
}

void PagestackAppDelegate::checkUncheckInvertSelectionAction(const QObject* sender)
{
    checkUncheckInvertSelection(tagOf(sender));
}

void PagestackAppDelegate::checkUncheckInvertAction(const QObject* sender)
{
    checkUncheckInvertAll(tagOf(sender));
}

void PagestackAppDelegate::selectDeselectRemoveAction(const QObject* sender)
{
    selectDeselectRemoveAll(tagOf(sender));
}

void PagestackAppDelegate::checkUncheckInvertSelection(int tag)
{
    try {
        markByTag(m_ui->mainTableView->highlightedRows(), tag);
    } catch (const std::exception& error) {
        systemLogError(u"checkUncheckInvertSelection:"_s, error);
    }
    followList();
}

void PagestackAppDelegate::checkUncheckInvertAll(int tag)
{
    try {
        markByTag(allRows(m_files), tag);
    } catch (const std::exception& error) {
        systemLogError(u"checkUncheckInvertAll:"_s, error);
    }
    followList();
}

void PagestackAppDelegate::markByTag(const QList<int>& rows, int tag)
{
    if (m_worker)
        return;
    if (tag == 1)
        m_editor->mark(rows, FileTableModel::Mark::Check);
    else if (tag == 2)
        m_editor->mark(rows, FileTableModel::Mark::Uncheck);
    else if (tag == 3)
        m_editor->mark(rows, FileTableModel::Mark::Invert);
}

void PagestackAppDelegate::selectDeselectRemoveAll(int tag)
{
    try {
        CustomTableView* table = m_ui->mainTableView;
        if (tag == 1) {
            table->selectAll();
        } else if (tag == 2) {
            if (m_files.count() > 0)
                table->highlightRows({ 0 });
        } else if (tag == 3) {
            m_services.alerts.ask(m_window.get(), AlertPanel::Style::Informational,
                                  getAppTitle(u""_s), tr("Are you sure to remove all file(s)?"),
                                  { tr("Yes"), tr("No") }, [this](int button) {
                                      if (button == 0)
                                          removeRows(allRows(m_files));
                                  });
        } else if (tag == 4) {
            removeRows(table->highlightedRows());
        }
    } catch (const std::exception& error) {
        systemLogError(u"selectDeselectRemoveAll:"_s, error);
    }
}

void PagestackAppDelegate::removeAction()
{
    endEditing();
    removeFiles();
}

void PagestackAppDelegate::removeFiles()
{
    try {
        if (const QList<int> rows = m_ui->mainTableView->highlightedRows(); !rows.isEmpty())
            removeRows(rows);
    } catch (const std::exception& error) {
        systemLogError(u"remove"_s, error);
    }
}

/// Takes rows off the list; the files stay where they are.
void PagestackAppDelegate::removeRows(const QList<int>& rows)
{
    if (m_worker)
        return;
    m_ui->mainTableView->clearSelection();
    m_editor->remove(rows, tr("Remove %n File(s)", nullptr, static_cast<int>(rows.size())));
    followList();
}

void PagestackAppDelegate::moveUp()
{
    if (m_worker || !m_editor->moveUp(m_ui->mainTableView->highlightedRows()))
        return;
    m_ui->mainTableView->setFocus();
    scrollToRow(m_ui->mainTableView->highlightedSpan().first);
    updateMoveButtons();
}

void PagestackAppDelegate::moveDown()
{
    if (m_worker || !m_editor->moveDown(m_ui->mainTableView->highlightedRows()))
        return;
    m_ui->mainTableView->setFocus();
    scrollToRow(m_ui->mainTableView->highlightedSpan().second);
    updateMoveButtons();
}

/// After a step back or forth: what it concerned is highlighted and in view.
void PagestackAppDelegate::showStep(const QList<int>& rows)
{
    if (!rows.isEmpty()) {
        m_ui->mainTableView->highlightRows(rows);
        scrollToRow(rows.first());
    }
    followList();
}

void PagestackAppDelegate::followList()
{
    resetView(!m_worker);
    updateTotalLabel();
}

} // namespace pagestack
