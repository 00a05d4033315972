#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/Testing.h"

#include <QDirIterator>
#include <QLoggingCategory>

using Target = void (*)(FuzzInput);
Q_DECLARE_METATYPE(Target)

namespace {

/// What goes before a TIFF file for every way to write it.
QByteArrayList waysToWrite()
{
    QByteArrayList ways;
    for (char format = 0; format < 7; ++format)
        for (char compression = 0; compression < (format == 2 || format > 4 ? 5 : 1); ++compression)
            ways.append(QByteArray(1, format) + compression + '\7');
    return ways;
}

} // namespace

/// Hands files to the functions that the fuzzers call, without a fuzzer: those that showed a defect
/// once, and the samples.
class FuzzSeedsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(u"pagestack.warning=false"_s); }

    void keepsItsPromises_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArrayList>("starts");
        QTest::addColumn<Target>("target");
        const QString root = qEnvironmentVariable("PAGESTACK_SOURCE_DIR");
        for (const QString& folder : { u"/tests/data/fuzz"_s, u"/samples"_s }) {
            const bool isSample = folder == u"/samples";
            QDirIterator each(root + folder, { isSample ? u"*.tif"_s : u"*"_s }, QDir::Files,
                              QDirIterator::Subdirectories);
            while (each.hasNext()) {
                const QString path = each.next();
                const auto add
                    = [&](const char* name, Target target, const QByteArrayList& starts) {
                          QTest::addRow("%s %s", name, qPrintable(path.section(u'/', -2)))
                              << path << starts << target;
                      };
                add("readPages", readPages, { "" });
                add("writePages", writePages, isSample ? waysToWrite() : QByteArrayList { "" });
                if (!isSample)
                    add("readSettings", readSettings, { "" });
            }
        }
    }

    void keepsItsPromises()
    {
        QFETCH(QString, path);
        QFETCH(QByteArrayList, starts);
        QFETCH(Target, target);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(!bytes.isEmpty());
        for (const QByteArray& start : starts) {
            const QByteArray input = start + bytes;
            try {
                target({ reinterpret_cast<const std::uint8_t*>(input.data()),
                         static_cast<std::size_t>(input.size()) });
            } catch (const std::exception& error) {
                QFAIL(("input that starts with " + start.toHex() + ": " + error.what()).data());
            }
        }
    }

    void tookLittleMemory() { checkPeakMemory(300'000); } // after all of the above
};

QTEST_GUILESS_MAIN(FuzzSeedsTest)
#include "FuzzSeedsTest.moc"
