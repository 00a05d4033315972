#pragma once

#include "filelist/FileItem.h"

#include <QCache>
#include <QElapsedTimer>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace pagestack {

/// Reads the dates of a file; any thread, several at a time.
using ReadDates = std::function<FileDates(const FileItem& item)>;

/// The dates that the table shows. Other threads read them, since a file on another computer may
/// take long to answer: a cell shows the dates of the last look. Main thread.
class ShownDates : public QObject
{
    Q_OBJECT

public:
    explicit ShownDates(ReadDates read);
    ~ShownDates() override; ///< waits for the files that are being looked at
    ShownDates(const ShownDates&) = delete;
    ShownDates& operator=(const ShownDates&) = delete;

    /// The dates at the last look, none before the first. Looks anew when that was a while ago.
    FileDates of(const std::shared_ptr<FileItem>& item);

signals:
    void changed(); ///< of() returns other dates of some file now

private:
    struct Look
    {
        FileDates dates;
        qint64 nextMs = 0; ///< by m_clock: the next look is not before
        bool isUnderWay = false;
    };

    void look(const std::shared_ptr<FileItem>& item);
    void take(const QUrl& url, const FileDates& dates);

    const ReadDates m_read;
    QCache<QUrl, Look> m_looks;
    QElapsedTimer m_clock;
    int m_lookCount = 0;
    QThreadPool m_threads;
};

} // namespace pagestack
