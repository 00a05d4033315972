#include "mainwindow/preview/PreviewPane.h"

#include "mainwindow/preview/PageStrip.h"
#include "mainwindow/preview/PictureView.h"
#include "tests/mainwindow/Session.h"

#include <QCheckBox>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QWheelEvent>

namespace {

class PreviewPaneTest : public WindowFixture
{
    Q_OBJECT

    PictureView& view() const { return find<PictureView>("previewView"); }
    PictureView& resultView() const { return find<PictureView>("previewResultView"); }
    int pageField() const { return find<QSpinBox>("previewPageField").value(); }
    QString facts() const { return find<QPlainTextEdit>("previewFactsText").toPlainText(); }
    void highlight(const QString& name) const
    {
        table().highlightRows({ static_cast<int>(names().indexOf(name)) });
    }
    /// Whether the page that is shown has these sides.
    bool shows(int width, int height) const
    {
        return QTest::qWaitFor([&] { return view().pageSize() == QSize(width, height); }, longMs);
    }
    bool openSamples(std::initializer_list<const char*> files) const
    {
        QStringList paths;
        for (const char* name : files)
            paths.append(sample(QLatin1StringView(name)));
        return const_cast<PreviewPaneTest*>(this)->open(paths);
    }
    void turnWheel(int degrees) const
    {
        const QPointF middle(view().rect().center());
        QWheelEvent turn(middle, view().mapToGlobal(middle), {}, { 0, degrees * 8 }, Qt::NoButton,
                         Qt::ControlModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&view(), &turn);
    }

private slots:
    void init()
    {
        takeNewFolder();
        start();
    }
    void cleanup() { end(); }

    void theKeyShowsTheHighlightedFile();
    void keysFieldAndThumbnailsTurnPages();
    void whatCannotBeShownIsSaid();
    void zoomKeepsThePlaceUnderTheMouse();
    void resultsAreThoseOfARun();
    void viewsReadOnceWhatTheyNeed();
};

// Catches a preview that reads while it is hidden, forgets its state, or shows another file.
void PreviewPaneTest::theKeyShowsTheHighlightedFile()
{
    QVERIFY(openSamples({ "gray-photo.tif", "turned.tif", "text-page.tif" }));
    highlight(u"turned.tif"_s);
    QVERIFY(find("previewBox").isHidden());
    const int width = window().width();
    press("togglePreviewAction");
    QVERIFY(!find("previewBox").isHidden());
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage(), longMs);
    QTRY_VERIFY_WITH_TIMEOUT(facts().contains(u"pixels"_s), longMs);
    const QSize size = view().pageSize();
    const QLocale locale;
    QVERIFY(facts().startsWith(
        u"%1 x %2 pixels"_s.arg(locale.toString(size.width()), locale.toString(size.height()))));
    highlight(u"text-page.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(facts().contains(u"black and white, 1 bit a pixel"_s), longMs);
    QCOMPARE(text("previewFileLabel"), u"text-page.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && view().pageSize() != size, longMs);
    table().clearSelection();
    QTRY_COMPARE_WITH_TIMEOUT(facts(), QString(), longMs);
    QVERIFY(!view().hasPage());

    QVERIFY(window().width() >= width); // as far as the screen has room
    view().setFocus();
    press("togglePreviewAction");
    QVERIFY(find("previewBox").isHidden());
    QCOMPARE(window().focusWidget(), &table());
    QCOMPARE(window().width(), width);
    press("togglePreviewAction");
    start();
    QVERIFY(!find("previewBox").isHidden());
    QVERIFY(find<QAction>("togglePreviewAction").isChecked());
    QCOMPARE(find<QAction>("togglePreviewAction").shortcut(), QKeySequence(Qt::Key_F3));
}

// Catches steps over the ends, and the three ways to a page saying different ones.
void PreviewPaneTest::keysFieldAndThumbnailsTurnPages()
{
    QVERIFY(openSamples({ "three-pages.tif" }));
    highlight(u"three-pages.tif"_s);
    press("togglePreviewAction");
    QTRY_COMPARE_WITH_TIMEOUT(text("previewPagesLabel"), u"of 3"_s, longMs);
    auto& strip = find<PageStrip>("previewStrip");
    QVERIFY(strip.isVisible());
    const std::pair<Qt::Key, int> turns[]
        = { { Qt::Key_PageDown, 2 }, { Qt::Key_Right, 3 }, { Qt::Key_PageDown, 3 },
            { Qt::Key_Left, 2 },     { Qt::Key_Home, 1 },  { Qt::Key_Up, 1 },
            { Qt::Key_End, 3 } };
    for (const auto& [key, page] : turns) {
        QTest::keyClick(&view(), key);
        QCOMPARE(pageField(), page);
        QCOMPARE(strip.currentIndex().row(), page - 1);
        QCOMPARE(isEnabled("previewPreviousButton"), page > 1);
        QCOMPARE(isEnabled("previewNextButton"), page < 3);
    }
    find<QSpinBox>("previewPageField").setValue(2);
    QCOMPARE(strip.currentIndex().row(), 1);
    strip.setCurrentIndex(strip.model()->index(0, 0));
    QCOMPARE(pageField(), 1);
    const auto thumbnail = [&](int page) {
        return strip.model()->index(page, 0).data(Qt::DecorationRole).value<QImage>();
    };
    QTRY_VERIFY_WITH_TIMEOUT(!thumbnail(1).isNull(), longMs);
    QVERIFY(thumbnail(1).height() > 20 && thumbnail(1).height() < 300);
}

// Catches an old page beside a new name, and a fault that is kept quiet.
void PreviewPaneTest::whatCannotBeShownIsSaid()
{
    const QString good = path(u"in/good.tif"_s);
    const QString bad = path(u"in/bad.tif"_s);
    QDir().mkpath(path(u"in"_s));
    QVERIFY(QFile::copy(sample(u"gray-photo.tif"_s), good));
    QVERIFY(QFile::copy(sample(u"gray-photo.tif"_s), bad));
    QVERIFY(open({ good, bad }));
    highlight(u"good.tif"_s);
    press("togglePreviewAction");
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage(), longMs);
    QVERIFY(QFile(bad).resize(QFileInfo(bad).size() / 2));
    highlight(u"bad.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!view().text().isEmpty() && !view().hasPage()
                                 && view().text() == view().accessibleDescription(),
                             longMs);
    QVERIFY(QFile::remove(bad));
    highlight(u"good.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage(), longMs);
    // Replaced while it is shown.
    const QSize before = view().pageSize();
    QVERIFY(QFile::remove(good));
    QVERIFY(QFile::copy(sample(u"text-page.tif"_s), good));
    find<PreviewPane>("previewBox").showFile(good);
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && view().pageSize() != before, longMs);
    highlight(u"bad.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(view().text().contains(u"cannot open the file"_s), longMs);
    QCOMPARE(facts(), QString());
}

// Catches a page that runs away from the mouse, and one that can be moved out of sight.
void PreviewPaneTest::zoomKeepsThePlaceUnderTheMouse()
{
    QVERIFY(openSamples({ "text-page.tif" }));
    highlight(u"text-page.tif"_s);
    press("togglePreviewAction");
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage(), longMs);
    const double fitting = view().shownZoom();
    QVERIFY(fitting < 1);
    turnWheel(-15);
    QCOMPARE(view().zoom(), 0.0);
    const QPointF middle = view().center();
    turnWheel(45);
    QVERIFY(view().zoom() > fitting);
    QVERIFY((view().center() - middle).manhattanLength() < 1.5 / fitting);
    press("previewActualSizeButton");
    QCOMPARE(view().zoom(), 1.0);
    const QPointF before = view().center();
    const QPoint from = view().rect().center();
    QTest::mousePress(&view(), Qt::LeftButton, {}, from);
    QTest::mouseMove(&view(), from - QPoint(30, 20));
    QCOMPARE(view().center(), before + QPointF(30, 20));
    QTest::mouseRelease(&view(), Qt::LeftButton);
    for (int i = 0; i < 300; ++i)
        QTest::keyClick(&view(), Qt::Key_Left);
    QCOMPARE(view().visibleRegion().x(), 0);
    QCOMPARE(pageField(), 1);
    press("previewFitButton");
    QCOMPARE(view().zoom(), 0.0);
}

// Catches options that do not reach the comparison, and views that part.
void PreviewPaneTest::resultsAreThoseOfARun()
{
    QVERIFY(openSamples({ "gray-photo.tif" }));
    highlight(u"gray-photo.tif"_s);
    settings().setOutputFolderPath(outFolder());
    settings().setJpegQuality(3);
    press("togglePreviewAction");
    find<QCheckBox>("previewCompareBox").setChecked(true);
    QTRY_VERIFY_WITH_TIMEOUT(resultView().hasPage(), longMs);
    QCOMPARE(resultView().pageSize(), view().pageSize());
    press("convertBtn");
    QVERIFY(waitForRun());
    const auto sizeOfOnly = [&](const QString& format) {
        const QFileInfo made(path(u"out/"_s + namesIn(outFolder()).filter(format).value(0)));
        return FileItem::sizeText(static_cast<int>(made.size())).trimmed();
    };
    QCOMPARE(text("previewResultLabel"), u"JPEG, "_s + sizeOfOnly(u".jpg"_s));
    press("closeProcessBtn");

    QTest::keyClick(&view(), Qt::Key_1);
    QCOMPARE(resultView().zoom(), 1.0);
    QTest::keyClick(&resultView(), Qt::Key_Right);
    QCOMPARE(view().center(), resultView().center());
    settings().setOutputType(static_cast<int>(OutputType::Gif));
    QTRY_VERIFY_WITH_TIMEOUT(text("previewResultLabel").startsWith(u"GIF, "_s), longMs);
    QCOMPARE(resultView().center(), view().center());
    find<QCheckBox>("previewCompareBox").setChecked(false);
    QVERIFY(!resultView().isVisible());
}

// Catches views that are never content with what they get, and so read on and on.
void PreviewPaneTest::viewsReadOnceWhatTheyNeed()
{
    const std::pair<QSize, QRect> pages[] = { { { 3000, 1 }, { 0, 0, 3000, 1 } },
                                              { { 1, 3000 }, { 0, 0, 1, 3000 } },
                                              { { 5000, 4000 }, { 0, 0, 5000, 4000 } },
                                              { { 9000, 8000 }, { 4000, 4000, 600, 400 } } };
    for (const auto& [size, made] : pages) {
        std::atomic<int> reads = 0;
        QThreadPool threads;
        PictureView shown(threads, nullptr);
        const auto waiting = qScopeGuard([&] { threads.waitForDone(); });
        shown.resize(200, 300);
        shown.show();
        shown.showPage(
            0, [&, whole = made, page = size](const PictureWish& wish, const IsStopped&) {
                ++reads;
                const QRect region = regionInPage(wish.region, page).intersected(whole);
                QImage image(reducedSize(region.size(), wish.most), QImage::Format_Grayscale8);
                return ShownImage { image, region, page, {} };
            });
        QVERIFY(QTest::qWaitFor([&] { return shown.hasPage(); }, longMs));
        QVERIFY(!QTest::qWaitFor([&] { return reads > 1; }, 150));
        shown.setZoom(0.4);
        QVERIFY(!QTest::qWaitFor([&] { return reads > 2; }, 150));
        shown.resize(400, 500);
        QVERIFY(!QTest::qWaitFor([&] { return reads > 6; }, 300));
    }
}

} // namespace

QTEST_MAIN(PreviewPaneTest)
#include "PreviewPaneTest.moc"
