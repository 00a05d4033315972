#pragma once

#include "engine/preview/ResultSample.h"
#include "engine/support/Pause.h"
#include "mainwindow/preview/LatestWork.h"
#include "mainwindow/preview/ShownImage.h"

#include <QPoint>

namespace pagestack {

/// What the page that is looked at becomes by the present options, made anew when they have rested
/// for a while. Main thread.
class ComparedResult : public QObject
{
    Q_OBJECT

public:
    using Options = std::function<ConversionOptions()>;

    ComparedResult(QThreadPool& threads, Options options);

    /// The page that is compared, from 0; of a large one the part around `center`.
    void setPage(std::shared_ptr<PreviewFile> file, int page, QPoint center);
    /// Makes the result anew: the options are others.
    void refresh();
    /// The same for a view that shows `seen`, if that is not in the part that was made.
    void follow(const QRect& seen);
    void stop();

signals:
    /// The result is there: its format and bytes, and what is to be noted of it.
    void made(const pagestack::MakeImage& make, const QString& text, const QStringList& notes);
    void failed(const QString& reason);

private:
    void tell(const ResultSample& sample);
    void begin();

    const Options m_options;
    std::shared_ptr<PreviewFile> m_file; ///< null: nothing is compared
    int m_page = 0;
    QPoint m_center;
    QRect m_region; ///< that was made last
    LatestWork m_work;
    Pause m_rest;
};

} // namespace pagestack
