#include "engine/image/ResourceImage.h"
#include "engine/image/pixels/Bitmap.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

using Samples = std::vector<std::uint8_t>;

class ImageToolsTest : public QObject
{
    Q_OBJECT

private slots:
    void makesGrayCopiesWithAlpha_data()
    {
        QTest::addColumn<Samples>("stored"); // of a page of 2 x 1 pixels
        QTest::addColumn<Samples>("expected");
        QTest::newRow("rgb") << Samples { 255, 0, 0, 10, 200, 30 } << Samples { 76, 255, 124, 255 };
        QTest::newRow("photometric=0") << Samples { 255, 3 } << Samples { 0, 255, 252, 255 };
        QTest::newRow("rgb samples=4 extra=2")
            << Samples { 0, 255, 0, 200, 0, 0, 255, 0 } << Samples { 150, 200, 29, 0 };
        QTest::newRow("orientation=8") << Samples { 7, 9 } << Samples { 9, 255, 7, 255 };
    }

    void makesGrayCopiesWithAlpha()
    {
        QFETCH(Samples, stored);
        TestPage page(QTest::currentDataTag());
        page.width = 2;
        page.height = 1;
        page.sample = [&, samples = page.samples](int x, int, int c) -> std::uint64_t {
            return stored.at(static_cast<std::size_t>(x * samples + c));
        };
        SinglePage single(page);
        const PageImage gray = single.image().monochromeImage();
        const auto bitmap = Bitmap::decoded(*gray.source().rows());
        QTEST(bitmap->samples(), "expected");
        QCOMPARE(bitmap->layout().channels(), 2);
        QCOMPARE(gray.widthPx(), page.orientation == 8 ? 1 : 2); // upright
        QCOMPARE(single.image().widthPx(), 2);
    }

    void dividesPixelsAtTheThreshold_data()
    {
        QTest::addColumn<float>("threshold");
        QTest::addColumn<int>("largestOff"); // largest sample of a pixel that is off
        QTest::newRow("0") << 0.0F << 0;
        QTest::newRow("half") << 0.5F << 0;
        QTest::newRow("1") << 1.0F << 1;
        QTest::newRow("clamped from above") << 200.0F << 1;
        QTest::newRow("clamped from below") << -3.0F << 0;
    }

    void dividesPixelsAtTheThreshold()
    {
        QFETCH(float, threshold);
        QFETCH(int, largestOff);
        for (const AlphaKind alpha : { AlphaKind::None, AlphaKind::Straight }) {
            const PixelLayout layout { ColorModel::Rgb, 8, alpha, {} };
            Samples samples;
            Samples expected;
            for (const int level : { 0, 1, 2, 255 })
                for (int channel = 0; channel < 3; ++channel) {
                    Samples pixel(3, 0);
                    pixel.at(static_cast<std::size_t>(channel)) = static_cast<std::uint8_t>(level);
                    Samples divided
                        = level <= largestOff ? Samples { 25, 127, 0 } : Samples { 255, 0, 51 };
                    if (alpha != AlphaKind::None) {
                        pixel.push_back(77);
                        divided.push_back(77);
                    }
                    samples.insert(samples.end(), pixel.begin(), pixel.end());
                    expected.insert(expected.end(), divided.begin(), divided.end());
                }
            const Bitmap bitmap(4, 3, layout, samples);
            const auto result = monochromeImageRepWithThreshold(
                bitmap, threshold, { 0.1, 0.5, 0.0 }, { 1.0, 0.0, 0.2 });
            QCOMPARE(result->samples(), expected);
            QCOMPARE(bitmap.samples(), samples);
        }
    }

    void refusesBitmapsThatAreNotWhatTheySay()
    {
        QVERIFY_THROWS_EXCEPTION(std::logic_error, Bitmap(2, 2, PixelLayout(), Samples(3)));
        const Bitmap gray(2, 1, PixelLayout(), { 0, 1 });
        QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                                 monochromeImageRepWithThreshold(gray, 0.5F, {}, {}));
    }

    void findsNoImageWithoutResource()
    {
        for (const QString& name : { QString(), u"missing.tif"_s, u"../missing"_s })
            QVERIFY(!createImageWithName(name));
    }
};

QTEST_GUILESS_MAIN(ImageToolsTest)
#include "ImageToolsTest.moc"
