#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace pagestack {

struct Options;

/// A file that is to be converted.
struct Source
{
    QString path; ///< absolute
    QString shown; ///< as the user wrote it, or below the folder that the user wrote
};

/// A path that cannot be taken, and why.
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
    QStringList leftOut; ///< files of folders that only the case of their ending keeps out
};

/// Looks up the sources of the command line and of its path lists. Standard input is read when one
/// of the lists is "-". A file that is named is taken whatever its extension; a folder gives its
/// visible files with one of the four TIFF extensions. Sub-folders are entered on request, each
/// once, whatever symbolic links lead there.
CollectedSources collectSources(const Options& options);

} // namespace pagestack
