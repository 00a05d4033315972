#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace pagestack {

/// A file that is to be converted.
struct Source
{
    QString path; ///< absolute
    QString shown; ///< as the user wrote it, or below the folder that the user wrote
    QString foundIn {}; ///< that folder, absolute; empty for a file that the user named
    QString pageChoice { QLatin1String("") }; ///< as FileItem takes it
};

/// A path that cannot be taken, and the reason.
struct PathTrouble
{
    QString shown;
    QString reason;
};

struct CollectedSources
{
    QList<Source> files; ///< in the order given, those of a folder in natural order; no file twice
    QStringList duplicates; ///< as shown
    QList<PathTrouble> troubles;
    QStringList leftOut; ///< files of folders whose extension differs in case only
};

/// Looks up `paths` and then the paths that the files `lists` hold, one a line; "-" is standard
/// input. A line that is no path to anything may have a tab and a choice of pages behind it. A file
/// that is named is taken whatever its extension; a folder gives its visible files with an allowed
/// extension, on request with those of its sub-folders.
CollectedSources collectSources(const QStringList& paths, QStringList lists, bool isRecursive);

} // namespace pagestack
