#pragma once

#include "engine/files/FileDigest.h"
#include "engine/files/StagedFile.h"

#include <QByteArray>
#include <QDateTime>
#include <QLatin1String>
#include <QMutex>
#include <QString>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace pagestack {

class ByteSpool;

/// One output page or file.
struct LogFile
{
    QString targetFile { QLatin1String("") }; ///< name without folder
    int sourcePageNo = 0; ///< counted from 1
    int targetPageNo = 0; ///< within the output file; never written to the XML file
    QString status { QLatin1String("") };
    QString reason {}; ///< of a failure, or what the page has lost all the same; null: nothing
    bool isTakenOver = false; ///< its JPEG data were not decoded
    std::optional<FileDigest> digest {}; ///< of its own file in place, where it is asked for
};

/// What became of the file in which the pages of a source are gathered.
enum class GatheredFile {
    None, ///< each page has a file of its own, or the file is in place
    NotWritten, ///< its pages are "Completed" as far as they were gathered
    Skipped, ///< and so are its pages
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
    QString reason {}; ///< everything that went wrong with the file as a whole; null: nothing
    bool hasErrors = false; ///< among the reasons; else they are warnings; not in the XML file
    GatheredFile gathered = GatheredFile::None;
    QString leftBehind {}; ///< what its pages say that the format has no place for; null: nothing
    std::optional<FileDigest> sourceDigest {}; ///< where they are asked for
    std::optional<FileDigest> targetDigest {}; ///< of the file in which the pages are gathered
};

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

    /// Moves the records, as XML text, to temporary files once they are more than 500, so that a
    /// log takes no more memory for more pages. The last source stays, without its pages. To be
    /// called between two records. Without room for the files everything stays in `files`.
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
    /// reason why it cannot be written. Throws std::logic_error as writeTo() does.
    QString saveTo(const QString& path) const;

    /// False: save() writes no file, logFilePath() stays null. True at the beginning.
    void setStored(bool isStored) { m_isStored = isStored; }

    /// True: nobody will ask for the text of the run; of what is put aside only hasErrors() is
    /// kept.
    void setTextDropped(bool isDropped) { m_isTextDropped = isDropped; }

    /// Whether the `number`th source, from 0 on in the order processed, has errors as a whole.
    bool hasErrors(std::size_t number) const;

    using Output = std::function<void(const QByteArray& text)>;

    /// Hands the run to `output`, some of the text at a time: an XML document in UTF-8, one element
    /// a line, all content in attributes. Characters that XML 1.0 cannot hold become U+FFFD. Throws
    /// what `output` throws, std::logic_error for a null entry of `files`, and std::runtime_error
    /// when the text that was put aside cannot be read.
    void writeTo(const Output& output) const;

private:
    QString write(const QString& path, StagedFile::Existing existing) const;
    void writeSources(std::size_t number, const Output& output) const;
    void spill();
    void forgetSpilled();

    bool m_isStored = true;
    bool m_isTextDropped = false;
    mutable QMutex m_guard; ///< of m_logFilePath, which the job writes and the window reads
    QString m_logFilePath;
    QString m_saveFault;
    std::size_t m_mostRecords
        = 500; ///< in memory: a hundred kilobytes, and no files for short runs
    std::unique_ptr<ByteSpool> m_finished; ///< elements of the sources before `files`; may be null
    std::uint64_t m_finishedBytes = 0;
    std::vector<bool> m_finishedErrors; ///< `hasErrors` of the sources before `files`
    std::shared_ptr<ByteSpool> m_pages; ///< elements of files.front(), before its own; may be null
};

} // namespace pagestack
