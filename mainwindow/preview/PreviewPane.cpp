#include "mainwindow/preview/PreviewPane.h"

#include "engine/log/ShownReason.h"
#include "engine/preview/PageFacts.h"
#include "mainwindow/preview/ComparedResult.h"
#include "mainwindow/preview/PageFactsText.h"
#include "mainwindow/preview/PageStrip.h"
#include "mainwindow/preview/PictureView.h"
#include "mainwindow/preview/PreviewControls.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolButton>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int mostThreads = 4; ///< one each for the page, a part, thumbnails and the result
    constexpr double buttonStep = 1.5;

    MakeImage imagesOf(const std::shared_ptr<PreviewFile>& file)
    {
        return [file](const PictureWish& wish, const IsStopped& isStopped) {
            return shownImage(pictureOf(file->open(isStopped), wish, isStopped));
        };
    }

    /// The number of pages alone for a page that says nothing sensible: others may.
    PageFacts factsOrPages(const std::shared_ptr<const OpenTiffFile>& file, int page)
    try {
        return factsOf(file, std::min(page, file->pageCount() - 1));
    } catch (const std::runtime_error&) {
        PageFacts facts;
        facts.pages = file->pageCount();
        facts.chainFault = file->chainFault();
        return facts;
    }

} // namespace

PreviewPane::PreviewPane(QWidget* parent)
    : QWidget(parent)
    , m_controls(std::make_unique<PreviewControls>(*this, m_threads))
    , m_factsWork(std::make_unique<LatestWork>(m_threads, nullptr))
{
    m_threads.setMaxThreadCount(mostThreads);
    connectControls();
    compare();
}

PreviewPane::~PreviewPane()
{
    release();
    m_threads.waitForDone();
}

void PreviewPane::bind(std::function<ConversionOptions()> options)
{
    m_result = std::make_unique<ComparedResult>(m_threads, std::move(options));
    connect(m_result.get(), &ComparedResult::made, this,
            [this](const MakeImage& make, const QString& text, const QStringList& notes) {
                m_controls->resultView->showPage(m_page, make);
                m_controls->resultLabel->setText(text);
                m_resultNotes = notes;
                showNotes();
            });
    connect(m_result.get(), &ComparedResult::failed, this, [this](const QString& reason) {
        expectResult();
        m_controls->resultView->showText(shownReason(reason));
    });
}

void PreviewPane::connectControls()
{
    const PreviewControls& c = *m_controls;
    connect(c.previousButton, &QToolButton::clicked, this, [this] { stepPage(-1); });
    connect(c.nextButton, &QToolButton::clicked, this, [this] { stepPage(1); });
    connect(c.pageField, &QSpinBox::valueChanged, this, [this](int page) { showPage(page - 1); });
    connect(c.strip, &PageStrip::pageChosen, this, &PreviewPane::showPage);
    connect(c.fitButton, &QToolButton::clicked, c.view, [view = c.view] { view->setZoom(0); });
    connect(c.actualSizeButton, &QToolButton::clicked, c.view,
            [view = c.view] { view->setZoom(1); });
    connect(c.zoomInButton, &QToolButton::clicked, c.view,
            [view = c.view] { view->zoomBy(buttonStep); });
    connect(c.zoomOutButton, &QToolButton::clicked, c.view,
            [view = c.view] { view->zoomBy(1 / buttonStep); });
    connect(c.compareBox, &QCheckBox::toggled, this, &PreviewPane::compare);
    connect(c.view, &PictureView::shown, this, [this](const QStringList& losses) {
        m_losses = losses;
        endReading();
        showNotes();
        followPlace(*m_controls->view, *m_controls->resultView);
    });
    connect(c.view, &PictureView::failed, this, &PreviewPane::endReading);
    connect(c.resultView, &PictureView::shown, this,
            [this] { followPlace(*m_controls->view, *m_controls->resultView); });
    for (PictureView* view : { c.view, c.resultView })
        connect(view, &PictureView::pageRequested, this, &PreviewPane::stepPage);
    connect(c.view, &PictureView::placeChanged, this,
            [this] { followPlace(*m_controls->view, *m_controls->resultView); });
    connect(c.resultView, &PictureView::placeChanged, this,
            [this] { followPlace(*m_controls->resultView, *m_controls->view); });
}

void PreviewPane::showFile(const QString& path)
{
    if (path.isEmpty())
        return release();
    if (m_file && path == m_path)
        return readFacts();
    release();
    m_path = path;
    m_file = std::make_shared<PreviewFile>(path, [this] { // on the threads of this pane
        QMetaObject::invokeMethod(this, &PreviewPane::readAnew, Qt::QueuedConnection);
    });
    m_controls->fileLabel->setText(QFileInfo(path).fileName());
    showPage(0);
}

void PreviewPane::release()
{
    m_file.reset();
    m_factsWork->cancel();
    if (m_result)
        m_result->stop();
    const PreviewControls& c = *m_controls;
    c.view->showText(tr("Highlight a file to see its pages."));
    c.resultView->showText({});
    c.resultLabel->setText({});
    c.fileLabel->setText({});
    c.factsText->clear();
    m_page = 0;
    m_chainFault.clear();
    m_losses.clear();
    m_resultNotes.clear();
    showNotes();
    c.strip->thumbnails().hold(false);
    setPages(0);
}

/// Nothing of the file of before is shown any more. Only what is read from now on counts.
void PreviewPane::readAnew()
{
    if (!m_file)
        return;
    setPages(m_pages);
    showPage(m_page);
}

/// The page comes first, and thumbnails take turns behind it.
void PreviewPane::endReading()
{
    const PreviewControls& c = *m_controls;
    if (!c.view->whole().hasParts) // it takes too long to be read for its thumbnail, too
        c.strip->thumbnails().put(m_page, c.view->whole().image);
    c.strip->thumbnails().hold(false);
}

void PreviewPane::refreshResult()
{
    if (!m_result || !m_file || !isVisible() || !m_controls->compareBox->isChecked())
        return;
    expectResult();
    m_result->refresh();
}

void PreviewPane::showPage(int page)
{
    if (!m_file)
        return;
    m_page = m_pages > 0 ? std::clamp(page, 0, m_pages - 1) : page;
    const PreviewControls& c = *m_controls;
    {
        const QSignalBlocker quiet(c.pageField);
        c.pageField->setValue(m_page + 1);
    }
    c.strip->setPage(m_page);
    c.previousButton->setEnabled(m_page > 0);
    c.nextButton->setEnabled(m_page + 1 < m_pages);
    m_losses.clear();
    c.strip->thumbnails().hold(true);
    c.view->showPage(m_page, imagesOf(m_file));
    readFacts();
    compare();
}

void PreviewPane::stepPage(int step)
{
    const int page = std::clamp(m_page + step, 0, std::max(m_pages - 1, 0));
    if (page != m_page)
        showPage(page);
}

void PreviewPane::readFacts()
{
    m_factsWork->start(
        [file = m_file, page = m_page](const IsStopped& isStopped) {
            return factsOrPages(file->open(isStopped), page);
        },
        [this](const std::optional<PageFacts>& facts, const QString&) {
            if (facts)
                takeFacts(*facts);
            else // why is what the view says
                m_controls->factsText->clear();
        });
}

void PreviewPane::takeFacts(const PageFacts& facts)
{
    if (std::exchange(m_chainFault, facts.chainFault) != facts.chainFault)
        showNotes();
    if (facts.pages != m_pages)
        setPages(facts.pages);
    const QString text = facts.sizePx.isEmpty() ? QString() : PageFactsText::of(facts);
    if (m_controls->factsText->toPlainText() != text)
        m_controls->factsText->setPlainText(text);
}

void PreviewPane::setPages(int pages)
{
    m_pages = pages;
    const PreviewControls& c = *m_controls;
    {
        const QSignalBlocker quiet(c.pageField);
        c.pageField->setRange(1, std::max(pages, 1));
        c.pageField->setValue(m_page + 1);
    }
    c.pagesLabel->setText(pages > 0 ? tr("of %1").arg(QLocale().toString(pages)) : QString());
    for (QWidget* control : std::initializer_list<QWidget*> {
             c.pageField, c.fitButton, c.actualSizeButton, c.zoomInButton, c.zoomOutButton })
        control->setEnabled(pages > 0);
    c.strip->setPages(pages, m_file ? imagesOf(m_file) : MakeImage());
    c.strip->setVisible(pages > 1);
    c.strip->setPage(m_page);
    c.previousButton->setEnabled(m_page > 0);
    c.nextButton->setEnabled(m_page + 1 < pages);
    followPlace(*c.view, *c.resultView);
}

void PreviewPane::showNotes()
{
    QStringList lines = m_losses;
    if (!m_chainFault.isEmpty())
        lines.append(m_chainFault);
    for (const QString& note : m_resultNotes)
        if (!lines.contains(note))
            lines.append(note);
    std::ranges::transform(lines, lines.begin(), shownReason);
    QLabel* const label = m_controls->noteLabel;
    label->setText(lines.join(u'\n'));
    label->setVisible(!lines.isEmpty());
    followShape();
}

/// Begins to compare, goes on with another page, or ends it.
void PreviewPane::compare()
{
    const PreviewControls& c = *m_controls;
    const bool isCompared = c.compareBox->isChecked();
    c.resultSide->setVisible(isCompared);
    c.viewLabel->setVisible(isCompared);
    expectResult();
    if (!isCompared || !m_file)
        c.resultView->showText({});
    if (!m_result)
        return;
    if (isCompared && m_file)
        m_result->setPage(m_file, m_page, c.view->center().toPoint());
    else
        m_result->stop();
    followShape();
}

/// What is known of the result before is not said any more.
void PreviewPane::expectResult()
{
    m_controls->resultView->expectPage();
    m_controls->resultLabel->setText({});
    m_resultNotes.clear();
    showNotes();
}

/// The two pages are where both are larger.
void PreviewPane::followShape()
{
    const PictureView& view = *m_controls->view;
    if (!view.hasPage() || !m_controls->compareBox->isChecked())
        return;
    layout()->activate(); // a layout that has changed has no room until then
    const QRect room = m_controls->views->geometry();
    const auto scale = [&](double width, double height) {
        return std::min(width / view.pageSize().width(), height / view.pageSize().height());
    };
    m_controls->setSideBySide(scale(room.width() / 2.0, room.height())
                              > scale(room.width(), room.height() / 2.0));
}

void PreviewPane::followPlace(const PictureView& moved, PictureView& other)
{
    if (other.hasPage())
        other.setPlace(moved.zoom(), moved.center());
    m_controls->fitButton->setChecked(moved.zoom() <= 0);
    m_controls->actualSizeButton->setChecked(moved.zoom() == 1);
    if (m_result && m_controls->compareBox->isChecked() && moved.hasPage() && moved.zoom() > 0)
        m_result->follow(moved.visibleRegion());
}

QSize PreviewPane::sizeHint() const
{
    constexpr int linesWide = 22; // as wide as so many lines are high
    return { std::max(QWidget::sizeHint().width(), fontMetrics().height() * linesWide),
             QWidget::sizeHint().height() };
}

void PreviewPane::resizeEvent(QResizeEvent* /*event*/) { followShape(); }

} // namespace pagestack
