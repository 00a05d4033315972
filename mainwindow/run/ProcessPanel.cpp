#include "mainwindow/run/ProcessPanel.h"

#include "engine/job/Process.h"
#include "ui_ProcessPanel.h"

#include <QTime>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int refreshMs = 100;
    constexpr int barSteps = 1000;
    constexpr qint64 earliestEstimateMs = 1500;

    QString clockText(qint64 milliseconds)
    {
        const qint64 seconds = (milliseconds + 500) / 1000;
        return u"%1:%2:%3"_s.arg(seconds / 3600)
            .arg(seconds / 60 % 60, 2, 10, QChar(u'0'))
            .arg(seconds % 60, 2, 10, QChar(u'0'));
    }

} // namespace

ProcessPanel::ProcessPanel(QWidget* parent)
    : QDialog(parent, Qt::Sheet)
    , m_ui(std::make_unique<Ui::ProcessPanel>())
{
    m_ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    showProblems(false);
    connect(m_ui->showProblemsBtn, &QPushButton::toggled, this, &ProcessPanel::showProblems);
    connect(m_ui->problemList, &ProblemList::fileRequested, this, &ProcessPanel::fileRequested);
    connect(m_ui->viewLogBtn, &QPushButton::clicked, this, &ProcessPanel::viewLogRequested);
    connect(m_ui->cancelProcessBtn, &QPushButton::clicked, this, [this] {
        m_isCancelled = true;
        m_ui->cancelProcessBtn->setEnabled(false);
        showCounts();
        emit cancelRequested();
    });
    connect(m_ui->pauseProcessBtn, &QPushButton::toggled, this, &ProcessPanel::setPaused);
    connect(m_ui->stopAfterFileBtn, &QPushButton::clicked, this, [this] {
        m_job->gate().endAfterSource();
        m_ui->stopAfterFileBtn->setEnabled(false);
        showCounts();
    });
    connect(m_ui->showFolderBtn, &QPushButton::clicked, this, &ProcessPanel::folderRequested);
    connect(m_ui->tickFailedBtn, &QPushButton::clicked, this, &ProcessPanel::tickingRequested);
    connect(m_ui->closeProcessBtn, &QPushButton::clicked, this, &ProcessPanel::closeRequested);
    m_refresh.setInterval(refreshMs);
    connect(&m_refresh, &QTimer::timeout, this, [this] {
        showCounts();
        showTime();
    });
}

ProcessPanel::~ProcessPanel() = default;

QHash<QString, QString> ProcessPanel::problemsByFile() const { return m_ui->problemList->byFile(); }

void ProcessPanel::follow(Process& job, qint64 plannedPages)
{
    m_job = &job;
    m_plannedPages = plannedPages;
    m_donePages = 0;
    m_ui->problemList->removeAll();
    m_ui->showProblemsBtn->setChecked(false);
    m_ui->showProblemsBtn->hide();
    m_isCancelled = false;
    setWindowTitle(tr("Converting"));
    m_ui->processHeadlineLabel->hide();
    m_ui->processProgressBar->setRange(0, barSteps);
    m_ui->processProgressBar->setValue(0);
    m_ui->processMessageLabel->clear();
    showNames(true);
    m_ui->viewLogBtn->setEnabled(false);
    m_pausedMs = 0;
    m_pause.invalidate();
    m_ui->pauseProcessBtn->setChecked(false);
    showButtons(true);
    m_ui->pauseProcessBtn->setFocus(); // no key that is pressed by chance ends the run
    // The job tells on its own thread; with this object as the receiver it arrives on the main one.
    connect(&job, &Process::pageDone, this, [this] { ++m_donePages; });
    connect(&job, &Process::diagnosed, this,
            [this](const Diagnostic& diagnostic) { m_ui->problemList->add(diagnostic); });
    connect(&job, &Process::logTroubleMet, this,
            [this](const QString& path, const QString& reason) {
                m_ui->problemList->add({ .sourcePath = path, .reason = reason });
            });
    connect(&job, &Process::isCompletedChanged, this, [this](bool isCompleted) {
        if (isCompleted)
            showEnd();
    });
    m_elapsed.start();
    m_refresh.start();
    showCounts();
    showTime();
}

/// Nothing is in hand when the run has ended.
void ProcessPanel::showNames(bool isShown)
{
    for (QWidget* label :
         std::initializer_list<QWidget*> { m_ui->processFileCaption, m_ui->processFileLabel,
                                           m_ui->processOutputCaption, m_ui->processOutputLabel })
        label->setVisible(isShown);
}

void ProcessPanel::stopFollowing()
{
    m_refresh.stop();
    if (m_job != nullptr)
        m_job->disconnect(this);
    m_job = nullptr;
    hide();
}

void ProcessPanel::showCounts()
{
    if (m_job == nullptr)
        return;
    m_ui->processFileLabel->setText(m_job->fileInProcess());
    m_ui->processOutputLabel->setText(m_job->outputFileInProcess());
    QString counts = tr("%1 written, page %2 of %3")
                         .arg(m_job->totalFileCreated())
                         .arg(m_donePages)
                         .arg(m_plannedPages);
    if (const qint64 problems = m_ui->problemList->count(); problems > 0)
        counts += tr(", %n problem(s)", nullptr, static_cast<int>(problems));
    if (m_isCancelled && !m_job->isCompleted())
        counts += tr(" - finishing the page in hand");
    else if (!m_job->isCompleted() && m_job->gate().endsAfterSource())
        counts += tr(" - finishing the file in hand");
    else if (m_pause.isValid())
        counts += tr(" - paused");
    m_ui->processCountLabel->setText(counts);
    if (m_plannedPages > 0)
        m_ui->processProgressBar->setValue(
            static_cast<int>(std::min<qint64>(barSteps, m_donePages * barSteps / m_plannedPages)));
}

QString ProcessPanel::remainingText() const
{
    const qint64 elapsed = elapsedMs();
    if (m_donePages == 0 || elapsed < earliestEstimateMs)
        return {};
    return tr(", about %1 left")
        .arg(clockText(elapsed * (m_plannedPages - m_donePages) / m_donePages));
}

void ProcessPanel::showTime()
{
    m_ui->processTimeLabel->setText(clockText(elapsedMs()) + remainingText());
}

void ProcessPanel::showEnd()
{
    m_refresh.stop();
    m_pause.invalidate();
    showCounts();
    showNames(false);
    const QString taken = m_job->timeTaken();
    m_ui->processTimeLabel->setText(taken.isEmpty() ? tr("under a second") : taken.trimmed());
    m_ui->processMessageLabel->setText(m_job->message().replace(u"\r\n"_s, u"\n"_s));
    if (!m_isCancelled)
        m_ui->processProgressBar->setValue(barSteps);
    m_ui->viewLogBtn->setEnabled(!m_job->log()->logFilePath().isNull());
    showButtons(false);
    m_ui->closeProcessBtn->setFocus();
    m_ui->showProblemsBtn->setVisible(m_ui->problemList->count() > 0);
    emit ended();
}

void ProcessPanel::showOutcome(const QString& headline, bool hasLeft)
{
    const bool isCancelled = m_job->log()->isCancelled;
    const bool hasProblems = hasLeft || m_ui->problemList->count() > 0;
    setWindowTitle(isCancelled       ? tr("Cancelled")
                       : hasProblems ? tr("Finished with problems")
                                     : tr("Finished"));
    m_ui->processHeadlineLabel->setText(windowTitle() + u": "_s + headline);
    m_ui->processHeadlineLabel->show();
    m_ui->tickFailedBtn->setVisible(hasLeft);
}

void ProcessPanel::showProblems(bool isShown)
{
    const qint64 left = m_ui->problemList->count() - ProblemList::mostRows;
    m_ui->problemsLeftLabel->setText(
        tr("%n more are in the log only.", nullptr, static_cast<int>(left)));
    m_ui->problemList->setVisible(isShown);
    m_ui->problemsLeftLabel->setVisible(isShown && left > 0);
    adjustSize();
}

/// Those of a run under way, or those of its end.
void ProcessPanel::showButtons(bool isRunning)
{
    for (QWidget* button : std::initializer_list<QWidget*> {
             m_ui->cancelProcessBtn, m_ui->pauseProcessBtn, m_ui->stopAfterFileBtn })
        button->setEnabled(isRunning);
    m_ui->pauseProcessBtn->setVisible(isRunning);
    m_ui->stopAfterFileBtn->setVisible(isRunning);
    m_ui->cancelProcessBtn->setVisible(isRunning);
    m_ui->tickFailedBtn->hide();
    m_ui->showFolderBtn->setVisible(!isRunning && m_job->totalFileCreated() > 0);
    m_ui->closeProcessBtn->setEnabled(!isRunning);
    m_ui->closeProcessBtn->setDefault(!isRunning);
}

void ProcessPanel::setPaused(bool isPaused)
{
    m_ui->pauseProcessBtn->setText(isPaused ? tr("Resume") : tr("Pause"));
    if (isPaused) {
        m_pause.start();
    } else if (m_pause.isValid()) {
        m_pausedMs += m_pause.elapsed();
        m_pause.invalidate();
    }
    if (m_job != nullptr)
        m_job->gate().setPaused(isPaused);
    showCounts();
}

/// Without the pauses.
qint64 ProcessPanel::elapsedMs() const
{
    return m_elapsed.elapsed() - m_pausedMs - (m_pause.isValid() ? m_pause.elapsed() : 0);
}

void ProcessPanel::cancel() { m_ui->cancelProcessBtn->click(); }

void ProcessPanel::reject()
{
    if (m_ui->closeProcessBtn->isEnabled())
        emit closeRequested();
    else if (m_ui->cancelProcessBtn->isEnabled())
        emit cancelQuestioned();
}

} // namespace pagestack
