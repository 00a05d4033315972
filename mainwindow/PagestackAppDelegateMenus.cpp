#include "engine/image/CodecVersions.h"
#include "engine/support/Application.h"
#include "engine/support/Info.h"
#include "engine/support/SystemLog.h"
#include "engine/support/Workspace.h"
#include "filelist/ListEditor.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "ui_MainWindow.h"

#include <QMenu>
#include <QUrl>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString productName = u"Pagestack"_s;

    /// Puts the application's title in place of the product name in the titles of `menu` that
    /// `concerns` names.
    template <typename Concerns>
    void renameItems(QMenu* menu, Concerns concerns)
    {
        if (menu == nullptr)
            return;
        for (QAction* item : menu->actions())
            if (concerns(item->text()))
                item->setText(item->text().replace(productName, getAppTitle(u""_s)));
    }

    /// Shows `key`, which the table itself answers, beside the title of `action`.
    void showTableKey(QAction* action, const QKeySequence& key)
    {
        action->setText(action->text() + u'\t' + key.toString(QKeySequence::NativeText));
    }

} // namespace

void PagestackAppDelegate::setupVersion()
{
    const QList<QAction*> items = m_ui->menuBar->actions();
    const auto beginsWithName = [](const QString& title) { return title.startsWith(productName); };
    renameItems(items.first()->menu(),
                [](const QString& title) { return title.endsWith(productName); });
    renameItems(m_ui->menuWindow, beginsWithName);
    renameItems(items.last()->menu(), beginsWithName);
}

void PagestackAppDelegate::setupToolbarAndMenuItems()
{
    m_ui->mainToolBar->setMovable(false);
    m_ui->mainToolBar->setContextMenuPolicy(Qt::PreventContextMenu);
    m_window->setContextMenuPolicy(Qt::NoContextMenu);
    // Tool bars leave their own buttons to the mouse.
    for (QAction* action : { m_ui->exportToolbarItem, m_ui->preferencesToolbarItem })
        m_ui->mainToolBar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    // Qt's own icon for what has no room is black on black.
    if (auto* more = m_ui->mainToolBar->findChild<QToolButton*>(u"qt_toolbar_ext_button"_s)) {
        more->setIcon(symbolicIcon(u"more"_s));
        more->setAccessibleName(tr("More"));
    }
}

/// The other items of the menus press the buttons that do the same: see the description of the
/// window.
void PagestackAppDelegate::connectMenus()
{
    using Self = PagestackAppDelegate;
    const auto on = [this](QAction* action, void (Self::*command)()) {
        connect(action, &QAction::triggered, this, command);
    };
    on(m_ui->exportAction, &Self::exportAction);
    on(m_ui->openFileAction, &Self::openFileWithFinder);
    on(m_ui->revealAction, &Self::openFileEnclosingFolder);
    on(m_ui->getInfoAction, &Self::getInfoFile);
    on(m_ui->quitAction, &Self::quitAction);
    on(m_ui->aboutAction, &Self::aboutAction);
    on(m_ui->openAppAction, &Self::openAppAction);
    on(m_ui->helpAction, &Self::helpAction);
    on(m_ui->websiteAction, &Self::websiteAction);
    m_ui->websiteAction->setVisible(!website.isEmpty());
    on(m_ui->toggleSettingsAction, &Self::toggleSettings);
    on(m_ui->preferencesAction, &Self::preferencesAction);
    for (const QAction* action :
         { m_ui->checkAllAction, m_ui->uncheckAllAction, m_ui->invertCheckAction })
        connect(action, &QAction::triggered, this,
                [this, action] { checkUncheckInvertAction(action); });
    for (const QAction* action :
         { m_ui->checkSelectionAction, m_ui->uncheckSelectionAction, m_ui->invertSelectionAction })
        connect(action, &QAction::triggered, this,
                [this, action] { checkUncheckInvertSelectionAction(action); });
    const QUndoStack* history = &m_editor->history();
    connect(m_ui->undoAction, &QAction::triggered, history, &QUndoStack::undo);
    connect(m_ui->redoAction, &QAction::triggered, history, &QUndoStack::redo);
    showTableKey(m_ui->moveUpAction, Qt::CTRL | Qt::Key_Up);
    showTableKey(m_ui->moveDownAction, Qt::CTRL | Qt::Key_Down);
    showTableKey(m_ui->invertSelectionAction, Qt::Key_Space);
    showTableKey(m_ui->removeSelectedAction, Qt::Key_Delete);
}

void PagestackAppDelegate::preferencesAction()
{
    if (pane().isHidden())
        toggleSettings();
    pane().takeKeys();
}

void PagestackAppDelegate::websiteAction()
{
    m_services.workspace.openURL(QUrl(website.toString()));
}

void PagestackAppDelegate::helpAction()
{
    try {
        QString guide = pathForResource(
            tr("MACPagestack1", "file of the guide, which may be another in another language"),
            u"pdf"_s);
        if (guide.isEmpty())
            guide = pathForResource(u"MACPagestack1"_s, u"pdf"_s);
        m_services.workspace.openURL(QUrl::fromLocalFile(guide));
    } catch (const std::exception& error) {
        systemLog(u"Error in [helpAction:] : "_s + QString::fromUtf8(error.what()));
    }
}

void PagestackAppDelegate::aboutAction()
{
    m_services.ask(m_window.get(), AlertPanel::Style::Informational,
                   tr("Pagestack %1 turns TIFF files into images.\n\n%2")
                       .arg(QCoreApplication::applicationVersion(), codecVersions().join(u"\n"_s)));
}

} // namespace pagestack
