#include "mainwindow/state/CommandTips.h"

#include "mainwindow/state/ViewState.h"
#include "ui_MainWindow.h"

#include <QEvent>

#include <algorithm>
#include <array>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr const char* purposeProperty = "purpose";

    /// The menu's item of the same command; it has the key.
    const QAction* actionOf(const QAbstractButton* button, const Ui::MainWindow& ui)
    {
        const std::array<std::pair<const QAbstractButton*, const QAction*>, 15> pairs { {
            { ui.addFilesBtn, ui.addFilesAction },
            { ui.addFolderBtn, ui.addFolderAction },
            { ui.importBtn, ui.importAction },
            { ui.removeBtn, ui.removeSelectedAction },
            { ui.removeSelectedFilesButton, ui.removeSelectedAction },
            { ui.removeAllFilesButton, ui.removeAllAction },
            { ui.openFileButton, ui.openFileAction },
            { ui.openEnclosedFolderButton, ui.revealAction },
            { ui.getInfoButton, ui.getInfoAction },
            { ui.selectAllButton, ui.selectAllRowsAction },
            { ui.deselectAllButton, ui.deselectAllRowsAction },
            { ui.moveUpButton, ui.moveUpAction },
            { ui.moveDownButton, ui.moveDownAction },
            { ui.searchBtn, ui.findAction },
            { ui.convertBtn, ui.convertMenuAction },
        } };
        const auto* const found = std::ranges::find(
            pairs, button, &std::pair<const QAbstractButton*, const QAction*>::first);
        if (found != pairs.end())
            return found->second;
        const auto* tool = qobject_cast<const QToolButton*>(button);
        const QAction* own = tool == nullptr ? nullptr : tool->defaultAction();
        return own == ui.exportToolbarItem     ? ui.exportAction
            : own == ui.preferencesToolbarItem ? ui.toggleSettingsAction
                                               : own;
    }

    /// A key that the table answers stands behind the title.
    QString keyOf(const QAbstractButton& button, const QAction* action)
    {
        if (action == nullptr)
            return button.shortcut().toString(QKeySequence::NativeText);
        const QString key = action->shortcut().toString(QKeySequence::NativeText);
        return key.isEmpty() ? action->text().section(u'\t', 1) : key;
    }

    QString nameOf(const QAbstractButton& button)
    {
        QString name = button.text().isEmpty() ? button.accessibleName() : button.text();
        return name.remove(u'&').remove(u"..."_s);
    }

} // namespace

CommandTips::CommandTips(QWidget& window, const Ui::MainWindow& ui, const ViewState& view,
                         QObject* parent)
    : QObject(parent)
    , m_ui(ui)
    , m_view(view)
{
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        if (button->toolTip().isEmpty())
            continue;
        button->setProperty(purposeProperty, button->toolTip());
        button->installEventFilter(this);
        follow(*button);
    }
}

void CommandTips::follow(QAbstractButton& button) const
{
    const QString key = keyOf(button, actionOf(&button, m_ui));
    const QString name = nameOf(button);
    QStringList lines { key.isEmpty() ? name : tr("%1 (%2)").arg(name, key) };
    if (const QString purpose = button.property(purposeProperty).toString(); purpose != name)
        lines.append(purpose);
    if (!button.isEnabled())
        lines.append(m_view.whyDisabled(button));
    lines.removeAll(QString());
    button.setToolTip(lines.join(u'\n'));
}

bool CommandTips::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ToolTip || event->type() == QEvent::EnabledChange)
        follow(*qobject_cast<QAbstractButton*>(watched));
    return QObject::eventFilter(watched, event);
}

} // namespace pagestack
