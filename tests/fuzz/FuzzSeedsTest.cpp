#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/Testing.h"

#include <QDirIterator>
#include <QLoggingCategory>

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
        const QString root = qEnvironmentVariable("PAGESTACK_SOURCE_DIR");
        for (const auto& [folder, name] :
             { std::pair(u"/tests/data/fuzz"_s, u"*"_s), std::pair(u"/samples"_s, u"*.tif"_s) }) {
            QDirIterator each(root + folder, { name }, QDir::Files, QDirIterator::Subdirectories);
            while (each.hasNext()) {
                const QString path = each.next();
                QTest::newRow(qPrintable(path.section(u'/', -2))) << path;
            }
        }
    }

    void keepsItsPromises()
    {
        QFETCH(const QString, path);
        const QByteArray bytes = bytesOf(path);
        QVERIFY(!bytes.isEmpty());
        check("readPages", readPages, bytes);
        check("writePages", writePages, bytes);
        check("readSettings", readSettings, bytes);
        if (!path.contains(u"/samples/"_s))
            return;
        for (char format = 0; format < 7; ++format)
            for (char compression = 0; compression < (format == 2 || format > 4 ? 5 : 1);
                 ++compression)
                for (const int change : { 0, 7, 14, 21 }) // sRGB, black and white
                    check("writePages", writePages,
                          QByteArray(1, static_cast<char>(format + change)) + compression + '\7'
                              + bytes);
    }

    void tookLittleMemory() { checkPeakMemory(300'000); } // after all of the above

private:
    static void check(const char* name, void (*target)(FuzzInput), const QByteArray& input)
    try {
        target({ reinterpret_cast<const std::uint8_t*>(input.data()),
                 static_cast<std::size_t>(input.size()) });
    } catch (const std::exception& error) {
        QFAIL((name + (" of " + input.first(3).toHex()) + "...: " + error.what()).data());
    }
};

QTEST_GUILESS_MAIN(FuzzSeedsTest)
#include "FuzzSeedsTest.moc"
