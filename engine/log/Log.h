#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QMutex>
#include <QString>

#include <deque>
#include <memory>
#include <vector>

namespace pagestack {

/// One output page or file.
struct LogFile
{
    QString targetFile { QLatin1String("") }; ///< name without folder
    int sourcePageNo = 0; ///< counted from 1
    int targetPageNo = 0; ///< within the output file; never written to the XML file
    QString status { QLatin1String("") };
};

/// One source file and what became of its pages.
struct LogFiles
{
    QString filename { QLatin1String("") }; ///< name without folder
    QString sourcePath { QLatin1String("") }; ///< folder of the source
    QString targetPath { QLatin1String("") }; ///< output folder
    QString status { QLatin1String("") }; ///< trouble with the file as a whole; "" when it was read
    int pages = 0; ///< pages written from this file
    std::deque<LogFile> logFiles; ///< in the order written; appending moves no entry
};

/// What one run read and wrote, and the XML file that tells it.
///
/// The job that owns it fills the records on its own thread; others read them when the run is over.
/// Only logFilePath() may be asked by any thread at any time.
class Log
{
public:
    QDateTime startTime = QDateTime::currentDateTime();
    QDateTime endTime = startTime; ///< also names the file
    std::vector<std::shared_ptr<LogFiles>> files; ///< in the order processed, none of them null

    /// Writes document() as a file of the folder "Logs" in the application data folder, named from
    /// `endTime`: "050324140709.log". The folder is not made here. A file of that name is replaced,
    /// at once or not at all. True also when the file could not be written, which the system log
    /// tells; false, with the reason in the system log, when an exception was met.
    bool save();

    /// The file that the last save() chose, whether or not it could be written; null before.
    QString logFilePath() const;

    /// False: save() writes no file, logFilePath() stays null. True at the beginning.
    void setStored(bool isStored) { m_isStored = isStored; }

    /// The run as an XML document in UTF-8, one element a line, all content in attributes.
    /// Characters that XML 1.0 cannot hold are written as U+FFFD.
    /// Throws std::logic_error for a null entry of `files`.
    QByteArray document() const;

private:
    bool m_isStored = true;
    mutable QMutex m_guard; ///< of m_logFilePath, which the job writes and the window reads
    QString m_logFilePath;
};

} // namespace pagestack
