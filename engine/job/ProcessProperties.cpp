#include "engine/job/Process.h"

namespace pagestack {

void Process::setIsCombining(bool value)
{
    m_isCombining = value;
    emit isCombiningChanged(value);
}

void Process::setIsCompleted(bool value)
{
    m_isCompleted = value;
    emit isCompletedChanged(value);
}

void Process::setTotalFileSelected(int value)
{
    m_totalFileSelected = value;
    emit totalFileSelectedChanged(value);
}

void Process::setTotalFileProcessed(int value)
{
    m_totalFileProcessed = value;
    emit totalFileProcessedChanged(value);
}

void Process::setTotalFileCreated(int value)
{
    m_totalFileCreated = value;
    emit totalFileCreatedChanged(value);
}

void Process::setFileInProcess(const QString& value)
{
    store(m_fileInProcess, value);
    emit fileInProcessChanged(value);
}

void Process::setOutputFileInProcess(const QString& value)
{
    store(m_outputFileInProcess, value);
    emit outputFileInProcessChanged(value);
}

void Process::setTimeTaken(const QString& value)
{
    store(m_timeTaken, value);
    emit timeTakenChanged(value);
}

void Process::setMessage(const QString& value)
{
    store(m_message, value);
    emit messageChanged(value);
}

void Process::setLog(const std::shared_ptr<Log>& value)
{
    store(m_log, value);
    emit logChanged();
}

void Process::setOutputFiles(const QList<OutputFile>& value)
{
    store(m_outputFiles, value);
    emit outputFilesChanged();
}

void Process::setSettings(Settings* value)
{
    m_settings = value;
    emit settingsChanged();
}

} // namespace pagestack
