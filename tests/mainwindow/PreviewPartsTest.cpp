#include "engine/preview/PageFacts.h"
#include "mainwindow/preview/ComparedResult.h"
#include "mainwindow/preview/PageFactsText.h"
#include "mainwindow/preview/PageStrip.h"
#include "mainwindow/preview/PictureView.h"
#include "tests/mainwindow/Session.h"

#include <QColorSpace>
#include <QScrollBar>
#include <QSemaphore>
#include <QWheelEvent>

namespace {

/// A view of pages of one colour, whose parts have another one. Counts how often it is painted.
class TestView : public PictureView
{
public:
    TestView(QThreadPool& threads, QSize size)
        : PictureView(threads, nullptr)
    {
        resize(size);
        show();
    }

    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        PictureView::paintEvent(event);
    }
};

/// Gives pages of `size`, red where they are asked for as a whole and green in parts.
struct Pages
{
    ShownImage operator()(const PictureWish& wish, const IsStopped& isStopped)
    {
        const bool isPart = !wish.region.isEmpty();
        ++(isPart ? parts : wholes);
        if (isPart ? holdsParts : holdsWholes)
            while (!released.tryAcquire(1, 10))
                if (isStopped())
                    ++stopped, throw std::runtime_error("stopped");
        if (fails)
            throw std::runtime_error("torn");
        const QRect region = regionInPage(wish.region, size);
        QImage image(reducedSize(region.size(), wish.most), QImage::Format_ARGB32);
        image.fill(isPart ? Qt::green : color);
        return { image, region, size, {}, hasParts };
    }
    MakeImage make()
    {
        return [this](const PictureWish& wish, const IsStopped& isStopped) {
            return (*this)(wish, isStopped);
        };
    }

    QSize size { 800, 600 };
    QColor color = Qt::red;
    bool hasParts = true;
    bool fails = false;
    std::atomic<bool> holdsWholes = false;
    std::atomic<bool> holdsParts = false;
    QSemaphore released;
    std::atomic<int> wholes = 0;
    std::atomic<int> parts = 0;
    std::atomic<int> stopped = 0;
};

QColor colorAt(QWidget& widget, QPoint place) { return widget.grab().toImage().pixelColor(place); }
QColor middleOf(QWidget& widget) { return colorAt(widget, widget.rect().center()); }

/// Whether some pixel of `area` has not the colour of its corner.
bool hasDrawing(QWidget& widget, const QRect& area)
{
    const QImage image = widget.grab().toImage();
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (image.pixel(x, y) != image.pixel(area.topLeft()))
                return true;
    return false;
}

void turn(QWidget& widget, QPoint angle)
{
    const QPointF middle(widget.rect().center());
    QWheelEvent wheel(middle, widget.mapToGlobal(middle), {}, angle, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&widget, &wheel);
}

class PreviewPartsTest : public WindowFixture
{
    Q_OBJECT

    QThreadPool m_threads;

private slots:
    void init() { takeNewFolder(); }
    void cleanup() { QVERIFY(m_threads.waitForDone(longMs)); }

    /// Pixels of the page before, of the wrong part, or none; a page that is not told from what is
    /// around it.
    void paintsWhatIsInView()
    {
        Pages pages;
        TestView view(m_threads, { 200, 300 });
        const auto ground = [&](QPalette::ColorRole role) {
            return colorAt(view, { 20, 20 }).rgb() == view.palette().color(role).rgb();
        };
        QVERIFY(ground(QPalette::Window));
        view.showPage(0, pages.make());
        QTRY_COMPARE(middleOf(view), QColor(Qt::red));
        QVERIFY(ground(QPalette::Mid));
        QCOMPARE(pages.parts, 0);
        pages.holdsParts = true;
        view.setZoom(1);
        QTRY_COMPARE(pages.parts, 1);
        QVERIFY(!QTest::qWaitFor([] { return false; }, 100)); // what is due is painted
        const int paints = view.paints;
        pages.holdsParts = false;
        pages.released.release();
        QTRY_VERIFY(view.paints > paints);
        QTRY_COMPARE(middleOf(view), QColor(Qt::green));
        QCOMPARE(colorAt(view, { 20, 20 }), QColor(Qt::green));
        const int parts = pages.parts;
        turn(view, { 80, 0 }); // which the part has room for
        QVERIFY(!QTest::qWaitFor([&] { return pages.parts > parts; }, 150));
        for (int i = 0; i < 4; ++i)
            QTest::keyClick(&view, Qt::Key_Left);
        QCOMPARE(colorAt(view, { 20, 150 }), QColor(Qt::red)); // until it is read
        QTRY_COMPARE(colorAt(view, { 20, 150 }), QColor(Qt::green));
        view.setZoom(0);
        QTRY_COMPARE(middleOf(view), QColor(Qt::red));
        QVERIFY(view.hasPage()); // whose patience has ended

        view.activateWindow();
        view.setFocus();
        QTRY_VERIFY(view.hasFocus());
        const auto edge = [&] { return colorAt(view, { 0, 5 }).rgb(); };
        QTRY_COMPARE(edge(), view.palette().color(QPalette::Highlight).rgb());
        view.clearFocus();
        QCOMPARE(edge(), view.palette().color(QPalette::Mid).rgb());
        view.showText(u"gone"_s);
        QVERIFY(ground(QPalette::Window)
                && hasDrawing(view, view.rect().adjusted(20, 20, -20, -20)));

        pages.color = Qt::transparent;
        pages.hasParts = false;
        view.showPage(0, pages.make());
        QTRY_COMPARE(middleOf(view), QColor(Qt::white));
    }

    /// Pixels that are blurred where they are to be counted, or ragged where the page is small.
    void showsPixelsAsSquaresFromTwiceTheirSize()
    {
        TestView view(m_threads, { 200, 200 });
        view.showPage(0, [](const PictureWish&, const IsStopped&) {
            QImage image(40, 40, QImage::Format_RGB32);
            image.fill(Qt::white);
            for (int i = 0; i < 40 * 40; i += 2)
                image.setPixel(i % 40, i / 40, 0xff000000);
            return ShownImage { image, image.rect(), image.size(), {}, false };
        });
        QTRY_VERIFY(view.hasPage());
        for (const auto& [zoom, hasGray] : { std::pair(1.6, true), std::pair(2.0, false) }) {
            view.setZoom(zoom);
            const QImage shown = view.grab(QRect(80, 80, 40, 40)).toImage();
            int grays = 0;
            for (int x = 0; x < 40; ++x)
                grays += qGray(shown.pixel(x, 20)) % 255 != 0 ? 1 : 0;
            QCOMPARE(grays > 0, hasGray);
        }
    }

    /// A page that is waited for in silence, or by the name of another one.
    void saysWhenAPageTakesLong()
    {
        Pages pages;
        pages.holdsWholes = true;
        pages.released.release();
        TestView view(m_threads, { 200, 300 });
        QSignalSpy shown(&view, &PictureView::shown);
        QSignalSpy failed(&view, &PictureView::failed);
        view.showPage(0, pages.make());
        QTRY_COMPARE(shown.size(), 1);
        view.setZoom(1);
        QTRY_COMPARE(middleOf(view), QColor(Qt::green));
        view.showPage(1, pages.make());
        QVERIFY(view.hasPage());
        int paints = view.paints;
        QTRY_COMPARE(view.text(), u"Reading the page..."_s);
        QVERIFY(!view.hasPage() && view.accessibleDescription() == view.text());
        QTRY_VERIFY(view.paints > paints);
        pages.released.release();
        QTRY_COMPARE(shown.size(), 2);
        QVERIFY(view.hasPage() && view.text().isEmpty() && view.accessibleDescription().isEmpty());
        view.showPage(2, pages.make());
        QTRY_COMPARE(pages.wholes, 3);
        view.expectPage();
        QTRY_COMPARE(pages.stopped, 1);
        QTRY_VERIFY(!view.hasPage());
        pages.fails = true;
        view.showPage(3, pages.make());
        QCOMPARE(view.text(), u"Reading the page..."_s); // still
        paints = view.paints;
        pages.released.release();
        QTRY_COMPARE(failed.size(), 1);
        QVERIFY(view.text() == u"torn"_s && view.accessibleDescription() == u"torn"_s);
        QTRY_VERIFY(view.paints > paints);
        QVERIFY(!QTest::qWaitFor([&] { return view.text() != u"torn"_s; }, 300));
        pages.fails = false;
        view.showPage(4, pages.make());
        QTRY_COMPARE(pages.wholes, 5);
        view.showText(u"none"_s);
        QTRY_COMPARE(pages.stopped, 2);
        QVERIFY(!QTest::qWaitFor([&] { return view.text() != u"none"_s; }, 300));
        QCOMPARE(shown.size(), 2);
    }

    /// A part of the page before over the page of now, and a file that is held by a view of a text.
    void forgetsThePageBefore()
    {
        Pages pages;
        Pages others;
        others.hasParts = false;
        others.color = Qt::blue;
        TestView view(m_threads, { 200, 300 });
        auto held = std::make_shared<int>();
        const std::weak_ptr<int> file = held;
        view.showPage(0, [&pages, held](const PictureWish& wish, const IsStopped& isStopped) {
            return pages(wish, isStopped);
        });
        held.reset();
        QTRY_VERIFY(view.hasPage());
        pages.holdsParts = true;
        view.setPlace(1, { 200, 250 });
        QTRY_COMPARE(pages.parts, 1);
        view.showPage(0, others.make());
        QTRY_COMPARE(middleOf(view), QColor(Qt::blue));
        QTRY_COMPARE(pages.stopped, 1);
        QTRY_VERIFY(file.expired());
        QCOMPARE(view.zoom(), 1.0); // pages of a size are compared at one place
        QCOMPARE(view.center(), QPointF(200, 250));
        pages.holdsParts = false;
        view.showPage(0, pages.make());
        QTRY_COMPARE(middleOf(view), QColor(Qt::green));
        view.showPage(0, others.make());
        QTRY_COMPARE(middleOf(view), QColor(Qt::blue)); // at once, without what was green
        others.fails = true;
        QSignalSpy failed(&view, &PictureView::failed);
        view.showPage(0, others.make());
        QTRY_COMPARE(failed.size(), 1);
        QVERIFY(!view.hasPage() && view.text() == u"torn"_s);
    }

    /// Steps that are not shown, lead out of the page, or turn the page where they are to move it.
    void movesThePage()
    {
        Pages pages;
        pages.hasParts = false;
        TestView view(m_threads, { 200, 300 });
        QSignalSpy moved(&view, &PictureView::placeChanged);
        QSignalSpy turned(&view, &PictureView::pageRequested);
        view.setZoom(3);
        QVERIFY(view.zoom() == 0.0 && moved.isEmpty());
        view.showPage(0, pages.make());
        QTRY_VERIFY(view.hasPage());
        const auto turnKeys = { std::pair(Qt::Key_PageDown, 1), std::pair(Qt::Key_PageUp, -1) };
        for (const auto& [key, step] : turnKeys) {
            QTest::keyClick(&view, key);
            QCOMPARE(turned.takeFirst().first().toInt(), step);
        }
        QTest::mousePress(&view, Qt::LeftButton, {}, { 100, 150 });
        QCOMPARE(view.cursor().shape(), Qt::ArrowCursor); // all of the page is in view
        QTest::mouseMove(&view, { 90, 150 });
        turn(view, { 0, 120 });
        QVERIFY(moved.isEmpty());
        QTest::mouseRelease(&view, Qt::LeftButton);

        QTest::mouseDClick(&view, Qt::LeftButton, {}, { 100, 150 });
        QTest::mouseRelease(&view, Qt::LeftButton);
        QCOMPARE(view.zoom(), 1.0);
        struct Step
        {
            std::function<void()> take;
            QPointF moves;
        };
        const auto key
            = [&](Qt::Key code) { return [&view, code] { QTest::keyClick(&view, code); }; };
        const Step steps[] = { { key(Qt::Key_Right), { 60, 0 } },
                               { key(Qt::Key_Left), { -60, 0 } },
                               { key(Qt::Key_Down), { 0, 60 } },
                               { key(Qt::Key_Up), { 0, -60 } },
                               { [&] {
                                    turn(view, { 40, -120 });
                                },
                                 { -20, 60 } } };
        for (const Step& step : steps) {
            QVERIFY(!QSignalSpy(&view, &PictureView::shown).wait(50)); // what is due is painted
            const int paints = view.paints;
            const QPointF before = view.center();
            moved.clear();
            step.take();
            QCOMPARE(view.center() - before, step.moves);
            QCOMPARE(moved.size(), 1);
            QTRY_VERIFY(view.paints > paints);
        }
        QVERIFY(turned.isEmpty());
        for (const auto& [button, shape] : { std::pair(Qt::RightButton, Qt::ArrowCursor),
                                             std::pair(Qt::LeftButton, Qt::ClosedHandCursor) }) {
            const QPointF before = view.center();
            QTest::mousePress(&view, button, {}, { 100, 150 });
            QCOMPARE(view.cursor().shape(), shape);
            QTest::mouseMove(&view, { 95, 152 });
            QCOMPARE(view.center() - before, button == Qt::LeftButton ? QPointF(5, -2) : QPointF());
            QTest::mouseRelease(&view, button);
            QCOMPARE(view.cursor().shape(), Qt::ArrowCursor);
        }
        view.setPlace(2, { 1e6, -1e6 }); // of another page
        QCOMPARE(view.center(), QPointF(750, 75));
        view.resize(400, 600);
        QCOMPARE(view.center(), QPointF(700, 150));
        view.setZoom(1000);
        QCOMPARE(view.zoom(), 16.0);
        for (const auto& [code, factor] :
             { std::pair(Qt::Key_Minus, 0.8), std::pair(Qt::Key_Plus, 1.25) }) {
            const double before = view.zoom();
            QTest::keyClick(&view, code);
            QCOMPARE(view.zoom() / before, factor);
        }
        QTest::mouseDClick(&view, Qt::LeftButton, {}, { 100, 150 });
        QCOMPARE(view.zoom(), 0.0);
        QCOMPARE(view.center(), QPointF(400, 300));
        QTRY_COMPARE(pages.wholes, 2); // for a larger view
        view.resize(60, 60);
        QVERIFY(!QTest::qWaitFor([&] { return pages.wholes > 2; }, 150)); // takes long
    }

    /// Colours of a result that are those of another profile.
    void showsResultsInColoursOfTheScreen()
    {
        TestPage page("rgb plain=250,20,20");
        page.iccProfile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
        writeTiff(path(u"adobe.tif"_s), { page });
        const IsStopped never = [] { return false; };
        const auto file = PreviewFile(path(u"adobe.tif"_s)).open(never);
        for (const OutputType type : { OutputType::Png, OutputType::Jpeg }) {
            ConversionOptions options;
            options.outputType = type;
            const ResultSample sample = resultSample(file, 0, options, {}, never);
            const QRgb shown
                = shownImage(pictureOf(sample, { 0, {}, { 9, 9 } }, never)).image.pixel(1, 1);
            QVERIFY(qRed(shown) == 255 && qGreen(shown) < 16);
        }
        QVERIFY(shownImage({}).image.isNull()); // of a part that the result has not
    }

    /// Thumbnails that are read though nobody sees them, or not at all, and those of other files.
    void readsThumbnailsThatAreInView()
    {
        PageThumbnails model(m_threads, nullptr);
        QSignalSpy resetsBegun(&model, &QAbstractItemModel::modelAboutToBeReset);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        QStringList asked; // written by one thread at a time
        const auto make = [&](const PictureWish& wish, const IsStopped&) {
            asked.append(QString::number(wish.page));
            if (wish.page == 98)
                throw std::runtime_error("torn");
            QImage image(wish.most, QImage::Format_Grayscale8);
            image.fill(wish.page);
            return ShownImage { image, {}, wish.most, {} };
        };
        const auto image
            = [&](int page) { return model.index(page).data(Qt::DecorationRole).value<QImage>(); };
        model.hold(true);
        model.setPages(100, { 8, 10 }, make, [](int page) { return page % 2 == 0; });
        QVERIFY(resetsBegun.size() == 1 && resets.size() == 1);
        QCOMPARE(model.rowCount(), 100);
        QCOMPARE(model.rowCount(model.index(0)), 0);
        QCOMPARE(model.index(6).data().toString(), u"7"_s);
        QCOMPARE(model.index(6).data(Qt::AccessibleTextRole).toString(), u"Page 7"_s);
        QVERIFY(!model.index(6).data(Qt::ToolTipRole).isValid());
        for (int page = 0; page < 100; ++page)
            QVERIFY(image(page).isNull());
        QVERIFY(image(99).isNull()); // wanted once
        QVERIFY(!changes.wait(50));
        model.put(100, QImage(1, 1, QImage::Format_RGB32));
        model.put(96, {});
        QVERIFY(changes.isEmpty());
        model.put(94, QImage(80, 80, QImage::Format_RGB32));
        QCOMPARE(changes.size(), 1);
        QCOMPARE(image(94).size(), QSize(8, 8));
        model.hold(false);
        QStringList expected; // the last of those that were asked for first, of the last 64
        for (int page = 98; page >= 36; page -= 2)
            if (page != 94)
                expected.append(QString::number(page));
        QTRY_COMPARE(changes.size(), expected.size() + 1);
        QCOMPARE(asked, expected);
        QCOMPARE(image(40).pixelColor(0, 0).green(), 40);
        QVERIFY(model.index(98).data(Qt::DecorationRole).isValid() && image(98).isNull());

        asked.clear();
        QVERIFY(image(2).isNull());
        model.setPages(3, { 8, 10 }, make, [](int) { return true; }); // of another file
        QVERIFY(image(0).isNull() && image(94).isNull());
        QTRY_COMPARE(changes.size(), expected.size() + 2);
        QCOMPARE(asked, QStringList(u"0"_s));
        QSemaphore begun;
        QSemaphore released;
        model.setPages(
            3, { 8, 10 },
            [&](const PictureWish& wish, const IsStopped& isStopped) {
                begun.release();
                while (!released.tryAcquire(1, 10) && !isStopped())
                    continue;
                return make(wish, isStopped);
            },
            [](int) { return true; });
        QVERIFY(image(1).isNull());
        QTRY_VERIFY(begun.available() > 0);
        model.setPages(3, { 8, 10 }, make, [](int) { return true; });
        released.release();
        QVERIFY(!changes.wait(200)); // what is late is not shown
    }

    /// Thumbnails below each other, without their numbers, or that the wheel does not move.
    void showsAStripOfPages()
    {
        PageStrip strip(m_threads, nullptr);
        QSignalSpy chosen(&strip, &PageStrip::pageChosen);
        strip.resize(300, strip.height());
        QPalette palette;
        palette.setColor(QPalette::Base, Qt::yellow); // not the white of paper
        strip.setPalette(palette);
        strip.setPages(1000, [](const PictureWish& wish, const IsStopped&) {
            if (wish.page == 1)
                throw std::runtime_error("torn");
            QImage image(10, 10, QImage::Format_ARGB32);
            image.fill(wish.page == 0 ? Qt::red : Qt::transparent);
            return ShownImage { image, {}, image.size(), {} };
        });
        strip.setPage(0);
        strip.show();
        const auto place
            = [&](int page) { return strip.visualRect(strip.model()->index(page, 0)); };
        QCOMPARE(place(1).topLeft(), place(0).topRight() + QPoint(1, 0));
        QVERIFY(strip.viewport()->rect().contains(place(0)) && place(2).right() < 300);
        QVERIFY(!strip.verticalScrollBar()->isVisible() && strip.uniformItemSizes());
        const auto middle
            = [&](int page) { return colorAt(*strip.viewport(), place(page).center()); };
        QTRY_COMPARE(middle(0), QColor(Qt::red));
        QTRY_COMPARE(middle(2), QColor(Qt::white));
        const QPoint edge(place(2).left() + 4, place(2).center().y());
        QCOMPARE(colorAt(*strip.viewport(), edge).rgb(),
                 strip.palette().color(QPalette::Mid).rgb());
        QTRY_VERIFY(
            hasDrawing(*strip.viewport(), place(1).adjusted(0, 0, 0, -place(1).height() / 2)));
        const QRect number = place(0).adjusted(
            6, place(0).height() - strip.fontMetrics().height() / 2 - 8, -6, -6);
        QVERIFY(hasDrawing(*strip.viewport(), number));

        strip.setPage(2);
        QVERIFY(chosen.isEmpty());
        QVERIFY(strip.selectionModel()->isSelected(strip.model()->index(2, 0)));
        const QColor selected = colorAt(*strip.viewport(), place(2).topLeft() + QPoint(3, 3));
        QVERIFY(selected != colorAt(*strip.viewport(), place(0).topLeft() + QPoint(3, 3)));
        QTest::mouseClick(strip.viewport(), Qt::LeftButton, {}, place(1).center());
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen.first().first().toInt(), 1);

        const QScrollBar& bar = *strip.horizontalScrollBar();
        turn(*strip.viewport(), { 0, -120 });
        QCOMPARE(bar.value(), 120);
        turn(*strip.viewport(), { 20, -120 });
        QCOMPARE(bar.value(), 100);
    }

    /// Facts that are left out, or told in the wrong words.
    void saysTheFactsOfAPage_data()
    {
        addTextRows(R"(
            0 0 0 1 1       |               |         | 100 x 200 pixels/gray, 1 bit a pixel/Not compressed
            50 100 1 8 1    | LZW           | sRGB    | 100 x 200 pixels/5.1 x 5.1 cm (2.0 x 2.0 inches), 50 x 100 dpi/gray, 8 bits a pixel/Compression: LZW/Profile: sRGB
            50 50 2 16 3    |               |         | 100 x 200 pixels/2.0 x 4.0 cm (0.8 x 1.6 inches), 127 dpi/gray, 3 samples of 16 bits/Not compressed
            50 0 1 1 3      |               |         | 100 x 200 pixels/gray, 3 samples of 1 bits/Not compressed)");
    }

    void saysTheFactsOfAPage()
    {
        const auto [numbers, compression, profile, expected] = textRow<4>();
        const QStringList n = numbers.split(u' ');
        PageFacts facts;
        facts.sizePx = { 100, 200 };
        facts.color = u"gray"_s;
        facts.resolution = { n.at(0).toDouble(), n.at(1).toDouble(),
                             n.at(2) == u"2"_s       ? ResolutionUnit::Centimeter
                                 : n.at(2) == u"1"_s ? ResolutionUnit::Inch
                                                     : ResolutionUnit::None };
        facts.bitsPerSample = n.at(3).toInt();
        facts.samplesPerPixel = n.at(4).toInt();
        facts.compression = compression;
        facts.profile = profile;
        QCOMPARE(PageFactsText::of(facts).split(u'\n').join(u'/'), expected);
        facts.texts = { { u"Artist"_s, u"A"_s } };
        facts.others = QStringList { u"X"_s, u"Y"_s };
        QCOMPARE(PageFactsText::of(facts).split(u'\n').join(u'/'),
                 expected + u"/Artist: A/Also: X, Y"_s);
    }
};

} // namespace

QTEST_MAIN(PreviewPartsTest)
#include "PreviewPartsTest.moc"
