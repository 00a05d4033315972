#include "mainwindow/run/ProcessPanel.h"

#include "engine/job/Process.h"
#include "mainwindow/run/RunStrip.h"
#include "ui_ProcessPanel.h"

#include <QAccessible>
#include <QLocale>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int refreshMs = 100;
    constexpr int barSteps = 1000;
    constexpr int listWidth = 760; ///< of the sheet with the list of problems
    constexpr int listMargin = 16;

    QString clockText(qint64 milliseconds)
    {
        const qint64 seconds = (milliseconds + 500) / 1000;
        return u"%1:%2:%3"_s.arg(seconds / 3600)
            .arg(seconds / 60 % 60, 2, 10, QChar(u'0'))
            .arg(seconds % 60, 2, 10, QChar(u'0'));
    }

    /// For screen readers, which know a label by its name alone: with what stands before it.
    void tell(QLabel& label, const QLabel& caption, const QString& text)
    {
        label.setText(text);
        label.setAccessibleName(caption.text() + u' ' + text);
    }

} // namespace

ProcessPanel::ProcessPanel(QWidget* window, QWidget& strip)
    : QDialog(window, Qt::Sheet)
    , m_ui(std::make_unique<Ui::ProcessPanel>())
    , m_strip(new RunStrip(strip))
{
    m_ui->setupUi(this);
    showProblems(false);
    connectButtons();
    connect(&m_refresh, &QTimer::timeout, this, [this] {
        m_progress.update();
        showCounts();
        showTime();
        showStrip();
        emit progressed(m_progress.fraction());
    });
    m_strip->addButton(u"runPauseBtn"_s, *m_ui->pauseProcessBtn);
    m_strip->addButton(u"runCancelBtn"_s, *m_ui->cancelProcessBtn);
    m_strip->addButton(u"runCloseBtn"_s, *m_ui->closeProcessBtn);
    connect(m_strip, &RunStrip::detailsRequested, this, [this] { setSmall(false); });
}

ProcessPanel::~ProcessPanel() = default;

void ProcessPanel::connectButtons()
{
    connect(m_ui->hideDetailsBtn, &QPushButton::clicked, this, [this] { setSmall(true); });
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
    connect(m_ui->saveProblemsBtn, &QPushButton::clicked, this, &ProcessPanel::savingRequested);
    connect(m_ui->showFolderBtn, &QPushButton::clicked, this, &ProcessPanel::folderRequested);
    connect(m_ui->tickFailedBtn, &QPushButton::clicked, this, &ProcessPanel::tickingRequested);
    connect(m_ui->closeProcessBtn, &QPushButton::clicked, this, &ProcessPanel::closeRequested);
}

void ProcessPanel::follow(Process& job)
{
    m_job = &job;
    m_progress.follow(job);
    m_isSmall = false;
    m_ui->problemList->removeAll();
    m_ui->showProblemsBtn->setChecked(false);
    m_ui->showProblemsBtn->hide();
    m_isCancelled = false;
    setWindowTitle(tr("Converting"));
    m_ui->processHeadlineLabel->hide();
    m_ui->processProgressBar->setRange(0, barSteps);
    m_ui->processMessageLabel->clear();
    showNames(true);
    m_ui->viewLogBtn->setEnabled(false);
    m_ui->processPlanLabel->setText(tr("Looking at what is there..."));
    m_ui->pauseProcessBtn->setChecked(false);
    showButtons(true);
    m_ui->pauseProcessBtn->setFocus(); // no key that is pressed by chance ends the run
    // The job tells on its own thread; with this object as the receiver it arrives on the main one.
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
    m_refresh.start(refreshMs);
    showCounts();
    showTime();
}

void ProcessPanel::setPlanned(const RunWork& planned, const QString& text)
{
    m_progress.setPlanned(planned);
    m_ui->processPlanLabel->setText(text);
    showCounts();
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
    m_progress.stopFollowing();
    if (m_job != nullptr)
        m_job->disconnect(this);
    m_job = nullptr;
    m_isSmall = false;
    m_strip->setShown(false);
    hide();
}

void ProcessPanel::setSmall(bool isSmall)
{
    if (m_job == nullptr || isSmall == m_isSmall)
        return;
    m_isSmall = isSmall;
    showStrip();
    m_strip->setShown(isSmall);
    if (isSmall)
        hide();
    else
        show();
    emit isSmallChanged(isSmall);
}

void ProcessPanel::showCounts()
{
    if (m_job == nullptr)
        return;
    tell(*m_ui->processFileLabel, *m_ui->processFileCaption, m_job->fileInProcess());
    tell(*m_ui->processOutputLabel, *m_ui->processOutputCaption, m_job->outputFileInProcess());
    QString counts = tr("%1 written, %2")
                         .arg(QLocale().toString(m_job->totalFileCreated()), m_progress.pageText());
    if (const qint64 problems = m_ui->problemList->count(); problems > 0)
        counts += tr(", %n problem(s)", nullptr, static_cast<int>(problems));
    tell(*m_ui->processCountLabel, *m_ui->processCountCaption, counts + stateText());
    m_ui->processProgressBar->setValue(static_cast<int>(barSteps * m_progress.fraction()));
}

/// Why the run is not simply going on.
QString ProcessPanel::stateText() const
{
    if (m_job->isCompleted())
        return {};
    if (m_isCancelled)
        return tr(" - finishing the page in hand");
    if (m_job->gate().endsAfterSource())
        return tr(" - finishing the file in hand");
    return m_progress.isPaused() ? tr(" - paused") : QString();
}

void ProcessPanel::showTime()
{
    const QString pace = m_progress.paceText();
    tell(*m_ui->processTimeLabel, *m_ui->processTimeCaption,
         clockText(m_progress.workedMs()) + (pace.isEmpty() ? QString() : u", "_s + pace));
}

/// What the sheet says, in a line.
void ProcessPanel::showStrip()
{
    if (m_job == nullptr)
        return;
    QStringList parts { m_progress.pageText() };
    if (const QString pace = m_progress.paceText(); !pace.isEmpty())
        parts.append(pace);
    if (const qint64 problems = m_ui->problemList->count(); problems > 0)
        parts.append(tr("%n problem(s)", nullptr, static_cast<int>(problems)));
    m_strip->update(m_job->isCompleted() ? m_ui->processHeadlineLabel->text()
                                         : parts.join(u", "_s) + stateText(),
                    m_ui->processProgressBar->value());
}

void ProcessPanel::showEnd()
{
    m_refresh.stop();
    m_progress.setPaused(false);
    m_progress.update();
    showCounts();
    showNames(false);
    const QString taken = m_job->timeTaken();
    tell(*m_ui->processTimeLabel, *m_ui->processTimeCaption,
         taken.isEmpty() ? tr("under a second") : taken.trimmed());
    m_ui->processMessageLabel->setText(m_job->message().replace(u"\r\n"_s, u"\n"_s));
    if (!m_isCancelled)
        m_ui->processProgressBar->setValue(barSteps);
    m_ui->viewLogBtn->setEnabled(!m_job->log()->logFilePath().isNull());
    showButtons(false);
    m_ui->closeProcessBtn->setFocus();
    if (const QString reason = m_job->log()->reason; !reason.isNull())
        m_ui->problemList->add({ .reason = reason });
    m_ui->showProblemsBtn->setVisible(m_ui->problemList->count() > 0);
    emit ended();
}

void ProcessPanel::showOutcome(const QString& headline, bool hasLeft, bool isAll)
{
    // The job counts images: where one file has several, another may have none.
    if (!isAll && m_job->message() == Process::allConvertedText())
        m_ui->processMessageLabel->clear();
    const bool isEarly = !m_job->log()->reason.isNull();
    const bool isCancelled = m_job->log()->isCancelled;
    const bool hasProblems = hasLeft || m_ui->problemList->count() > 0;
    setWindowTitle(isEarly           ? tr("Ended early")
                       : isCancelled ? tr("Cancelled")
                       : hasProblems ? tr("Finished with problems")
                                     : tr("Finished"));
    m_ui->processHeadlineLabel->setText(windowTitle() + u": "_s + headline);
    m_ui->processHeadlineLabel->show();
    m_ui->tickFailedBtn->setVisible(hasLeft);
    showStrip();
    // The headline takes the place of what was there: nothing that has the keys says it.
    QAccessibleEvent alert(m_ui->processHeadlineLabel, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void ProcessPanel::showProblems(bool isShown)
{
    const qint64 left = m_ui->problemList->count() - ProblemList::mostRows;
    m_ui->problemsLeftLabel->setText(
        tr("%n more are in the log only.", nullptr, static_cast<int>(left)));
    m_ui->problemList->setVisible(isShown);
    m_ui->problemsLeftLabel->setVisible(isShown && left > 0);
    m_ui->saveProblemsBtn->setVisible(isShown);
    adjustSize();
    if (isShown) // not as narrow as adjustSize() leaves a window on a small screen
        resize(std::min(listWidth, screen()->availableSize().width() - 2 * listMargin), height());
}

/// Those of a run under way, or those of its end.
void ProcessPanel::showButtons(bool isRunning)
{
    for (QWidget* button : std::initializer_list<QWidget*> {
             m_ui->cancelProcessBtn, m_ui->pauseProcessBtn, m_ui->stopAfterFileBtn })
        button->setEnabled(isRunning);
    m_ui->hideDetailsBtn->setVisible(isRunning);
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
    m_progress.setPaused(isPaused);
    if (m_job != nullptr)
        m_job->gate().setPaused(isPaused);
    showCounts();
}

QString ProcessPanel::problems() const { return m_ui->problemList->allText(); }

void ProcessPanel::cancel() { m_ui->cancelProcessBtn->click(); }

void ProcessPanel::reject()
{
    if (m_ui->closeProcessBtn->isEnabled())
        emit closeRequested();
    else if (m_ui->cancelProcessBtn->isEnabled())
        emit cancelQuestioned();
}

} // namespace pagestack
