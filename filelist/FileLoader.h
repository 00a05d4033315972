#pragma once

#include "filelist/Addition.h"
#include "filelist/FileItem.h"

#include <QList>
#include <QUrl>

#include <memory>

namespace pagestack {

/// The list that a FileLoader fills, implemented by its owner.
class LoaderTarget
{
public:
    virtual ~LoaderTarget() = default;

    /// Asked before each file; false ends the load. Any thread.
    virtual bool isProcessing() const = 0;
    /// Whether the list has an item with this URL. Main thread.
    virtual bool contains(const QUrl& url) const = 0;
    /// Adds the item at the end; false when an equal one is there. Main thread.
    virtual bool append(const std::shared_ptr<FileItem>& item) = 0;
    /// Gives the choice of pages to the items that the list has already. Main thread.
    virtual void choosePages(const QHash<QUrl, QString>& choices) = 0;
    /// Follows each item that was added. Main thread.
    virtual void updateTotalPagesLabel() = 0;

protected:
    LoaderTarget() = default;
    LoaderTarget(const LoaderTarget&) = default;
    LoaderTarget& operator=(const LoaderTarget&) = default;
};

/// Finds files and adds them to the list. Runs on a background thread, which waits for the main
/// thread with callOnMainThread().
///
/// Threads of the loader's own open the files and count their pages, which takes most of the time;
/// the files are added in order. A call to the main thread adds as many files as are ready, for a
/// few milliseconds at the most: for each it asks isProcessing(), appends, and updates the total.
/// Files that are listed already are not opened; "." and ".." in a path do not make another file.
///
/// An exception, of the target too, ends the load and is logged; the files added so far stay. A
/// load also ends when the application shuts down. The files in hand are finished first.
class FileLoader
{
public:
    explicit FileLoader(LoaderTarget& target)
        : m_target(target)
    {
    }

    /// Adds the URLs, whatever their extension; those that are no file URLs are skipped. Some come
    /// with a choice of pages. True when the list has grown.
    bool addFilesToList(const QList<QUrl>& urls, const QHash<QUrl, QString>& pageChoices = {});

    /// Adds the files of allowed types in these folders, without sub-folders or with all of them,
    /// by name, digits as numbers. A URL that is no folder but has an allowed type is added itself.
    /// True when the list has grown.
    bool addFolderToList(const QList<QUrl>& urls, bool includeSubdirectories);

    /// What the last of these calls has done.
    const Addition& addition() const { return m_addition; }

private:
    LoaderTarget& m_target;
    Addition m_addition;
};

} // namespace pagestack
