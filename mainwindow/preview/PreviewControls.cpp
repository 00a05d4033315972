#include "mainwindow/preview/PreviewControls.h"

#include "mainwindow/preview/PageStrip.h"
#include "mainwindow/preview/PictureView.h"
#include "mainwindow/widgets/ElidedLabel.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QToolButton>

#include <cmath>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int linesOfFacts = 6;

    /// A button in the rows above the page.
    QToolButton* addButton(QBoxLayout& row, const QString& objectName, const QString& text,
                           const QString& tip)
    {
        auto* const button = new QToolButton;
        button->setObjectName(objectName);
        button->setText(text);
        button->setToolTip(tip);
        button->setAccessibleName(tip);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        row.addWidget(button);
        return button;
    }

    QLabel* addNote(QBoxLayout& column, const QString& objectName)
    {
        auto* const label = new QLabel;
        label->setObjectName(objectName);
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setWordWrap(true);
        label->hide();
        column.addWidget(label);
        return label;
    }

} // namespace

PreviewControls::PreviewControls(QWidget& pane, QThreadPool& threads)
{
    auto* const column = new QVBoxLayout(&pane);
    column->setContentsMargins(4, 6, 4, 8);
    makeRows(*column);
    makeViews(*column, threads);
    noteLabel = addNote(*column, u"previewNoteLabel"_s);
    strip = new PageStrip(threads, &pane);
    strip->setObjectName(u"previewStrip"_s);
    strip->setAccessibleName(tr("Pages"));
    column->addWidget(strip);
    factsText = new QPlainTextEdit;
    factsText->setObjectName(u"previewFactsText"_s);
    factsText->setAccessibleName(tr("Facts of the page"));
    factsText->setTabChangesFocus(true);
    factsText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    factsText->setFixedHeight(
        factsText->fontMetrics().lineSpacing() * linesOfFacts + 2 * factsText->frameWidth()
        + static_cast<int>(std::ceil(2 * factsText->document()->documentMargin())));
    column->addWidget(factsText);
}

void PreviewControls::makeRows(QBoxLayout& column)
{
    auto* const names = new QHBoxLayout;
    column.addLayout(names);
    fileLabel = new ElidedLabel;
    fileLabel->setObjectName(u"previewFileLabel"_s);
    names->addWidget(fileLabel, 1);
    compareBox = new QCheckBox(tr("Compare"));
    compareBox->setObjectName(u"previewCompareBox"_s);
    compareBox->setToolTip(tr("Shows what the page becomes by the present settings, and how "
                              "large its file is"));
    names->addWidget(compareBox);

    auto* const row = new QHBoxLayout;
    row->setSpacing(2);
    column.addLayout(row);
    previousButton = addButton(*row, u"previewPreviousButton"_s, {}, tr("Previous page"));
    previousButton->setArrowType(Qt::LeftArrow);
    pageField = new QSpinBox;
    pageField->setObjectName(u"previewPageField"_s);
    pageField->setAccessibleName(tr("Page"));
    pageField->setButtonSymbols(QAbstractSpinBox::NoButtons);
    pageField->setAlignment(Qt::AlignRight);
    pageField->setKeyboardTracking(false);
    pageField->setRange(1, 1);
    pageField->setFixedWidth(pageField->fontMetrics().horizontalAdvance(u"0000000"_s) + 12);
    row->addWidget(pageField);
    pagesLabel = new QLabel;
    pagesLabel->setObjectName(u"previewPagesLabel"_s);
    pagesLabel->setMinimumWidth(pagesLabel->fontMetrics().horizontalAdvance(u"of 00000"_s));
    row->addWidget(pagesLabel);
    nextButton = addButton(*row, u"previewNextButton"_s, {}, tr("Next page"));
    nextButton->setArrowType(Qt::RightArrow);
    row->addStretch();
    fitButton = addButton(*row, u"previewFitButton"_s, tr("Fit"), tr("Shows the whole page (0)"));
    actualSizeButton = addButton(*row, u"previewActualSizeButton"_s, tr("100 %"),
                                 tr("Shows the pixels as they are (1)"));
    zoomOutButton = addButton(*row, u"previewZoomOutButton"_s, u"\u2212"_s, tr("Shows more (-)"));
    zoomInButton = addButton(*row, u"previewZoomInButton"_s, u"+"_s, tr("Enlarges (+)"));
    for (QToolButton* button : { fitButton, actualSizeButton })
        button->setCheckable(true);
}

QWidget* PreviewControls::makeSide(PictureView& picture, QLabel& caption)
{
    auto* const side = new QWidget;
    auto* const column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(&picture, 1);
    caption.setAlignment(Qt::AlignCenter);
    caption.setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(&caption);
    views->addWidget(side, 1);
    return side;
}

void PreviewControls::makeViews(QBoxLayout& column, QThreadPool& threads)
{
    views = new QHBoxLayout;
    column.addLayout(views, 1);
    view = new PictureView(threads, nullptr);
    view->setObjectName(u"previewView"_s);
    view->setAccessibleName(tr("Page"));
    viewLabel = new ElidedLabel;
    viewLabel->setText(tr("Original"));
    viewLabel->setObjectName(u"previewViewLabel"_s);
    makeSide(*view, *viewLabel);
    resultView = new PictureView(threads, nullptr);
    resultView->setObjectName(u"previewResultView"_s);
    resultView->setAccessibleName(tr("Result"));
    resultLabel = new ElidedLabel;
    resultLabel->setObjectName(u"previewResultLabel"_s);
    resultSide = makeSide(*resultView, *resultLabel);
}

void PreviewControls::setSideBySide(bool isSideBySide)
{
    views->setDirection(isSideBySide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

} // namespace pagestack
