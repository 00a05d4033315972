#pragma once

#include "filelist/RowStatus.h"
#include "mainwindow/state/WindowParts.h"

#include <QHash>
#include <QString>

#include <optional>

namespace pagestack {

struct OutputFile;

/// The rows of the list during a run: what becomes of each, and the one in hand in view as long as
/// the user does not scroll himself. Main thread.
class RunRows
{
public:
    explicit RunRows(const WindowParts& parts)
        : m_parts(parts)
    {
    }

    /// Forgets what the run before has made of the rows.
    void begin();
    void show(const QHash<QString, RowStatus>& statuses);
    /// Brings the row of `output` into view. Its outputs come in the order of the list.
    void follow(const OutputFile& output);

private:
    const WindowParts m_parts;
    int m_row = 0; ///< of the output that was followed last
    std::optional<int> m_scrolled; ///< where the scroll bar was left; none before the first time
    bool m_isFollowing = true;
};

} // namespace pagestack
