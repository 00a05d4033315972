#pragma once

#include "engine/files/FileState.h"

#include <QString>

#include <utility>

namespace pagestack {

class WatchJournal;

/// Moves files of a watched folder out of it when all is done with them. Each step is noted in the
/// journal first, so that one that was cut short can be finished.
class PutAway
{
public:
    struct Folders
    {
        QString watched; ///< absolute, as the others; sub-folders of it are made in them
        QString done;
        QString failed;
    };

    /// `journal` is borrowed.
    PutAway(Folders folders, WatchJournal& journal)
        : m_folders(std::move(folders))
        , m_journal(journal)
    {
    }

    /// Moves the file at `path`, which is in `state`, to the folder of what is done or, with a text
    /// for the file of reasons, of what failed. Nothing there is replaced. Throws
    /// std::runtime_error; finish() then goes on.
    void put(const QString& path, const FileState& state, const QString& reason);

    /// Ends what the journal has of the move of `path`. A file that is new there meanwhile stays.
    void finish(const QString& path);

private:
    const Folders m_folders;
    WatchJournal& m_journal;
};

} // namespace pagestack
