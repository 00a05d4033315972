#pragma once

#include <QCoreApplication>

class QBoxLayout;
class QCheckBox;
class QLabel;
class QPlainTextEdit;
class QSpinBox;
class QThreadPool;
class QToolButton;
class QWidget;

namespace pagestack {

class PageStrip;
class PictureView;

/// The controls of the preview, which are children of its pane.
struct PreviewControls
{
    Q_DECLARE_TR_FUNCTIONS(PreviewControls)

public:
    PreviewControls(QWidget& pane, QThreadPool& threads);
    ~PreviewControls() = default;
    PreviewControls(const PreviewControls&) = delete;
    PreviewControls& operator=(const PreviewControls&) = delete;

    /// Shows the two pages side by side, else one above the other.
    void setSideBySide(bool isSideBySide);

    QLabel* fileLabel = nullptr;
    QCheckBox* compareBox = nullptr;
    QToolButton* previousButton = nullptr;
    QToolButton* nextButton = nullptr;
    QSpinBox* pageField = nullptr;
    QLabel* pagesLabel = nullptr;
    QToolButton* fitButton = nullptr;
    QToolButton* actualSizeButton = nullptr;
    QToolButton* zoomOutButton = nullptr;
    QToolButton* zoomInButton = nullptr;
    QBoxLayout* views = nullptr;
    PictureView* view = nullptr;
    QLabel* viewLabel = nullptr; ///< while it is compared
    QWidget* resultSide = nullptr;
    PictureView* resultView = nullptr;
    QLabel* resultLabel = nullptr;
    QLabel* noteLabel = nullptr;
    PageStrip* strip = nullptr;
    QPlainTextEdit* factsText = nullptr;

private:
    void makeRows(QBoxLayout& column);
    QWidget* makeSide(PictureView& picture, QLabel& caption);
    void makeViews(QBoxLayout& column, QThreadPool& threads);
};

} // namespace pagestack
