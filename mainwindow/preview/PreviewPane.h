#pragma once

#include "engine/options/ConversionOptions.h"

#include <QThreadPool>
#include <QWidget>

#include <functional>
#include <memory>

class QSpinBox;

namespace pagestack {

class ComparedResult;
class LatestWork;
class PageStrip;
class PictureView;
class PreviewFile;
struct PageFacts;
struct PreviewControls;

/// The side of the window that shows the pages of a file, what they are, and on request what they
/// become. Everything is read on other threads, with readers of its own. Main thread.
class PreviewPane : public QWidget
{
    Q_OBJECT

public:
    explicit PreviewPane(QWidget* parent = nullptr);
    ~PreviewPane() override; ///< waits for what is being read
    PreviewPane(const PreviewPane&) = delete;
    PreviewPane& operator=(const PreviewPane&) = delete;

    /// `options` says what a run would do now. To be called once.
    void bind(std::function<ConversionOptions()> options);

    /// Shows the first page of the file at `path`; empty: there is none to be shown. The same path
    /// again only shows what has changed.
    void showFile(const QString& path);
    /// Ends all work and forgets the pages: nobody looks.
    void release();
    /// The options are others.
    void refreshResult();

    int page() const { return m_page; } ///< from 0

    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void connectControls();
    void showPage(int page);
    void stepPage(int step);
    void readFacts();
    void takeFacts(const PageFacts& facts);
    void setPages(int pages);
    void showNotes();
    void readAnew();
    void endReading();
    void compare();
    void expectResult();
    void followShape();
    void followPlace(const PictureView& moved, PictureView& other);

    QString m_path;
    std::shared_ptr<PreviewFile> m_file; ///< null: none is shown
    int m_page = 0;
    int m_pages = 0; ///< 0: not known yet
    QString m_chainFault;
    QStringList m_losses; ///< of the page
    QStringList m_resultNotes;
    QThreadPool m_threads;
    std::unique_ptr<PreviewControls> m_controls;
    std::unique_ptr<LatestWork> m_factsWork;
    std::unique_ptr<ComparedResult> m_result; ///< null before `bind`
};

} // namespace pagestack
