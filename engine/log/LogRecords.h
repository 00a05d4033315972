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

} // namespace pagestack
