#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

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

/// Why a file that is met again with another choice of pages is not taken.
inline constexpr QStringView namedTwice
    = u"named twice with different pages; those named first are converted";

struct CollectedSources
{
    QList<Source> files; ///< in the order given, those of a folder in natural order; no file twice
    QStringList duplicates; ///< as shown
    QList<PathTrouble> troubles;
    QStringList leftOut; ///< files of folders whose extension differs in case only
};

/// Takes what is found, as it is met.
struct SourceSink
{
    std::function<void(const Source& source)> file; ///< a file that is met twice comes twice
    std::function<void(const PathTrouble& trouble)> trouble;
    std::function<void(const QString& shown)> leftOut; ///< see CollectedSources
};

/// Looks up `paths` and then the paths that the files `lists` hold, one a line; "-" is standard
/// input. A line that is no path to anything may have a tab and a choice of pages behind it. A file
/// that is named is taken whatever its extension; a folder gives its visible files with an allowed
/// extension, on request with those of its sub-folders. Takes no more memory for more files.
void forEachSource(const QStringList& paths, QStringList lists, bool isRecursive,
                   const SourceSink& sink);

/// All of them, no file twice.
CollectedSources collectSources(const QStringList& paths, QStringList lists, bool isRecursive);

} // namespace pagestack
