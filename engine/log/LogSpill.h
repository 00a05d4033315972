#pragma once

#include "engine/log/LogRecords.h"

#include <QFile>

#include <memory>
#include <vector>

namespace pagestack {

/// The older records of a long log, put aside in two temporary files that have no name: the
/// sources, and the pages of all sources one after the other. One thread at a time.
class LogSpill
{
public:
    using Sources = std::vector<std::shared_ptr<LogFiles>>;

    /// Takes over all of `records`, none of them null, but for the last source itself, to which
    /// pages may still come: only its pages are taken. What was taken is removed from `records`.
    /// False, with nothing taken, when there is no room for it.
    bool takeFrom(Sources& records);

    /// Pages that belong before those of the source that takeFrom() left.
    int pagesOfLast() const { return m_pagesOfLast; }

    /// Goes back to the start of what was taken. Throws std::runtime_error, as the two below, when
    /// the files cannot be read.
    void rewind();

    /// The next source, without its pages, and how many of them nextPage() gives; false at the end.
    bool nextSource(LogFiles& source, int& pages);
    void nextPage(LogFile& page);

private:
    void open();

    QFile m_sources;
    QFile m_pages;
    qint64 m_sourcesEnd = 0;
    qint64 m_pagesEnd = 0;
    int m_pagesOfLast = 0;
};

} // namespace pagestack
