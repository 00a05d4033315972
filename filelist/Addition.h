#pragma once

#include <QStringList>

namespace pagestack {

/// What a load has made of the files and folders that it was given.
struct Addition
{
    int added = 0;
    int listed = 0; ///< were in the list already, or named twice
    int notTiff = 0; ///< left out by their names
    int refused = 0; ///< left out for another reason
    int unreadLines = 0; ///< of a text with paths: those that are none
    int unsearched = 0; ///< folders below those given, whose files were not wanted
    /// How it came to its end.
    enum class End { Reached, Cancelled, Failed } end = End::Reached;
    QStringList refusals {}; ///< "path: reason", the first ones

    void refuse(const QString& path, const QString& reason);
    QString text() const; ///< "6 added, 1 already there, 1,001 left out"; empty for nothing
                          ///< at all
    QString reasons() const; ///< a line each; empty where nothing was left out
};

} // namespace pagestack
