#pragma once

#include "filelist/LastLooks.h"

#include <QImage>

#include <atomic>

namespace pagestack {

/// Small pictures of first pages, for the rows of the table that are in view.
class ShownThumbnails : public QObject
{
    Q_OBJECT

public:
    static constexpr int side = 40; ///< pixels of the longer one, at scale 1

    /// `ratio` is how many device pixels a pixel has.
    explicit ShownThumbnails(double ratio);
    ~ShownThumbnails() override;
    ShownThumbnails(const ShownThumbnails&) = delete;
    ShownThumbnails& operator=(const ShownThumbnails&) = delete;

    /// Null while it is being made, and for a page that cannot be read.
    QImage of(const std::shared_ptr<FileItem>& item) { return m_looks.of(item); }

signals:
    void changed(); ///< of() returns another picture of some file now

private:
    static QImage look(const FileItem& item, double ratio, const std::atomic<bool>& isStopped);

    const std::shared_ptr<std::atomic<bool>> m_isStopped;
    LastLooks<QImage> m_looks;
};

} // namespace pagestack
