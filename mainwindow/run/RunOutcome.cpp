#include "mainwindow/run/RunOutcome.h"

namespace pagestack {

void RunOutcome::follow(Process& job)
{
    if (m_job)
        m_job->disconnect(this);
    m_job = &job;
    m_donePages.clear();
    m_converted.clear();
    m_failed.clear();
    m_sourcePaths.clear();
    const QList<OutputFile> outputs = job.outputFiles();
    m_sources = static_cast<int>(outputs.size());
    for (const OutputFile& output : outputs)
        m_sourcePaths.insert(output.filename);
    connect(&job, &Process::pageDone, this,
            [this](const QString& source, int, const QString&, Process::PageOutcome outcome) {
                if (outcome == Process::PageOutcome::Failed)
                    m_failed.insert(source);
                else
                    ++m_donePages[source];
            });
    connect(&job, &Process::diagnosed, this, [this](const Diagnostic& diagnostic) {
        // Logs and checksums may have troubles of their own.
        if (diagnostic.severity == Diagnostic::Severity::Error
            && m_sourcePaths.contains(diagnostic.sourcePath))
            m_failed.insert(diagnostic.sourcePath);
    });
}

void RunOutcome::finish()
{
    if (!m_job)
        return;
    for (const OutputFile& output : m_job->outputFiles())
        for (const std::shared_ptr<FileItem>& item : output.fileItems) {
            const QString path = item->filePath().toLocalFile();
            const auto pages = m_donePages.value(path);
            if (pages > 0 && !m_failed.contains(path)
                && pages >= m_job->getPageRanges(item.get()).size())
                m_converted.insert(path);
        }
    m_job->disconnect(this);
}

QHash<QString, RowStatus> RunOutcome::statuses(const QHash<QString, QString>& problems) const
{
    using State = RowStatus::State;
    QHash<QString, RowStatus> statuses;
    for (const QString& path : m_sourcePaths) {
        RowStatus status { State::NotReached, 0, 0, problems.value(path) };
        if (m_failed.contains(path))
            status.state = State::Failed;
        else if (m_converted.contains(path))
            status.state = status.reason.isEmpty() ? State::Done : State::Warning;
        statuses.insert(path, status);
    }
    return statuses;
}

QString RunOutcome::headline(int images) const
{
    QString text = images == 1 ? tr("1 image written") : tr("%1 images written").arg(images);
    if (!m_failed.isEmpty())
        text += tr(", %1 of %2 files failed").arg(m_failed.size()).arg(m_sources);
    if (const int left = notReached(); left > 0)
        text += tr(", %1 of %2 files not finished").arg(left).arg(m_sources);
    return text;
}

} // namespace pagestack
