#include "engine/support/Application.h"
#include "engine/support/SystemLog.h"
#include "filelist/FileTableModel.h"
#include "filelist/ListEditor.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "ui_MainWindow.h"

#include <QFileInfo>

namespace pagestack {

using namespace Qt::StringLiterals;

void PagestackAppDelegate::convertAction() { split(); }

void PagestackAppDelegate::split()
{
    if (m_worker || !m_ui->convertBtn->isEnabled())
        return; // the menu's shortcut comes here too
    endEditing();
    try {
        m_process = std::make_unique<Process>(
            &m_services.workspace, [this](const QString& text) { updateTimeTakenLabel(text); });
        m_process->setIsCombining(true);
        m_process->setSettings(m_settings.get());
        const QString folder = m_settings->outputFolderPath();
        if (folder.isEmpty())
            m_services.alerts.ask(
                m_window.get(), AlertPanel::Style::Critical, getAppTitle(u""_s),
                tr("No output folder selected, file(s) will be saved in source folder.\n"
                   "Do you want to continue?"),
                { tr("Yes"), tr("No") },
                [this](int button) { button == 0 ? beginRun() : refuseOutputFolder(); });
        else if (!QFileInfo::exists(folder))
            refuse(tr("Output folder missing or invalid path!\r\n"
                      "Please select valid output folder."));
        else if (!QFileInfo(folder).isWritable())
            refuse(tr("Output folder is non-writable!\r\n"
                      "Please select writable output folder."));
        else
            beginRun();
    } catch (const std::exception& error) {
        systemLogError(u"Split"_s, error);
    }
}

void PagestackAppDelegate::refuse(const QString& text)
{
    m_services.alerts.ask(m_window.get(), AlertPanel::Style::Critical, getAppTitle(u""_s), text, {},
                          [this](int) { refuseOutputFolder(); });
}

void PagestackAppDelegate::refuseOutputFolder()
{
    m_ui->settingTabView->setCurrentIndex(1);
    if (!m_showSettings)
        toggleSettings();
    // What follows the folder's field takes the keys: the button that chooses one.
    if (QWidget* next = m_ui->outputFolderPath->nextInFocusChain())
        next->setFocus();
}

void PagestackAppDelegate::beginRun()
{
    if (m_worker)
        return; // a load has begun while the user was asked
    try {
        m_ui->settingTabView->setCurrentIndex(0);
        QList<OutputFile> outputs;
        for (const std::shared_ptr<FileItem>& item : m_files.items()) {
            if (!item->isSelected())
                continue;
            OutputFile output;
            output.filename = item->filePath().toLocalFile();
            output.fileItems = { item };
            outputs.append(output);
        }
        startRun(outputs, false);
    } catch (const std::exception& error) {
        systemLogError(u"Split"_s, error);
    }
}

/// Outputs that were not planned are, by the run's thread, before anything is written.
void PagestackAppDelegate::startRun(const QList<OutputFile>& outputs, bool isPlanned)
{
    m_process->setOutputFiles(outputs);
    m_process->setTotalFileSelected(static_cast<int>(outputs.size()));
    m_processViewPanel->follow(*m_process, m_files.checkedPages());
    resetView(false);
    startProcess();
    m_ui->loadingIndicator->hide();
    resetViewForProcess(false);
    Process* job = m_process.get();
    startWorker([this, job, isPlanned] {
        if (isPlanned || isPlanClear(*job))
            job->start();
    });
    m_processViewPanel->open();
}

void PagestackAppDelegate::cancelAction()
{
    ++m_cancelCount;
    setIsProcessing(false);
}

void PagestackAppDelegate::cancelProcessAction()
{
    if (m_process)
        m_process->setIsCombining(false);
}

void PagestackAppDelegate::viewLogAction()
{
    if (m_process)
        m_process->viewLog();
}

void PagestackAppDelegate::closeProcessAction()
{
    finishWorker(); // the job is complete, its thread about to end
    m_processViewPanel->hide();
    m_processViewPanel->stopFollowing();
    if (m_settings && m_settings->isClearProcessedFiles()) {
        removeConverted();
    }
    leaveRun();
    m_process.reset();
}

void PagestackAppDelegate::leaveRun()
{
    resetViewForProcess(true);
    stopProcess();
    resetView(true);
    m_ui->mainTableView->setFocus();
}

void PagestackAppDelegate::removeConverted()
{
    QList<int> rows;
    for (int row = 0; row < m_files.count(); ++row)
        if (m_files.at(row)->isSelected())
            rows.append(row);
    m_ui->mainTableView->clearSelection();
    m_editor->remove(rows,
                     tr("Remove %n Converted File(s)", nullptr, static_cast<int>(rows.size())));
}

void PagestackAppDelegate::startProcess()
{
    m_labelGroup = QPalette::Disabled;
    followPalette();
    setIsProcessing(true);
    m_ui->loadingIndicator->show();
}

void PagestackAppDelegate::stopProcess()
{
    m_labelGroup = QPalette::Active;
    followPalette();
    setIsProcessing(false);
    m_ui->loadingIndicator->hide();
    setSplitOptions(m_settings->outputType());
    updateTotalLabel();
}

void PagestackAppDelegate::resetView(bool enable)
{
    const bool hasFiles = m_files.count() > 0;
    try {
        m_ui->removeBtn->setEnabled(enable && hasFiles);
        for (QWidget* control : std::initializer_list<QWidget*> {
                 m_ui->importBtn, m_ui->addFilesBtn, m_ui->addFolderBtn, m_ui->searchBtn,
                 m_ui->inculdeSubfoldersBtn, m_ui->mainTableView, m_ui->findBar })
            control->setEnabled(enable);
        for (QAction* item : m_ui->mainToolBar->actions())
            item->setEnabled(enable);
        for (QAction* item : { m_ui->addFilesAction, m_ui->addFolderAction,
                               m_ui->toggleSettingsAction, m_ui->importAction })
            item->setEnabled(enable);
        m_ui->exportToolbarItem->setEnabled(enable && hasFiles);
        for (QWidget* button : std::initializer_list<QWidget*> {
                 m_ui->openFileButton, m_ui->getInfoButton, m_ui->openEnclosedFolderButton,
                 m_ui->selectAllButton, m_ui->deselectAllButton, m_ui->removeSelectedFilesButton,
                 m_ui->removeAllFilesButton })
            button->setEnabled(enable && hasFiles);
        m_isViewEnabled = enable;
        updateMoveButtons();
        updateConvertControls();
        // The pane would change what a run reads.
        m_ui->rightBox->setEnabled(enable);
        followOutputFolder();
        showQuality();
    } catch (const std::exception& error) {
        systemLogError(u"resetView:"_s, error);
    }
    m_ui->lableDragAndDrop->setVisible(!hasFiles);
    m_window->update();
}

void PagestackAppDelegate::resetViewForProcess(bool enable)
{
    try {
        m_ui->convertBtn->setEnabled(enable);
        m_ui->cancelBtn->setEnabled(enable);
        m_ui->convertMenuAction->setEnabled(enable);
        m_ui->cancelMenuAction->setEnabled(enable);
    } catch (const std::exception& error) {
        systemLogError(u"resetViewForProcess:"_s, error);
    }
    m_window->update();
}

} // namespace pagestack
