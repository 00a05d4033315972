#pragma once

#include "engine/files/StagedFile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

namespace pagestack {

class Log;

/// What went wrong with a run apart from its sources, such as a lack of room or a log that could
/// not be written: a clause each, with what it is about.
struct RunTroubles
{
    QStringList reasons;
    QStringList warnings;
};

/// The HTML page that tells a run to people: totals, what went wrong, then every source with its
/// pages and links to the outputs. It is made of what `log`, which is complete, writes as XML, some
/// of the text at a time, so that it takes no more memory for more pages. `sources` is the number
/// of those that were to be converted, `troubles` what the log does not hold. Throws as
/// Log::writeTo does, and what `output` throws.
void writeReport(const Log& log, qsizetype sources, const RunTroubles& troubles,
                 const std::function<void(const QByteArray& text)>& output);

/// Writes the page as the file at `path`. Null, or the reason why it cannot be written. Throws
/// StagedFile::NameTaken.
QString saveReport(const Log& log, qsizetype sources, const RunTroubles& troubles,
                   const QString& path, StagedFile::Existing existing);

/// Where the page of a run is that has its log at `logPath`; null without a log.
QString reportPathBeside(const QString& logPath);

} // namespace pagestack
