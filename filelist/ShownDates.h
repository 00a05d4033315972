#pragma once

#include "filelist/LastLooks.h"

#include <functional>

namespace pagestack {

/// Reads the dates of a file; any thread, several at a time.
using ReadDates = std::function<FileDates(const FileItem& item)>;

/// The dates that the table shows, read anew every second in which they are asked for.
class ShownDates : public QObject
{
    Q_OBJECT

public:
    explicit ShownDates(ReadDates read);

    FileDates of(const std::shared_ptr<FileItem>& item) { return m_looks.of(item); }

signals:
    void changed(); ///< of() returns other dates of some file now

private:
    LastLooks<FileDates> m_looks;
};

/// Width, height and resolution of first pages, as the table shows them: "2480 x 3508, 300 dpi".
/// Empty where they cannot be read.
class ShownPixels : public QObject
{
    Q_OBJECT

public:
    ShownPixels();

    QString of(const std::shared_ptr<FileItem>& item) { return m_looks.of(item); }

signals:
    void changed(); ///< of() returns another text of some file now

private:
    LastLooks<QString> m_looks;
};

} // namespace pagestack
