#include "mainwindow/run/PlanLine.h"

#include "engine/options/ConversionOptions.h"
#include "engine/plan/ChosenPages.h"
#include "engine/plan/RunPlan.h"
#include "engine/settings/Settings.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/WorkerThread.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/run/PlanQuestion.h"
#include "mainwindow/settings/RunChoices.h"
#include "mainwindow/state/ViewState.h"
#include "ui_MainWindow.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QPushButton>
#include <QSet>

#include <algorithm>
#include <functional>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int restMs = 300;
    constexpr int restAfterWorkMs = 20; // nothing more is to come
    constexpr int mostWaitMs = 300; ///< at the end of the program

    /// Without those that two outputs come to: the file is there once.
    qsizetype existingFiles(const RunPlan& plan)
    {
        QSet<std::pair<qsizetype, int>> shared;
        for (const RunPlan::Shared& found : plan.shared())
            shared.insert({ found.target.output, found.target.page });
        return std::ranges::count_if(plan.existing(), [&](const PlannedTarget& target) {
            return !shared.contains({ target.output, target.page });
        });
    }

    /// What stands in the way of `outputs`. Any thread.
    QString findingsOf(const QList<OutputFile>& outputs, const Settings& settings,
                       const RunOptions& options, const std::function<bool()>& isWanted)
    {
        const RunPlan plan(outputs, settings, options, RunPlan::Numbering::None, {}, isWanted);
        QString text;
        const QString folder = settings.outputFolderPath();
        if (!folder.isEmpty() && !QFileInfo::exists(folder))
            text += PlanLine::tr(", the folder is missing");
        if (const qsizetype count = existingFiles(plan); count > 0)
            text += PlanLine::tr(", %Ln exist", nullptr, static_cast<int>(count));
        if (const auto count = plan.shared().size() + plan.replacedSources().size(); count > 0)
            text += PlanLine::tr(", %Ln clash", nullptr, static_cast<int>(count));
        return text;
    }

} // namespace

PlanLine::PlanLine(const WindowParts& parts, Settings& settings)
    : m_parts(parts)
    , m_settings(settings)
    , m_rest(restMs, [this] { count(); })
    , m_purpose(parts.ui.convertBtn->toolTip())
{
    const FileTableModel& model = parts.model;
    connect(&model, &QAbstractItemModel::rowsInserted, this, &PlanLine::follow);
    connect(&model, &QAbstractItemModel::rowsRemoved, this, &PlanLine::follow);
    connect(&model, &QAbstractItemModel::modelReset, this, &PlanLine::follow);
    connect(&model, &QAbstractItemModel::layoutChanged, this, &PlanLine::follow);
    connect(&model, &FileTableModel::checkMarksChanged, this, &PlanLine::follow);
    connect(&model, &FileTableModel::pageChoiceEdited, this, &PlanLine::follow);
    connect(&settings, &Settings::outputTypeChanged, this, &PlanLine::follow);
    connect(&settings, &Settings::outputFolderPathChanged, this, &PlanLine::follow);
    connect(&settings, &Settings::separatorChanged, this, &PlanLine::follow);
    connect(&settings, &Settings::isSplitTIFFIntoSinglePagesChanged, this, &PlanLine::follow);
    connect(&parts.ui.rightBox->choices(), &RunChoices::changed, this, &PlanLine::follow);
    connect(&parts.view, &ViewState::isProcessingChanged, this, [this](bool isProcessing) {
        follow();
        if (!isProcessing)
            m_rest.start(restAfterWorkMs);
    });
    parts.ui.planLabel->show();
    follow();
}

PlanLine::~PlanLine()
{
    forget();
    // A folder on another computer may take minutes to answer. Nobody waits for that: what the
    // thread uses is its own, and it ends with the program.
    if (m_thread && !m_thread->QThread::wait(QDeadlineTimer(mostWaitMs)))
        static_cast<void>(m_thread.release());
}

void PlanLine::forget()
{
    if (m_lookUp)
        m_lookUp->isWanted = false;
    m_lookUp.reset();
}

/// What was looked up is of no more use. While the window is busy, its end comes here again.
void PlanLine::follow()
{
    forget();
    m_rest.start(restMs);
    if (m_parts.view.isProcessing())
        show(0, {});
}

void PlanLine::count()
{
    if (m_parts.view.isProcessing())
        return;
    if (m_thread && m_thread->isRunning()) { // it looks at a file that is slow to reach
        m_rest.start(restMs);
        return;
    }
    const RunOptions& options = m_parts.ui.rightBox->choices().options();
    ChosenPageCounter counter(options);
    FileList::Items ticked;
    qint64 images = 0;
    for (const FileList::Item& item : m_parts.files.items()) {
        if (!item->isSelected())
            continue;
        const int pages = counter.count(*item);
        images += imagesOf(pages, m_settings);
        if (m_parts.files.checkedCount() <= mostFiles)
            ticked.append(item);
    }
    show(images, {});
    if (images == 0 || images > mostImages || ticked.isEmpty())
        return;
    QList<OutputFile> outputs;
    outputs.reserve(ticked.size());
    for (const FileList::Item& item : std::as_const(ticked))
        outputs.append({ .filename = item->path(), .fileItems = { item->clone() } });
    lookUp(outputs);
}

void PlanLine::lookUp(const QList<OutputFile>& outputs)
{
    m_lookUp = std::make_shared<LookUp>();
    m_thread = std::make_unique<WorkerThread>([lookUp = m_lookUp, outputs,
                                               all = m_parts.ui.rightBox->choices().all(),
                                               folder = m_settings.outputFolderPath()] {
        guarded(u"PlanLine"_s, [&] {
            Settings settings(nullptr);
            applyTo(settings, all);
            settings.setOutputFolderPath(folder);
            lookUp->findings
                = findingsOf(outputs, settings, all.run, [&] { return lookUp->isWanted.load(); });
        });
    });
    connect(m_thread.get(), &QThread::finished, this, [this, lookUp = m_lookUp] {
        if (lookUp->isWanted)
            show(m_images, lookUp->findings);
    });
    m_thread->start(QThread::LowPriority);
}

void PlanLine::show(qint64 images, const QString& findings)
{
    m_images = images;
    QString text;
    const QString folder = QDir::toNativeSeparators(m_settings.outputFolderPath());
    const QString place = folder.isEmpty() ? tr("beside their sources") : u"\u2192 "_s + folder;
    if (images > 0)
        text = tr("%Ln image(s)", nullptr, static_cast<int>(images)) + u' ' + place + findings;
    else if (m_parts.files.checkedPages() > 0 && !m_parts.view.isProcessing())
        text = tr("The options leave no page of the ticked files to convert.");
    m_parts.ui.planLabel->setText(text);
    QPushButton& button = *m_parts.ui.convertBtn;
    button.setProperty("purpose", // which CommandTips shows
                       (m_purpose + u'\n' + text).trimmed());
    button.setAccessibleDescription(button.isEnabled() ? text : m_parts.view.whyDisabled(button));
}

} // namespace pagestack
