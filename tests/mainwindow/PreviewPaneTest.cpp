#include "mainwindow/preview/PreviewPane.h"

#include "mainwindow/preview/ComparedResult.h"
#include "mainwindow/preview/PageStrip.h"
#include "mainwindow/preview/PictureView.h"
#include "tests/mainwindow/Session.h"
#include "tests/support/Angles.h"
#include "tests/support/TestFolder.h"
#include "tests/support/TiffBuilder.h"

#include <QCheckBox>
#include <QMetaProperty>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSpinBox>
#include <QSplitter>
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
    /// Names of the controls that can be pressed, the page and the last one, what is in view.
    QString state() const
    {
        QStringList parts { text("previewFileLabel") };
        for (const char* name : { "Previous", "Next", "Fit", "ActualSize", "ZoomOut", "ZoomIn" })
            if (isEnabled(qPrintable(u"preview%1Button"_s.arg(QLatin1StringView(name)))))
                parts.append(QLatin1StringView(name));
        const auto& field = find<QSpinBox>("previewPageField");
        parts.append(field.isEnabled() ? field.text() + u'/' + QString::number(field.maximum())
                                       : u"-"_s);
        parts.append(text("previewPagesLabel"));
        for (const char* name :
             { "previewStrip", "previewNoteLabel", "previewResultView", "previewViewLabel" })
            if (find(name).isVisible())
                parts.append(QString::fromLatin1(name).mid(7));
        parts.append(view().text());
        return parts.join(u' ').simplified();
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
    void pagesFollowTheFile();
    void zoomKeepsThePlaceUnderTheMouse();
    void resultsAreThoseOfARun();
    void viewsReadOnceWhatTheyNeed();
    void everyControlSaysWhatIsShown();
    void pagesLieWhereBothAreLarger();
    void notesFollowThePage();
    void roomIsMadeAndGivenBack();
    void largePagesAreComparedInParts();
    void controlsHaveTheirWays_data();
    void controlsHaveTheirWays();
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

    QVERIFY(view().height() > find("previewFactsText").height()); // which has the room
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
    settings().setOutputFolderPath(outFolder());
    press("convertBtn"); // after which it looks anew
    QVERIFY(waitForRun());
    press("closeProcessBtn");
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && view().pageSize() != before, longMs);
    highlight(u"bad.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(view().text().contains(u"cannot open the file"_s), longMs);
    QCOMPARE(facts(), QString());
}

// Catches a page that is left behind by a file with more or fewer pages, or without a sensible one.
void PreviewPaneTest::pagesFollowTheFile()
{
    const TestFolder folder;
    const QString shown = folder.path(u"shown.tif"_s);
    auto& pane = find<PreviewPane>("previewBox");
    const auto replaceBy = [&](const QString& pages) {
        folder.make(u"next.tif:"_s + pages);
        QFile::remove(shown);
        QVERIFY(QFile::rename(folder.path(u"next.tif"_s), shown));
        pane.showFile(shown);
    };
    press("togglePreviewAction");
    replaceBy(u"WWW"_s);
    QTRY_COMPARE_WITH_TIMEOUT(text("previewPagesLabel"), u"of 3"_s, longMs);
    QTest::keyClick(&view(), Qt::Key_End);
    QSignalSpy thumbnails(find<PageStrip>("previewStrip").model(), &QAbstractItemModel::modelReset);
    replaceBy(u"WWU"_s); // which has as many
    QTRY_VERIFY_WITH_TIMEOUT(!thumbnails.isEmpty(), longMs);
    replaceBy(u"WWWW"_s);
    QTRY_COMPARE_WITH_TIMEOUT(text("previewPagesLabel"), u"of 4"_s, longMs);
    QCOMPARE(pageField(), 3);
    replaceBy(u"W"_s);
    QTRY_VERIFY_WITH_TIMEOUT(view().text().endsWith(u"its last one is 1"_s), longMs);
    QTRY_COMPARE_WITH_TIMEOUT(text("previewPagesLabel"), u"of 1"_s, longMs);
    replaceBy(u"U"_s);
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && pane.page() == 0, longMs);
    putBytes(folder.path(u"empty.tif"_s), rawTiff({}, { { 256, 47 } }, { 1, 0 }));
    pane.showFile(folder.path(u"empty.tif"_s));
    QTRY_COMPARE_WITH_TIMEOUT(text("previewPagesLabel"), u"of 2"_s, longMs);
    QVERIFY(isEnabled("previewNextButton") && facts().isEmpty());
    QTRY_VERIFY(find("previewNoteLabel").isVisible()); // of the chain of pages
    const auto& field = find<QSpinBox>("previewPageField");
    QVERIFY(field.minimumWidth() > field.fontMetrics().horizontalAdvance(u"100000"_s));
}

// Catches a page that runs away from the mouse, and one that can be moved out of sight.
void PreviewPaneTest::zoomKeepsThePlaceUnderTheMouse()
{
    QVERIFY(openSamples({ "text-page.tif" }));
    highlight(u"text-page.tif"_s);
    press("togglePreviewAction");
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && isEnabled("previewActualSizeButton"), longMs);
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
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && isEnabled("previewActualSizeButton"), longMs);
    press("previewActualSizeButton");
    find<QCheckBox>("previewCompareBox").setChecked(true);
    QTRY_VERIFY_WITH_TIMEOUT(resultView().hasPage(), longMs);
    QCOMPARE(resultView().pageSize(), view().pageSize());
    QCOMPARE(resultView().zoom(), 1.0);
    press("previewFitButton");
    press("convertBtn");
    QVERIFY(waitForRun());
    const auto sizeOfOnly = [&](const QString& format) {
        const QFileInfo made(path(u"out/"_s + namesIn(outFolder()).filter(format).value(0)));
        return FileItem::sizeText(static_cast<int>(made.size())).trimmed();
    };
    QCOMPARE(text("previewResultLabel"), u"JPEG, "_s + sizeOfOnly(u".jpg"_s));
    press("closeProcessBtn");

    QTest::keyClick(&view(), Qt::Key_1);
    QTRY_COMPARE_WITH_TIMEOUT(resultView().zoom(), 1.0, longMs);
    QTest::keyClick(&resultView(), Qt::Key_Right);
    QCOMPARE(view().center(), resultView().center());
    auto& sides = find<QSplitter>("mainSplitView"); // both are as large as can be
    for (const bool isBeside : { true, false }) {
        QList<int> widths(sides.count(), 1);
        widths[sides.indexOf(&find("previewBox"))] = isBeside ? 2000 : 1;
        window().resize(isBeside ? QSize(2400, 400) : QSize(700, 900));
        sides.setSizes(widths);
        QTRY_COMPARE(find("previewViewLabel").parentWidget()->y()
                         == find("previewResultLabel").parentWidget()->y(),
                     isBeside);
    }
    settings().setOutputType(static_cast<int>(OutputType::Gif));
    QTRY_VERIFY_WITH_TIMEOUT(text("previewResultLabel").startsWith(u"GIF, "_s), longMs);
    QCOMPARE(resultView().center(), view().center());
    const auto isTold = [&] { return text("previewResultLabel").startsWith(u"JPEG, "_s); };
    settings().setOutputType(static_cast<int>(OutputType::Jpeg));
    QTRY_VERIFY_WITH_TIMEOUT(isTold(), longMs);
    const QString small = text("previewResultLabel");
    settings().setJpegQuality(95);
    QTRY_VERIFY_WITH_TIMEOUT(isTold() && text("previewResultLabel") != small, longMs);
    find<QCheckBox>("previewCompareBox").setChecked(false);
    QVERIFY(!resultView().isVisible());
    press("togglePreviewAction"); // holds no file while nobody looks
    QVERIFY(text("previewFileLabel").isEmpty() && !view().hasPage());
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
        QVERIFY(shown.hasPage() && (reads > 1 || size.width() < 5000));
    }
}

// Catches buttons that lead nowhere, and what is left of the file before.
void PreviewPaneTest::everyControlSaysWhatIsShown()
{
    const QString none = u"- Highlight a file to see its pages."_s;
    QVERIFY(openSamples({ "gray-photo.tif", "three-pages.tif", "text-page.tif" }));
    table().clearSelection();
    press("togglePreviewAction");
    for (int i = 0; i < 2; ++i) {
        QTRY_COMPARE_WITH_TIMEOUT(state(), none, longMs);
        QCOMPARE(facts(), QString());
        highlight(u"gray-photo.tif"_s);
        QTRY_COMPARE_WITH_TIMEOUT(
            state(), u"gray-photo.tif Fit ActualSize ZoomOut ZoomIn 1/1 of 1"_s, longMs);
        QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && !facts().isEmpty(), longMs);
        highlight(u"three-pages.tif"_s);
        QTRY_COMPARE_WITH_TIMEOUT(
            state(), u"three-pages.tif Next Fit ActualSize ZoomOut ZoomIn 1/3 of 3 Strip"_s,
            longMs);
        press("previewNextButton");
        QTRY_COMPARE_WITH_TIMEOUT(
            state(),
            u"three-pages.tif Previous Next Fit ActualSize ZoomOut ZoomIn 2/3 of 3 Strip"_s,
            longMs);
        press("previewPreviousButton");
        QCOMPARE(pageField(), 1);
        QTest::keyClick(&view(), Qt::Key_End);
        QCOMPARE(find<PageStrip>("previewStrip").currentIndex().row(), 2);
        QTRY_VERIFY_WITH_TIMEOUT(view().hasPage(), longMs);
        const double before = view().shownZoom();
        press("previewZoomInButton");
        QCOMPARE(view().zoom() / before, 1.5);
        QVERIFY(!find<QAbstractButton>("previewFitButton").isChecked());
        press("previewActualSizeButton");
        QVERIFY(find<QAbstractButton>("previewActualSizeButton").isChecked());
        press("previewZoomOutButton");
        press("previewFitButton");
        QVERIFY(view().zoom() == 0 && find<QAbstractButton>("previewFitButton").isChecked());

        auto& compared = find<QCheckBox>("previewCompareBox");
        compared.setChecked(true);
        QTRY_VERIFY_WITH_TIMEOUT(resultView().hasPage(), longMs);
        QTRY_COMPARE_WITH_TIMEOUT(
            state(),
            u"three-pages.tif Previous Fit ActualSize ZoomOut ZoomIn 3/3 of 3 Strip ResultView ViewLabel"_s,
            longMs);
        QTRY_COMPARE_WITH_TIMEOUT(resultView().pageSize(), view().pageSize(), longMs);
        QTRY_VERIFY(text("previewResultLabel").startsWith(u"JPEG, "_s));
        find<QSpinBox>("previewPageField").setValue(1); // the result before goes
        QCOMPARE(text("previewResultLabel"), QString());
        QTRY_VERIFY_WITH_TIMEOUT(text("previewResultLabel").startsWith(u"JPEG, "_s), longMs);
        table().clearSelection();
        QTRY_VERIFY_WITH_TIMEOUT(!resultView().hasPage() && text("previewResultLabel").isEmpty(),
                                 longMs);
        compared.setChecked(false);
    }
    highlight(u"text-page.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(state().startsWith(u"text-page.tif"_s), longMs);
    press("removeSelectedAction");
    QTRY_VERIFY_WITH_TIMEOUT(!state().startsWith(u"text-page.tif"_s), longMs);
    table().highlightRows({ 0 });
    QTRY_VERIFY_WITH_TIMEOUT(state() != none, longMs);
    alerts().setNextAnswer(0);
    press("removeAllAction");
    QTRY_COMPARE_WITH_TIMEOUT(state(), none, longMs);
    auto& pane = find<PreviewPane>("previewBox");
    pane.showFile(sample(u"three-pages.tif"_s));
    pane.showFile({});
    QVERIFY(!QTest::qWaitFor([&] { return state() != none; }, 300)); // what is late is not shown
}

// Catches losses that are kept quiet, told twice, or told of another page.
void PreviewPaneTest::notesFollowThePage()
{
    const TestFolder folder;
    folder.make(u"in/a.tif:WWL in/b.tif:WF in/c.tif:W"_s);
    QVERIFY(open({ folder.path(u"in"_s) }));
    const auto note = [this] { return text("previewNoteLabel"); };
    press("togglePreviewAction");
    highlight(u"a.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(find("previewNoteLabel").isVisible() && !note().isEmpty(), longMs);
    const QString chain = note();
    {
        const Angles language; // and told in that of the user
        find<PreviewPane>("previewBox").showFile(folder.path(u"in/c.tif"_s));
        find<PreviewPane>("previewBox").showFile(folder.path(u"in/a.tif"_s));
        QTRY_COMPARE_WITH_TIMEOUT(note(), u'<' + chain + u'>', longMs);
    }
    highlight(u"b.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(view().hasPage() && !find("previewNoteLabel").isVisible(), longMs);
    QTRY_COMPARE_WITH_TIMEOUT(text("previewPagesLabel"), u"of 2"_s, longMs);
    press("previewNextButton");
    QTRY_VERIFY_WITH_TIMEOUT(note().contains(u"1 row of the fax is damaged"_s), longMs);
    const QString damaged = note();
    find<QCheckBox>("previewCompareBox").setChecked(true);
    settings().setOutputType(1);
    QTRY_VERIFY_WITH_TIMEOUT(text("previewResultLabel").startsWith(u"PNG, "_s), longMs);
    QCOMPARE(note().count(u"1 row"_s), 1);
    table().clearSelection(); // there is nothing to be told of
    QTRY_VERIFY(text("previewFileLabel").isEmpty());
    QVERIFY(!find("previewNoteLabel").isVisible());
    highlight(u"b.tif"_s);
    QTRY_COMPARE_WITH_TIMEOUT(text("previewPagesLabel"), u"of 2"_s, longMs);
    press("previewNextButton");
    QTRY_COMPARE_WITH_TIMEOUT(note(), damaged, longMs);
    press("previewPreviousButton");
    QTRY_VERIFY_WITH_TIMEOUT(!find("previewNoteLabel").isVisible(), longMs);
    highlight(u"a.tif"_s);
    QTRY_COMPARE_WITH_TIMEOUT(note(), chain, longMs);
    QVERIFY(QFile::remove(folder.path(u"in/c.tif"_s)));
    highlight(u"c.tif"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!view().text().isEmpty() && resultView().text() == view().text(),
                             longMs);
    QVERIFY(!find("previewNoteLabel").isVisible() && text("previewResultLabel").isEmpty());
}

// Catches a window that leaves the screen, and one that grows by each look at a page.
void PreviewPaneTest::roomIsMadeAndGivenBack()
{
    const QRect screen = window().screen()->availableGeometry();
    press("toggleSettingsAction");
    window().resize(10, 500);
    const QSize least = window().size();
    window().move(screen.right() - least.width() - 20, 30);
    press("togglePreviewAction");
    const int wide = window().width();
    QVERIFY(wide > least.width() && window().height() == least.height());
    QVERIFY(screen.contains(window().frameGeometry()) && window().y() == 30);
    window().resize(wide - 20, 500); // by the user
    press("togglePreviewAction");
    QTRY_COMPARE(window().size(), least);
    press("togglePreviewAction");
    window().showMaximized();
    const QSize size = window().size();
    press("togglePreviewAction");
    QCOMPARE(window().size(), size);
    press("togglePreviewAction");
    QVERIFY(window().isMaximized() && window().size() == size);
}

// Catches a comparison of another part than that in view, and one for each key that is pressed.
void PreviewPaneTest::largePagesAreComparedInParts()
{
    TestPage page("bits=1 rows=4000");
    page.width = 8000;
    page.height = 4000;
    page.encoded = { QByteArray(4'000'000, '\x55') };
    writeTiff(path(u"large.tif"_s), { page });
    int asked = 0;
    QThreadPool threads;
    const auto waiting = qScopeGuard([&] { threads.waitForDone(); });
    ComparedResult result(threads, [&] {
        ++asked;
        ConversionOptions options;
        options.outputType = OutputType::Png;
        return options;
    });
    QSignalSpy failed(&result, &ComparedResult::failed);
    QRect region;
    QString told;
    QStringList notes;
    connect(&result, &ComparedResult::made, this,
            [&](const MakeImage& make, const QString& text, const QStringList& losses) {
                region = make({ 0, {}, { 100, 100 } }, [] { return false; }).region;
                told = text;
                notes = losses;
            });
    result.refresh(); // of no page
    QVERIFY(!QSignalSpy(&result, &ComparedResult::made).wait(400) && asked == 0);
    const auto file = std::make_shared<PreviewFile>(path(u"large.tif"_s));
    result.setPage(file, 0, { 1000, 1000 });
    QTRY_VERIFY_WITH_TIMEOUT(region.contains(1000, 1000), longMs);
    QVERIFY(!region.contains(6000, 3000) && region.width() <= 2100);
    QVERIFY(told.startsWith(u"PNG, about "_s));
    QVERIFY(notes.last().startsWith(u"Of this large page only a part"_s));
    result.follow({ 900, 900, 300, 300 });
    for (int i = 0; i < 3; ++i) {
        result.refresh();
        QCoreApplication::processEvents();
    }
    QCOMPARE(asked, 1);
    result.follow({ 5900, 2900, 200, 200 });
    QTRY_VERIFY_WITH_TIMEOUT(region.contains(6000, 3000), longMs);
    QCOMPARE(asked, 2);
    result.setPage(file, 0, { 1000, 1000 });
    result.stop(); // what is late is not shown
    QVERIFY(!QSignalSpy(&result, &ComparedResult::made).wait(400));
    asked = 2;
    result.setPage(file, 1, {});
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, longMs);
    result.refresh();
    result.stop();
    result.refresh();
    QVERIFY(!QSignalSpy(&result, &ComparedResult::failed).wait(500));
    QCOMPARE(asked, 3);
    result.setPage(file, 0, {});
    result.refresh();
    result.setPage(file, 0, {}); // which makes it anew by itself
    QVERIFY(!QTest::qWaitFor([&] { return asked > 5; }, 500));
    result.stop();
}

// Catches fields that read each page of a number that is being typed, texts that are taken for
// markup, and notes that cannot be copied.
void PreviewPaneTest::controlsHaveTheirWays_data()
{
    addTextRows({ "control", "property", "expected" }, R"(
        previewPageField         | keyboardTracking     | false
        previewPageField         | accessibleName       | Page
        previewPageField         | buttonSymbols        | NoButtons
        previewPreviousButton    | arrowType            | LeftArrow
        previewNextButton        | arrowType            | RightArrow
        previewNextButton        | toolTip              | Next page
        previewNextButton        | accessibleName       | Next page
        previewZoomInButton      | text                 | +
        previewZoomInButton      | autoRaise            | true
        previewZoomInButton      | focusPolicy          | TabFocus
        previewFitButton         | checkable            | true
        previewFileLabel         | textFormat           | PlainText
        previewNoteLabel         | textFormat           | PlainText
        previewNoteLabel         | wordWrap             | true
        previewNoteLabel         | textInteractionFlags | TextSelectableByMouse
        previewResultLabel       | textInteractionFlags | TextSelectableByMouse

        previewResultLabel       | alignment            | AlignCenter
        previewViewLabel         | text                 | Original
        previewView              | accessibleName       | Page
        previewView              | focusPolicy          | StrongFocus
        previewView              | minimumHeight        | 120
        previewResultView        | accessibleName       | Result
        previewStrip             | accessibleName       | Pages
        previewFactsText         | accessibleName       | Facts of the page
        previewFactsText         | readOnly             | true
        previewFactsText         | tabChangesFocus      | true)");
}

void PreviewPaneTest::controlsHaveTheirWays()
{
    QFETCH(const QString, control);
    QFETCH(const QString, property);
    const QWidget& widget = find(qPrintable(control));
    const QVariant value = widget.property(qPrintable(property));
    const QMetaProperty meta
        = widget.metaObject()->property(widget.metaObject()->indexOfProperty(qPrintable(property)));
    QTEST(meta.isFlagType()
              ? QString::fromLatin1(meta.enumerator().valueToKeys(value.toInt())).section(u'|', -1)
              : meta.isEnumType() ? QString::fromLatin1(meta.enumerator().valueToKey(value.toInt()))
                                  : value.toString(),
          "expected");
}

} // namespace

// Catches two pages that lie as it suited the page before.
void PreviewPaneTest::pagesLieWhereBothAreLarger()
{
    writeTiff(path(u"a.tif"_s), { "width=60 height=600", "width=600 height=60" });
    QVERIFY(open({ path(u"a.tif"_s) }));
    highlight(u"a.tif"_s);
    press("togglePreviewAction");
    QTRY_VERIFY_WITH_TIMEOUT(isEnabled("previewNextButton"), longMs);
    find<QCheckBox>("previewCompareBox").setChecked(true);
    const auto corner = [this](const QWidget& widget) { return widget.mapTo(&window(), QPoint()); };
    for (const auto& [key, width] : { std::pair(Qt::Key_End, 600), std::pair(Qt::Key_Home, 60) }) {
        QTest::keyClick(&view(), key);
        QVERIFY(shows(width, 660 - width));
        QTRY_COMPARE_WITH_TIMEOUT(resultView().pageSize(), view().pageSize(), longMs);
        QTRY_COMPARE(corner(resultView()).x() > corner(view()).x(), width == 60);
        QCOMPARE(corner(resultView()).y() > corner(view()).y(), width == 600);
    }
}

QTEST_MAIN(PreviewPaneTest)
#include "PreviewPaneTest.moc"
