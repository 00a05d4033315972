#include "mainwindow/run/RunControl.h"

#include "engine/plan/ChosenPages.h"
#include "engine/plan/RunPlan.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/list/ListCommands.h"
#include "mainwindow/run/PlanQuestion.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/settings/RunChoices.h"
#include "mainwindow/state/ViewState.h"
#include "mainwindow/state/Worker.h"
#include "ui_MainWindow.h"

#include <QFileInfo>

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

RunControl::RunControl(const WindowParts& parts, Settings& settings, ListCommands& list)
    : m_parts(parts)
    , m_settings(settings)
    , m_list(list)
    , m_process(std::make_unique<Process>(&parts.services.workspace))
    , m_panel(std::make_unique<ProcessPanel>(&parts.window))
{
    connect(&parts.worker, &Worker::ended, this, [this] {
        if (m_clash)
            askForNumbers();
    });
    connect(m_panel.get(), &ProcessPanel::ended, this,
            [this] { m_parts.model.setProblems(m_panel->problemsByFile()); });
    connect(m_panel.get(), &ProcessPanel::fileRequested, &list, &ListCommands::highlightFile);
}

RunControl::~RunControl() { m_panel->stopFollowing(); }

void RunControl::split()
{
    if (m_parts.worker.isBusy() || !m_parts.ui.convertBtn->isEnabled())
        return; // the menu's shortcut comes here too
    m_parts.ui.rightBox->endEditing();
    if (const QString fault = m_parts.ui.rightBox->commitChoices(); !fault.isEmpty()) {
        m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical, fault);
        return;
    }
    guarded(u"Split"_s, [this] {
        m_process
            = std::make_unique<Process>(&m_parts.services.workspace, [this](const QString& text) {
                  m_parts.view.updateTimeTakenLabel(text);
              });
        m_process->setIsCombining(true);
        m_process->setSettings(&m_settings);
        checkOutputFolder();
    });
}

void RunControl::checkOutputFolder()
{
    const QString folder = m_settings.outputFolderPath();
    if (folder.isEmpty())
        m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical,
                             tr("No output folder selected, file(s) will be saved in source "
                                "folder.\nDo you want to continue?"),
                             { tr("Yes"), tr("No") }, [this](int button) {
                                 if (button == 0)
                                     guarded(u"Split"_s, [this] { beginRun(); });
                                 else
                                     emit outputFolderWanted();
                             });
    else if (!QFileInfo::exists(folder))
        refuse(tr("Output folder missing or invalid path!\r\nPlease select valid output folder."));
    else if (!QFileInfo(folder).isWritable())
        refuse(tr("Output folder is non-writable!\r\nPlease select writable output folder."));
    else
        beginRun();
}

void RunControl::refuse(const QString& text)
{
    m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical, text, {},
                         [this](int) { emit outputFolderWanted(); });
}

void RunControl::beginRun()
{
    if (m_parts.worker.isBusy())
        return; // a load has begun while the user was asked
    m_parts.ui.rightBox->showFormat();
    QList<OutputFile> outputs;
    for (const std::shared_ptr<FileItem>& item : m_parts.files.items()) {
        if (!item->isSelected())
            continue;
        OutputFile output;
        output.filename = item->filePath().toLocalFile();
        output.fileItems = { item };
        outputs.append(output);
    }
    startRun(outputs, false);
}

/// Outputs that were not planned are, by the run's thread, before anything is written.
void RunControl::startRun(const QList<OutputFile>& outputs, bool isPlanned)
{
    m_process->setRunOptions(m_parts.ui.rightBox->choices().options());
    m_process->setOutputFiles(outputs);
    m_process->setTotalFileSelected(static_cast<int>(outputs.size()));
    qint64 pages = 0;
    for (const OutputFile& output : outputs)
        for (const std::shared_ptr<FileItem>& item : output.fileItems)
            pages += chosenPageCount(*item, m_process->runOptions());
    m_panel->follow(*m_process, pages);
    m_parts.view.resetView(false);
    m_parts.view.startProcess();
    m_parts.ui.loadingIndicator->hide();
    m_parts.view.resetViewForProcess(false);
    m_parts.worker.start([this, job = m_process.get(), isPlanned] {
        if (isPlanned || isPlanClear(*job))
            job->start();
    });
    m_panel->open();
}

/// On the thread of the run. False when there is something to be asked first, which is left at
/// `m_clash`; a run that is cancelled meanwhile comes to its end as it would later.
bool RunControl::isPlanClear(Process& job)
{
    bool isClear = true;
    const bool isChecked = guarded(u"Split"_s, [&] {
        const auto isWanted = [&job] { return job.isCombining(); };
        const QList<OutputFile> outputs = job.outputFiles();
        const RunPlan plan(outputs, m_settings, job.runOptions(), RunPlan::Numbering::None, {},
                           isWanted);
        if (!isWanted() || (plan.shared().empty() && plan.replacedSources().empty()))
            return;
        const RunPlan numbered(outputs, m_settings, job.runOptions(), RunPlan::Numbering::Clashing,
                               {}, isWanted);
        if (!isWanted())
            return;
        callOnMainThread([&] {
            m_clash = Clash { planQuestion(plan, numbered),
                              isSolvedBy(numbered) ? numbered.outputs() : QList<OutputFile>() };
        });
        isClear = false;
    });
    if (!isChecked)
        job.stop(); // a run that nobody looked through writes nothing
    return isClear;
}

void RunControl::askForNumbers()
{
    const Clash clash = *std::exchange(m_clash, std::nullopt);
    if (!m_process->isCombining()) { // cancelled a moment ago: the panel waits for the end
        m_parts.worker.start([job = m_process.get()] { job->start(); });
        return;
    }
    m_panel->stopFollowing();
    leaveRun();
    if (clash.numbered.isEmpty()) {
        m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical, clash.question);
        return;
    }
    m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical, clash.question,
                         { tr("Number the later ones"), tr("Cancel") },
                         [this, outputs = clash.numbered](int button) {
                             if (button == 0 && !m_parts.worker.isBusy() && m_process)
                                 startRun(outputs, true);
                         });
}

void RunControl::cancelProcess()
{
    if (m_process)
        m_process->setIsCombining(false);
}

void RunControl::viewLog()
{
    if (m_process)
        m_process->viewLog();
}

void RunControl::closeProcess()
{
    m_parts.worker.finish(); // the job is complete, its thread about to end
    m_panel->stopFollowing();
    if (m_settings.isClearProcessedFiles())
        m_list.removeConverted();
    leaveRun();
    m_process.reset();
}

void RunControl::leaveRun()
{
    m_parts.view.resetViewForProcess(true);
    m_parts.view.stopProcess();
    m_parts.view.resetView(true);
    m_parts.ui.mainTableView->setFocus();
}

} // namespace pagestack
