#pragma once

#include "engine/plan/OutputFile.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace pagestack {

class Settings;
struct RunOptions;

/// Outputs that may not all have room where they go.
struct SpaceShortage
{
    QString folder; ///< the first one on that file system
    quint64 neededBytes = 0; ///< at most
    quint64 freeBytes = 0;
};

/// "the outputs can take 12.3 GB there, 4.0 GB are free".
QString shortageText(const SpaceShortage& shortage);

/// What lacks room of `outputs`, which are completed (see OutputNames), without those whose file is
/// there and is refused by `isWanted`, if there is one. A file that is replaced gives its room
/// back. Nothing for formats that are compressed, since their size is not known before. For BMP and
/// for TIFF without compression it opens each source and reads the directories of its pages: about
/// twenty microseconds a page. Ends early, with nothing, when `goesOn` is false.
std::vector<SpaceShortage> spaceShortages(const QList<OutputFile>& outputs,
                                          const Settings& settings, const RunOptions& options,
                                          const std::function<bool(const QString& path)>& isWanted,
                                          const std::function<bool()>& goesOn);

/// How many bytes `outputs`, which are completed, take at most, without those that spaceShortages()
/// leaves out. None for formats that are compressed, and when `goesOn` is false. Reads what
/// spaceShortages() reads.
std::optional<quint64> outputBytes(const QList<OutputFile>& outputs, const Settings& settings,
                                   const RunOptions& options,
                                   const std::function<bool(const QString& path)>& isWanted,
                                   const std::function<bool()>& goesOn);

} // namespace pagestack
