#pragma once

#include <QLatin1String>
#include <QString>

#include <deque>

namespace pagestack {

/// One output page or file.
struct LogFile
{
    QString targetFile { QLatin1String("") }; ///< name without folder
    int sourcePageNo = 0; ///< counted from 1
    int targetPageNo = 0; ///< within the output file; never written to the XML file
    QString status { QLatin1String("") };
    QString reason {}; ///< of a failure, or what the page has lost all the same; null: nothing
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
    GatheredFile gathered = GatheredFile::None;
};

} // namespace pagestack
