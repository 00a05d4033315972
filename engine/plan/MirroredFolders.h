#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <mutex>

namespace pagestack {

/// The folders that a run makes below its output folder when the first output goes there. Any
/// thread.
class MirroredFolders
{
public:
    /// An empty `outputFolder` has none.
    explicit MirroredFolders(QString outputFolder)
        : m_outputFolder(std::move(outputFolder))
    {
    }

    /// Removes those that were made and are empty: nothing could be written there.
    ~MirroredFolders();
    MirroredFolders(const MirroredFolders&) = delete;
    MirroredFolders& operator=(const MirroredFolders&) = delete;

    /// Makes what is missing of the folders from the output folder to the file `path`; nothing for
    /// a file that is not below it. Throws std::runtime_error.
    void makeFor(const QString& path);

    /// Why no output could be written in `folder`, which is at or below `outputFolder`; null when
    /// it can, or could once it is made. A link that leads out of the output folder is such a
    /// reason.
    static QString fault(const QString& folder, const QString& outputFolder);

private:
    const QString m_outputFolder;
    std::mutex m_mutex; ///< guards the fields below
    QSet<QString> m_ready;
    QStringList m_made; ///< a folder before those below it
};

} // namespace pagestack
