#pragma once

#include "engine/files/StagedFile.h"
#include "engine/log/LogRecords.h"

#include <QByteArray>
#include <QDateTime>
#include <QMutex>
#include <QString>

#include <memory>
#include <vector>

class QIODevice;
class QXmlStreamWriter;

namespace pagestack {

class LogSpill;

/// What one run read and wrote, and the XML file that tells it.
///
/// The job that owns it fills the records on its own thread; others read them when the run is over.
/// Only logFilePath() may be asked by any thread at any time.
class Log
{
public:
    Log();
    ~Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    QDateTime startTime = QDateTime::currentDateTime();
    QDateTime endTime = startTime; ///< also names the file
    bool isCancelled = false;
    QString reason; ///< why the run ended early; null when it did not
    /// In the order processed, none of them null; without what was put aside.
    std::vector<std::shared_ptr<LogFiles>> files;

    /// Puts the records in temporary files once they are more than 500, so that a log takes no more
    /// memory for more pages. The last source stays, without its pages. Called between two records
    /// by who adds them; without room for the files everything stays in `files`.
    void putAside();

    /// Writes the run as a file of the folder "Logs" in the application data folder, named from
    /// `endTime`: "050324140709.log", or, where something has that name, the first free one of
    /// "050324140709-2.log" and so on, also when other programs write their logs there. The folder
    /// is not made here. True also when the file could not be written, which the system log
    /// tells; false, with the reason in the system log, when an exception was met.
    bool save();

    /// The file that the last save() chose, whether or not it could be written; null before.
    QString logFilePath() const;

    /// Why the last save() left no file; null when it did, and before. For who calls save().
    QString saveFault() const { return m_saveFault; }

    /// Writes the run as the file at `path`, replacing it, at once or not at all. Null, or the
    /// reason why it cannot be written. Throws as writeTo() does.
    QString saveTo(const QString& path) const;

    /// False: save() writes no file, logFilePath() stays null. True at the beginning.
    void setStored(bool isStored) { m_isStored = isStored; }

    /// Writes the run as an XML document in UTF-8, one element a line, all content in attributes.
    /// Characters that XML 1.0 cannot hold are written as U+FFFD. False when `to` takes no more.
    /// Throws std::logic_error for a null entry of `files` and std::runtime_error when what was put
    /// aside cannot be read.
    bool writeTo(QIODevice& to) const;

private:
    QString write(const QString& path, StagedFile::Existing existing) const;
    int writeAside(QXmlStreamWriter& xml) const;

    bool m_isStored = true;
    mutable QMutex m_guard; ///< of m_logFilePath, which the job writes and the window reads
    QString m_logFilePath;
    QString m_saveFault;
    std::size_t m_mostRecords
        = 500; ///< in memory: a hundred kilobytes, and no files for short runs
    std::unique_ptr<LogSpill> m_aside; ///< null while nothing was put aside
};

} // namespace pagestack
