#include "mainwindow/run/RunControl.h"

#include "engine/log/RunReport.h"
#include "engine/plan/RunPlan.h"
#include "engine/plan/SpaceNeed.h"
#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"
#include "engine/support/Workspace.h"
#include "engine/threads/MainThread.h"
#include "filelist/FileTableModel.h"
#include "filelist/ListExport.h"
#include "mainwindow/desktop/DesktopRun.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/list/ListCommands.h"
#include "mainwindow/run/PlanLine.h"
#include "mainwindow/run/PlanQuestion.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/settings/RunChoices.h"
#include "mainwindow/state/ViewState.h"
#include "mainwindow/state/Worker.h"
#include "mainwindow/widgets/FileChooser.h"
#include "ui_MainWindow.h"

#include <QFileInfo>

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr double mostPagesMeasured = 5000; ///< for their bytes, which are read from each file

    QList<OutputFile> tickedOutputs(const FileList::Items& items)
    {
        QList<OutputFile> outputs;
        for (const FileList::Item& item : items) {
            if (!item->isSelected())
                continue;
            outputs.append({ .filename = item->localFile(), .fileItems = { item } });
        }
        return outputs;
    }

} // namespace

RunControl::RunControl(const WindowParts& parts, Settings& settings, ListCommands& list)
    : m_parts(parts)
    , m_settings(settings)
    , m_list(list)
    , m_folderCheck(parts, settings)
    , m_process(std::make_unique<Process>(&parts.services.workspace))
    , m_panel(std::make_unique<ProcessPanel>(&parts.window, *parts.ui.runBar))
    , m_planLine(std::make_unique<PlanLine>(parts, settings))
    , m_rows(parts)
{
    connect(&m_outcome, &RunOutcome::changed, this,
            [this](const QHash<QString, RowStatus>& statuses, int inHand) {
                m_rows.show(statuses);
                if (!m_process)
                    return; // of a run that is closed already
                const QList<OutputFile> outputs = m_process->outputFiles();
                if (m_process->isCombining() && inHand < outputs.size())
                    m_rows.follow(outputs.at(inHand));
            });
    connect(&m_folderCheck, &OutputFolderCheck::folderWanted, this,
            &RunControl::outputFolderWanted);
    connect(&parts.worker, &Worker::ended, this, [this] {
        if (m_question)
            ask();
    });
    connect(m_panel.get(), &ProcessPanel::ended, this, &RunControl::showEnd);
    connect(m_panel.get(), &ProcessPanel::isSmallChanged, this, [this](bool isSmall) {
        if (isSmall)
            m_parts.ui.mainTableView->setFocus();
    });
    connect(m_panel.get(), &ProcessPanel::folderRequested, this, &RunControl::showFolder);
    connect(m_panel.get(), &ProcessPanel::savingRequested, this, &RunControl::saveProblems);
    connect(m_panel.get(), &ProcessPanel::tickingRequested, this, [this] {
        closeProcess();
        m_list.untick(m_outcome.converted());
    });
    connect(m_panel.get(), &ProcessPanel::cancelQuestioned, this, [this] {
        askToStop(tr("Stop the conversion? Images that are written stay."), tr("Stop"),
                  [this] { m_panel->cancel(); });
    });
    connect(m_panel.get(), &ProcessPanel::fileRequested, &list, &ListCommands::highlightFile);
}

RunControl::~RunControl() { m_panel->stopFollowing(); }

void RunControl::split()
{
    if (m_parts.worker.isBusy() || !m_parts.ui.convertBtn->isEnabled())
        return; // the menu's shortcut comes here too
    m_parts.ui.rightBox->endEditing();
    if (!m_parts.ui.mainTableView->endEditing())
        return;
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
        m_folderCheck.check([this] { guarded(u"Split"_s, [this] { beginRun(); }); });
    });
}

void RunControl::beginRun()
{
    if (m_parts.worker.isBusy())
        return; // a load has begun while the user was asked
    m_parts.ui.rightBox->rememberOutputFolder();
    m_parts.ui.rightBox->showFormat();
    startRun(std::nullopt);
}

/// The outputs, those of the ticked files unless they are given, are planned by the run's thread,
/// before anything is written. Nobody changes the list meanwhile.
void RunControl::startRun(const std::optional<QList<OutputFile>>& outputs,
                          std::optional<ExistingFiles> decided)
{
    if (m_parts.worker.isBusy() || !m_process)
        return; // something else has begun while the user was asked
    m_process->setRunOptions(m_parts.ui.rightBox->choices().options());
    m_process->setReport();
    m_process->setTotalFileSelected(static_cast<int>(m_parts.files.checkedCount()));
    m_panel->follow(*m_process);
    m_outcome.follow(*m_process);
    m_desktopRun = std::make_unique<DesktopRun>();
    connect(m_desktopRun.get(), &DesktopRun::folderRequested, this, &RunControl::showFolder);
    connect(m_panel.get(), &ProcessPanel::progressed, m_desktopRun.get(), &DesktopRun::setProgress);
    m_parts.view.resetView(false);
    m_parts.view.setListReadable(true);
    m_parts.view.startProcess();
    m_parts.ui.loadingIndicator->hide();
    m_parts.view.resetViewForProcess(false);
    const auto known = m_existing.constFind(m_settings.outputFolderPath());
    const auto remembered = known == m_existing.cend() ? std::nullopt : std::optional(*known);
    m_process->gate().reset();
    m_isRunning = true;
    m_parts.worker.start(
        [this, job = m_process.get(), outputs, decided, remembered, items = m_parts.files.items()] {
            job->setOutputFiles(outputs ? *outputs : tickedOutputs(items));
            if (isPlanClear(*job, decided, remembered))
                job->start();
        });
    m_panel->show();
}

/// On the thread of the run. False when there is something to be asked first, which is left at
/// `m_question`; a run that is cancelled meanwhile comes to its end as it would later.
bool RunControl::isPlanClear(Process& job, std::optional<ExistingFiles> decided,
                             std::optional<ExistingFiles> remembered)
{
    bool isClear = true;
    try {
        job.setKeepsExisting(true); // of what comes to a target later
        const auto isWanted = [&job] { return job.isCombining(); };
        const RunPlan plan(job.outputFiles(), m_settings, job.runOptions(),
                           RunPlan::Numbering::None, {}, isWanted);
        if (!isWanted())
            return true;
        job.setOutputFiles(plan.outputs());
        auto question = questionOf(plan, job, decided, remembered);
        if (!question && isWanted())
            showPlan(plan, job);
        if (!question || !isWanted())
            return true;
        callOnMainThread([&] { m_question = std::move(question); });
        isClear = false;
    } catch (const std::exception& error) { // a run that nobody looked through writes nothing
        systemLogError(u"Split"_s, error);
        job.giveUp(u"the run could not be planned: "_s + QString::fromUtf8(error.what()));
    }
    return isClear;
}

/// On the thread of the run.
void RunControl::showPlan(const RunPlan& plan, Process& job)
{
    const QList<OutputFile> outputs = job.outputFiles();
    const RunWork work = workOf(outputs, job.runOptions());
    std::optional<quint64> bytes;
    if (work.pages <= mostPagesMeasured)
        guarded(u"outputBytes"_s, [&] { // the run does without it
            bytes = outputBytes(outputs, m_settings, job.runOptions(), job.targetFilter(),
                                [&job] { return job.isCombining(); });
        });
    const bool skipsExisting = static_cast<bool>(job.targetFilter());
    const QString text = planSummary(plan, outputs, skipsExisting, m_settings, work, bytes);
    callOnMainThread([&] {
        m_rows.begin();
        m_panel->setPlanned(work, text);
    });
}

/// None where the run can begin, with what is decided already.
std::optional<RunControl::Question> RunControl::questionOf(const RunPlan& plan, Process& job,
                                                           std::optional<ExistingFiles> decided,
                                                           std::optional<ExistingFiles> remembered)
{
    if (!plan.shared().empty() || !plan.replacedSources().empty())
        return clashQuestion(plan, job);
    if (plan.existing().empty())
        return std::nullopt;
    if (!decided && !hasOwnSource(plan)) // about that nobody was asked before
        decided = remembered;
    if (decided) {
        apply(*decided, job, m_settings);
        return std::nullopt;
    }
    const auto answer = [&](const QString& button, ExistingFiles choice) {
        return Question::Answer { button, [this, choice, outputs = job.outputFiles()] {
                                     // Beside the sources lie many folders.
                                     if (!m_settings.outputFolderPath().isEmpty())
                                         m_existing.insert(m_settings.outputFolderPath(), choice);
                                     startRun(outputs, choice);
                                 } };
    };
    return Question { existingQuestion(plan),
                      { answer(tr("Number"), ExistingFiles::Numbered),
                        answer(tr("Skip"), ExistingFiles::Skipped),
                        answer(tr("Replace"), ExistingFiles::Replaced) } };
}

RunControl::Question RunControl::clashQuestion(const RunPlan& plan, const Process& job)
{
    const auto isWanted = [&job] { return job.isCombining(); };
    const auto planned = [&](const RunOptions& options, RunPlan::Numbering numbering) {
        return RunPlan(job.outputFiles(), m_settings, options, numbering, {}, isWanted);
    };
    const RunPlan numbered = planned(job.runOptions(), RunPlan::Numbering::Clashing);
    Question question { planQuestion(plan, numbered), {} };
    if (isSolvedBy(numbered))
        question.answers.append({ tr("Number the later ones"),
                                  [this, outputs = numbered.outputs()] { startRun(outputs); } });
    RunOptions mirrored = job.runOptions();
    if (mirrored.mirrorsFolders || m_settings.outputFolderPath().isEmpty())
        return question;
    mirrored.mirrorsFolders = true;
    if (isSolvedBy(planned(mirrored, RunPlan::Numbering::None)))
        question.answers.append({ tr("Keep folder structure"), [this, outputs = job.outputFiles()] {
                                     const ConversionOptionRow& row
                                         = *conversionOption(u"mirror"_s);
                                     m_parts.ui.rightBox->choices().setText(row, u"true"_s);
                                     startRun(outputs);
                                 } });
    return question;
}

/// To be done before the start of `job`, which has found files at its targets.
void RunControl::apply(ExistingFiles existing, Process& job, const Settings& settings)
{
    const auto isWanted = [&job] { return job.isCombining(); };
    switch (existing) {
    case ExistingFiles::Numbered:
        job.setOutputFiles(RunPlan(job.outputFiles(), settings, job.runOptions(),
                                   RunPlan::Numbering::Taken, {}, isWanted)
                               .outputs());
        break;
    case ExistingFiles::Skipped:
        job.setTargetFilter(Process::isFreeTarget);
        break;
    case ExistingFiles::Replaced:
        job.setKeepsExisting(false);
        break;
    }
}

void RunControl::ask()
{
    const Question question = *std::exchange(m_question, std::nullopt);
    if (!m_process->isCombining()) { // cancelled a moment ago: the panel waits for the end
        m_parts.worker.start([job = m_process.get()] { job->start(); });
        return;
    }
    m_panel->stopFollowing();
    m_outcome.stopFollowing();
    m_desktopRun.reset();
    leaveRun();
    QStringList buttons;
    for (const Question::Answer& answer : question.answers)
        buttons.append(answer.button);
    if (!buttons.isEmpty())
        buttons.append(tr("Cancel"));
    const auto style
        = buttons.isEmpty() ? AlertPanel::Style::Critical : AlertPanel::Style::Question;
    m_parts.services.ask(&m_parts.window, style, question.text, buttons,
                         [this, question](int button) {
                             if (button < question.answers.size())
                                 guarded(u"Split"_s, question.answers.at(button).take);
                         });
}

bool RunControl::isUnderWay() const { return m_isRunning && m_process && m_process->isCombining(); }

bool RunControl::isOpen() const { return m_panel->isFollowing(); }

void RunControl::askBeforeItEnds(const std::function<void()>& end)
{
    askToStop(tr("A conversion is under way. Stop it and quit? Images that are written stay."),
              tr("Stop and Quit"), end);
}

/// One question at a time, however often the user closes the window.
void RunControl::askToStop(const QString& text, const QString& button,
                           const std::function<void()>& stop)
{
    if (std::exchange(m_isAsking, true))
        return;
    QWidget* front = m_panel.get();
    if (m_panel->isSmall())
        front = &m_parts.window;
    m_parts.services.ask(front, AlertPanel::Style::Warning, text, { button, tr("Keep Converting") },
                         [this, stop](int answer) {
                             m_isAsking = false;
                             if (answer == 0) // be the run at its end meanwhile
                                 stop();
                         });
}

void RunControl::cancelProcess()
{
    if (m_process)
        m_process->setIsCombining(false);
}

/// As the page for people, if there is one.
void RunControl::viewLog()
{
    if (!m_process)
        return;
    const QString report = reportPathBeside(m_process->log()->logFilePath());
    if (report.isEmpty() || !QFileInfo::exists(report))
        m_process->viewLog();
    else
        guarded(u"Process=>viewLog"_s,
                [&] { m_parts.services.workspace.openURL(QUrl::fromLocalFile(report)); });
}

void RunControl::saveProblems()
{
    m_parts.services.chooser.chooseSaveFile(
        m_panel.get(), tr("Save the list of problems as a text with tabs:"), u"txt"_s,
        tr("Problems.txt"), [this](const QList<QUrl>& urls) {
            try {
                if (!urls.isEmpty())
                    writeExport(urls.first().toLocalFile(), m_panel->problems().toUtf8());
            } catch (const std::runtime_error& error) {
                m_parts.services.tell(&m_parts.window, QString::fromUtf8(error.what()));
            }
        });
}

void RunControl::closeProcess()
{
    m_parts.worker.finish(); // the job is complete, its thread about to end
    m_panel->stopFollowing();
    if (m_settings.isClearProcessedFiles())
        m_list.removeConverted(m_outcome.converted());
    leaveRun();
    QList<OutputFile> outputs = m_process->outputFiles();
    m_process.reset();
    freeElsewhere(std::move(outputs));
}

void RunControl::showEnd()
{
    m_isRunning = false;
    m_outcome.finish();
    const QString headline = m_outcome.headline(m_process->totalFileCreated());
    m_panel->showOutcome(headline, !m_outcome.failed().isEmpty() || m_outcome.notReached() > 0,
                         m_outcome.isAllConverted());
    m_outputFolder = m_settings.outputFolderPath();
    if (m_outputFolder.isEmpty() && !m_process->outputFiles().isEmpty())
        m_outputFolder = folderPart(m_process->outputFiles().first().filename);
    if (m_desktopRun)
        m_desktopRun->end(m_panel->windowTitle(), headline, m_process->totalFileCreated() > 0);
}

void RunControl::showFolder()
{
    guarded(u"Split"_s,
            [&] { m_parts.services.workspace.openURL(QUrl::fromLocalFile(m_outputFolder)); });
}

void RunControl::leaveRun()
{
    m_isRunning = false;
    m_parts.view.resetViewForProcess(true);
    m_parts.view.stopProcess();
    m_parts.view.setListReadable(false);
    m_parts.view.resetView(true);
    m_parts.ui.mainTableView->setFocus();
}

} // namespace pagestack
