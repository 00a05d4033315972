#include "filelist/ListEditor.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "ui_MainWindow.h"

#include <QMenu>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// Shows `key`, which the table itself answers, beside the title of `action`.
    void showTableKey(QAction* action, const QKeySequence& key)
    {
        action->setText(action->text() + u'\t' + key.toString(QKeySequence::NativeText));
    }

} // namespace

void PagestackAppDelegate::connectMenus()
{
    connectProgramMenus();
    connectListMenus();
    makeContextMenu();
    showTableKey(m_ui->moveUpAction, Qt::CTRL | Qt::Key_Up);
    showTableKey(m_ui->moveDownAction, Qt::CTRL | Qt::Key_Down);
    showTableKey(m_ui->invertSelectionAction, Qt::Key_Space);
    showTableKey(m_ui->removeSelectedAction, Qt::Key_Delete);
}

void PagestackAppDelegate::connectProgramMenus()
{
    const auto on = [this](QAction* action, void (PagestackAppDelegate::*command)()) {
        connect(action, &QAction::triggered, this, command);
    };
    on(m_ui->addFilesAction, &PagestackAppDelegate::addFiles);
    on(m_ui->addFolderAction, &PagestackAppDelegate::addFolder);
    on(m_ui->importAction, &PagestackAppDelegate::importAction);
    on(m_ui->exportAction, &PagestackAppDelegate::exportAction);
    on(m_ui->exportToolbarItem, &PagestackAppDelegate::exportAction);
    on(m_ui->convertMenuAction, &PagestackAppDelegate::convertAction);
    on(m_ui->cancelMenuAction, &PagestackAppDelegate::cancelAction);
    on(m_ui->quitAction, &PagestackAppDelegate::quitAction);
    on(m_ui->aboutAction, &PagestackAppDelegate::aboutAction);
    on(m_ui->openAppAction, &PagestackAppDelegate::openAppAction);
    on(m_ui->helpAction, &PagestackAppDelegate::helpAction);
    on(m_ui->websiteAction, &PagestackAppDelegate::websiteAction);
    on(m_ui->toggleSettingsAction, &PagestackAppDelegate::toggleSettings);
    on(m_ui->preferencesToolbarItem, &PagestackAppDelegate::toggleSettings);
    connect(m_ui->minimizeAction, &QAction::triggered, m_window.get(), &QWidget::showMinimized);
    connect(m_ui->helpHyperlink, &QAbstractButton::clicked, this,
            &PagestackAppDelegate::helpAction);
    m_ui->quitAction->setMenuRole(QAction::QuitRole);
    m_ui->aboutAction->setMenuRole(QAction::AboutRole);
}

void PagestackAppDelegate::connectListMenus()
{
    const auto on = [this](QAction* action, void (PagestackAppDelegate::*command)()) {
        connect(action, &QAction::triggered, this, command);
    };
    const auto byTag
        = [this](QAction* action, void (PagestackAppDelegate::*command)(const QObject* sender)) {
              connect(action, &QAction::triggered, this,
                      [this, action, command] { (this->*command)(action); });
          };
    on(m_ui->openFileAction, &PagestackAppDelegate::openFileWithFinder);
    on(m_ui->revealAction, &PagestackAppDelegate::openFileEnclosingFolder);
    on(m_ui->getInfoAction, &PagestackAppDelegate::getInfoFile);
    on(m_ui->removeSelectedAction, &PagestackAppDelegate::removeAction);
    on(m_ui->findAction, &PagestackAppDelegate::searchAction);
    connect(m_ui->moveUpAction, &QAction::triggered, m_ui->moveUpButton, &QToolButton::click);
    connect(m_ui->moveDownAction, &QAction::triggered, m_ui->moveDownButton, &QToolButton::click);
    for (QAction* action :
         { m_ui->checkAllAction, m_ui->uncheckAllAction, m_ui->invertCheckAction })
        byTag(action, &PagestackAppDelegate::checkUncheckInvertAction);
    for (QAction* action :
         { m_ui->checkSelectionAction, m_ui->uncheckSelectionAction, m_ui->invertSelectionAction })
        byTag(action, &PagestackAppDelegate::checkUncheckInvertSelectionAction);
    for (QAction* action :
         { m_ui->selectAllRowsAction, m_ui->deselectAllRowsAction, m_ui->removeAllAction })
        byTag(action, &PagestackAppDelegate::selectDeselectRemoveAction);

    QUndoStack* history = &m_editor->history();
    connect(m_ui->undoAction, &QAction::triggered, history, &QUndoStack::undo);
    connect(m_ui->redoAction, &QAction::triggered, history, &QUndoStack::redo);
    connect(history, &QUndoStack::indexChanged, this, &PagestackAppDelegate::followMenus);
    connect(m_ui->openFileButton, &QToolButton::clicked, m_ui->openFileAction, &QAction::trigger);
    connect(m_ui->openEnclosedFolderButton, &QToolButton::clicked, m_ui->revealAction,
            &QAction::trigger);
    connect(m_ui->getInfoButton, &QToolButton::clicked, m_ui->getInfoAction, &QAction::trigger);
}

void PagestackAppDelegate::makeContextMenu()
{
    m_filesContextMenu = new QMenu(m_window.get());
    m_filesContextMenu->setObjectName(u"filesContextMenu"_s);
    m_filesContextMenu->addActions(
        { m_ui->openFileAction, m_ui->revealAction, m_ui->getInfoAction });
    m_filesContextMenu->addSeparator();
    m_filesContextMenu->addActions(
        { m_ui->checkSelectionAction, m_ui->uncheckSelectionAction, m_ui->invertSelectionAction });
    m_filesContextMenu->addSeparator();
    m_filesContextMenu->addActions({ m_ui->moveUpAction, m_ui->moveDownAction });
    m_filesContextMenu->addSeparator();
    m_filesContextMenu->addActions({ m_ui->selectAllRowsAction, m_ui->deselectAllRowsAction });
    m_filesContextMenu->addSeparator();
    m_filesContextMenu->addActions({ m_ui->removeSelectedAction, m_ui->removeAllAction });
    m_ui->mainTableView->setContextMenu(m_filesContextMenu);
}

/// Menu items are enabled when they have something to act on.
void PagestackAppDelegate::followMenus()
{
    const bool hasFiles = m_isViewEnabled && m_files.count() > 0;
    for (QAction* action :
         { m_ui->exportAction, m_ui->selectAllRowsAction, m_ui->deselectAllRowsAction,
           m_ui->checkAllAction, m_ui->uncheckAllAction, m_ui->invertCheckAction,
           m_ui->removeAllAction, m_ui->findAction })
        action->setEnabled(hasFiles);
    const bool hasHighlight = hasFiles && m_ui->mainTableView->highlightedSpan().first >= 0;
    for (QAction* action : { m_ui->openFileAction, m_ui->revealAction, m_ui->getInfoAction,
                             m_ui->checkSelectionAction, m_ui->uncheckSelectionAction,
                             m_ui->invertSelectionAction, m_ui->removeSelectedAction })
        action->setEnabled(hasHighlight);
    m_ui->moveUpAction->setEnabled(m_ui->moveUpButton->isEnabled());
    m_ui->moveDownAction->setEnabled(m_ui->moveDownButton->isEnabled());
    const QUndoStack& history = m_editor->history();
    m_ui->undoAction->setEnabled(m_isViewEnabled && history.canUndo());
    m_ui->redoAction->setEnabled(m_isViewEnabled && history.canRedo());
    m_ui->undoAction->setText(tr("&Undo %1").arg(history.undoText()).trimmed());
    m_ui->redoAction->setText(tr("&Redo %1").arg(history.redoText()).trimmed());
}

} // namespace pagestack
