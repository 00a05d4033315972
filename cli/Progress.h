#pragma once

#include "cli/Options.h"

#include <QElapsedTimer>
#include <QString>

namespace pagestack {

class Console;

/// "12 of 345 pages, 1:05 left"; the time left is missing before the first page and after the last.
QString progressText(int done, int total, qint64 elapsedMs);

/// The progress line of a run, redrawn at most ten times a second.
class Progress
{
public:
    /// `console` is borrowed.
    Progress(Console& console, ProgressMode mode, int totalPages);

    void setDone(int pages);
    /// Shows the last state, then gives the line back.
    void finish();

private:
    void show();

    Console& m_console;
    bool m_isShown;
    int m_total;
    int m_done = 0;
    int m_shown = -1; ///< the number of pages on display
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceShown;
};

} // namespace pagestack
