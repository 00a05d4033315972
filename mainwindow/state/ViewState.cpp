#include "mainwindow/state/ViewState.h"

#include "engine/plan/ChosenPages.h"
#include "engine/support/Dates.h"
#include "filelist/FileTableModel.h"
#include "filelist/ListChanges.h"
#include "mainwindow/settings/RunChoices.h"
#include "ui_MainWindow.h"

#include <QUndoStack>

#include <initializer_list>
#include <utility>

namespace pagestack {

namespace {

    // Files. Those of a longer list are counted in a turn of the event loop of their own.
    constexpr int mostCountedAtOnce = 10000;
    constexpr int totalsPauseMs = 30;

    void setEnabled(bool isEnabled, std::initializer_list<QWidget*> controls,
                    std::initializer_list<QAction*> actions)
    {
        for (QWidget* control : controls)
            control->setEnabled(isEnabled);
        for (QAction* action : actions)
            action->setEnabled(isEnabled);
    }

} // namespace

ViewState::ViewState(QMainWindow& window, Ui::MainWindow& ui, const FileList& files,
                     const QUndoStack& history)
    : m_window(window)
    , m_ui(ui)
    , m_files(files)
    , m_history(history)
    , m_totals(0, [this] { showTotals(); })
{
    ui.lableDragAndDrop->setAttribute(Qt::WA_TransparentForMouseEvents);
    QSizePolicy keepingItsPlace = ui.loadingIndicator->sizePolicy();
    keepingItsPlace.setRetainSizeWhenHidden(true);
    ui.loadingIndicator->setSizePolicy(keepingItsPlace);
    const QAbstractItemModel* model = ui.mainTableView->model();
    onListChange(*model, this, &ViewState::follow);
    connect(ui.mainTableView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ViewState::follow);
    connect(&history, &QUndoStack::indexChanged, this, &ViewState::follow);
    connect(model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
                if (first.column() <= FileTableModel::PagesToConvert
                    && last.column() >= FileTableModel::PagesToConvert
                    && roles.contains(Qt::EditRole))
                    m_totals.start();
            });
    connect(&ui.rightBox->choices(), &RunChoices::changed, this, &ViewState::showTotals);
}

void ViewState::resetView(bool enable)
{
    m_isViewEnabled = enable;
    for (QAction* item : m_ui.mainToolBar->actions())
        item->setEnabled(enable);
    follow();
    followTotals();
    m_ui.rightBox->followSettings();
}

void ViewState::setListReadable(bool isReadable)
{
    m_isListReadable = isReadable;
    follow();
}

/// Who is enabled when.
void ViewState::follow()
{
    const Ui::MainWindow& ui = m_ui;
    const bool isIdle = m_isViewEnabled;
    const bool hasFiles = isIdle && m_files.count() > 0;
    // The span takes the time of the highlight, and a load comes here with each file.
    const auto [first, last] = isIdle ? ui.mainTableView->highlightedSpan() : std::pair(-1, -1);
    const bool hasHighlight = hasFiles && first >= 0;

    // The pane is among them since it would change what a run reads.
    setEnabled(isIdle,
               { ui.importBtn, ui.addFilesBtn, ui.addFolderBtn, ui.searchBtn,
                 ui.inculdeSubfoldersBtn, ui.findBar, ui.rightBox },
               { ui.addFilesAction, ui.addFolderAction, ui.importAction, ui.toggleSettingsAction,
                 ui.preferencesAction, ui.pasteAction });
    ui.mainTableView->setEnabled(isIdle || m_isListReadable);
    ui.mainTableView->setReadOnly(!isIdle);
    setEnabled(hasFiles,
               { ui.removeBtn, ui.openFileButton, ui.getInfoButton, ui.openEnclosedFolderButton,
                 ui.selectAllButton, ui.deselectAllButton, ui.removeSelectedFilesButton,
                 ui.removeAllFilesButton },
               { ui.exportToolbarItem, ui.exportAction, ui.selectAllRowsAction,
                 ui.deselectAllRowsAction, ui.checkAllAction, ui.uncheckAllAction,
                 ui.invertCheckAction, ui.tickFailedAction, ui.removeConvertedAction,
                 ui.removeAllAction, ui.findAction });
    setEnabled(hasHighlight, {},
               { ui.cutAction, ui.copyAction, ui.openFileAction, ui.revealAction, ui.getInfoAction,
                 ui.checkSelectionAction, ui.uncheckSelectionAction, ui.invertSelectionAction,
                 ui.removeSelectedAction });
    const bool isWhole = !ui.mainTableView->shownRows().isFiltered();
    setEnabled(isWhole && first > 0, { ui.moveUpButton }, { ui.moveUpAction });
    setEnabled(isWhole && hasHighlight && last != m_files.count() - 1, { ui.moveDownButton },
               { ui.moveDownAction });
    setEnabled(isIdle && m_history.canUndo(), {}, { ui.undoAction });
    setEnabled(isIdle && m_history.canRedo(), {}, { ui.redoAction });
    ui.undoAction->setText(tr("&Undo %1").arg(m_history.undoText()).trimmed());
    ui.redoAction->setText(tr("&Redo %1").arg(m_history.redoText()).trimmed());
    ui.lableDragAndDrop->setVisible(m_files.count() == 0);
    for (QPushButton* button : { ui.emptyAddFilesButton, ui.emptyAddFolderButton }) {
        button->setVisible(m_files.count() == 0);
        button->setEnabled(isIdle);
    }
}

QString ViewState::whyDisabled(const QWidget& control) const
{
    if (m_ui.rightBox->isAncestorOf(&control) && m_ui.rightBox->isEnabled())
        return {}; // the pane knows
    if (m_ui.previewBox->isAncestorOf(&control))
        return {}; // works all the time
    if (!m_isViewEnabled)
        return tr("Not while files are being added, sorted or converted.");
    if (m_files.count() == 0)
        return tr("The list is empty.");
    if (&control == m_ui.convertBtn)
        return tr("No page that can be read is ticked.");
    if (&control != m_ui.moveUpButton && &control != m_ui.moveDownButton)
        return {};
    if (m_ui.mainTableView->highlightedSpan().first < 0)
        return tr("No row is highlighted.");
    if (m_ui.mainTableView->shownRows().isFiltered())
        return tr("Not while the filter hides rows.");
    return &control == m_ui.moveUpButton ? tr("The first row is among those highlighted.")
                                         : tr("The last row is among those highlighted.");
}

void ViewState::resetViewForProcess(bool enable)
{
    setEnabled(enable, { m_ui.convertBtn, m_ui.cancelBtn },
               { m_ui.convertMenuAction, m_ui.cancelMenuAction });
}

void ViewState::startProcess()
{
    m_labelGroup = QPalette::Disabled;
    followPalette();
    setIsProcessing(true);
    m_ui.loadingIndicator->show();
}

void ViewState::stopProcess()
{
    m_labelGroup = QPalette::Active;
    followPalette();
    setIsProcessing(false);
    m_ui.loadingIndicator->hide();
    m_ui.rightBox->setSplitOptions();
    updateTotalLabel();
}

/// What is loaded or sorted cannot be converted meanwhile.
void ViewState::followTotals()
{
    setEnabled(m_isViewEnabled && m_files.checkedPages() > 0, { m_ui.convertBtn },
               { m_ui.convertMenuAction });
}

void ViewState::updateTotalLabel()
{
    updateTotalPagesLabel();
    followTotals();
    if (m_files.count() > mostCountedAtOnce)
        m_totals.start(totalsPauseMs);
    else
        showTotals();
    updateTimeTakenLabel(QString());
}

void ViewState::showTotals()
{
    const RunOptions& options = m_ui.rightBox->choices().options();
    ChosenPageCounter counter(options);
    qint64 pages = 0;
    for (const FileList::Item& item : m_files.items())
        if (item->isSelected())
            pages += counter.count(*item);
    m_ui.labelTotalFiles->setText(
        tr("%1 Total file(s); %2 file selected; Total page count of selected TIFF file(s): %3")
            .arg(m_files.count())
            .arg(m_files.checkedCount())
            .arg(pages));
}

void ViewState::updateTotalPagesLabel()
{
    m_ui.labelTotalTIFFPages->setText(tr("Total Pages TIFF : %1").arg(m_files.totalPages()));
}

void ViewState::updateTimeTakenLabel(const QString& text)
{
    m_ui.labelTimeTaken->setText(text.isNull() ? zeroTotalTimeTakenText() : text);
}

void ViewState::setIsProcessing(bool isProcessing)
{
    if (m_isProcessing.exchange(isProcessing) != isProcessing)
        emit isProcessingChanged(isProcessing);
}

void ViewState::setProcessingLabelColor(const QColor& color)
{
    m_processingLabelColor = color;
    QPalette palette; // the other colours stay those of the window
    palette.setColor(QPalette::WindowText, color);
    for (QWidget* label : std::initializer_list<QWidget*> {
             m_ui.labelTotalFiles, m_ui.labelTotalTIFFPages, m_ui.labelTimeTaken })
        label->setPalette(palette);
    emit processingLabelColorChanged(color);
}

void ViewState::followPalette()
{
    setProcessingLabelColor(m_window.palette().color(m_labelGroup, QPalette::WindowText));
}

} // namespace pagestack
