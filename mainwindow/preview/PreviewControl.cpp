#include "mainwindow/preview/PreviewControl.h"

#include "engine/settings/Settings.h"
#include "engine/settings/UserDefaults.h"
#include "filelist/FileList.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/settings/RunChoices.h"
#include "mainwindow/state/ViewState.h"
#include "ui_MainWindow.h"

#include <QLayout>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString showPreviewKey = u"SHOWPREVIEW"_s;
    constexpr int followMs = 50;

} // namespace

PreviewControl::PreviewControl(const WindowParts& parts, Settings& settings)
    : m_parts(parts)
    , m_rest(followMs, [this] { follow(); })
{
    const RunChoices& choices = parts.ui.rightBox->choices();
    PreviewPane* const pane = parts.ui.previewBox;
    pane->hide();
    pane->bind([&choices] { return choices.all(); });
    connect(&choices, &RunChoices::changed, pane, &PreviewPane::refreshResult);
    connect(&settings, &Settings::outputTypeChanged, pane, &PreviewPane::refreshResult);
    connect(&settings, &Settings::jpegQualityChanged, pane, &PreviewPane::refreshResult);
    connect(&settings, &Settings::tiffCompressionIndexChanged, pane, &PreviewPane::refreshResult);
    connect(parts.ui.togglePreviewAction, &QAction::triggered, this, &PreviewControl::toggle);

    const auto later = [this] {
        if (!m_parts.ui.previewBox->isHidden())
            m_rest.start();
    };
    const QItemSelectionModel* rows = parts.ui.mainTableView->selectionModel();
    connect(rows, &QItemSelectionModel::selectionChanged, this, later);
    connect(rows, &QItemSelectionModel::currentRowChanged, this, later);
    connect(&parts.model, &QAbstractItemModel::rowsRemoved, this, later);
    connect(&parts.model, &QAbstractItemModel::modelReset, this, later);
    // A run may have replaced what is shown.
    connect(&parts.view, &ViewState::isProcessingChanged, this, later);
}

void PreviewControl::restore() { show(m_parts.services.defaults.boolForKey(showPreviewKey)); }

void PreviewControl::toggle()
{
    const bool isShown = m_parts.ui.previewBox->isHidden();
    m_parts.services.defaults.setBool(showPreviewKey, isShown);
    m_parts.services.synchronize(&m_parts.window);
    if (isShown)
        makeRoom();
    else
        giveKeysAndRoomBack();
    show(isShown);
}

void PreviewControl::show(bool show)
{
    m_parts.ui.togglePreviewAction->setChecked(show);
    m_parts.ui.previewBox->setVisible(show);
    if (show)
        follow();
    else
        m_parts.ui.previewBox->release();
}

bool PreviewControl::hasOwnWidth() const
{
    return !m_parts.window.isMaximized() && !m_parts.window.isFullScreen();
}

/// The window becomes wider by the preview, as far as the screen allows; the list gives the rest.
void PreviewControl::makeRoom()
{
    if (!hasOwnWidth())
        return;
    QMainWindow& window = m_parts.window;
    m_widthBefore = window.width();
    const int wanted
        = m_parts.ui.previewBox->sizeHint().width() + m_parts.ui.mainSplitView->handleWidth();
    const QRect screen = window.screen()->availableGeometry();
    const QRect frame = window.frameGeometry();
    const int added = std::clamp(screen.width() - frame.width(), 0, wanted);
    const int beyond = frame.right() + added - screen.right();
    if (added > 0 && beyond > 0)
        window.move(std::max(frame.x() - beyond, screen.x()), frame.y());
    window.resize(window.width() + added, window.height());
}

void PreviewControl::giveKeysAndRoomBack()
{
    QMainWindow& window = m_parts.window;
    if (m_parts.ui.previewBox->isAncestorOf(window.focusWidget()))
        m_parts.ui.mainTableView->setFocus();
    const int before = std::exchange(m_widthBefore, 0);
    if (before == 0 || !hasOwnWidth() || window.width() <= before)
        return;
    const int given = m_parts.ui.previewBox->width() + m_parts.ui.mainSplitView->handleWidth();
    const int width = std::max(before, window.width() - given);
    m_parts.ui.previewBox->hide();
    // The window does not know at once that it needs the width no more.
    m_parts.ui.mainSplitView->refresh();
    m_parts.ui.centralLayout->activate();
    window.layout()->activate();
    window.resize(width, window.height());
}

/// The file that has the keys, else the first that is highlighted.
QString PreviewControl::highlightedPath() const
{
    const CustomTableView& table = *m_parts.ui.mainTableView;
    const QModelIndex current = table.currentIndex();
    const int row = table.selectionModel()->isRowSelected(current.row())
        ? table.currentRow()
        : table.highlightedSpan().first;
    if (row < 0 || row >= m_parts.files.count())
        return {};
    return m_parts.files.items().at(row)->localFile();
}

void PreviewControl::follow()
{
    if (!m_parts.ui.previewBox->isHidden())
        m_parts.ui.previewBox->showFile(highlightedPath());
}

} // namespace pagestack
