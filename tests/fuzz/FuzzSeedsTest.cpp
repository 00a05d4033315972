#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/Testing.h"

#include <QDirIterator>
#include <QLoggingCategory>

using Target = void (*)(FuzzInput);
Q_DECLARE_METATYPE(Target)

namespace {

const std::initializer_list<std::pair<const char*, Target>> targets {
    { "openFile", openFile },     { "decodePages", decodePages },   { "writePages", writePages },
    { "parsePaths", parsePaths }, { "readSettings", readSettings },
};

/// What goes before a TIFF file for every way to write it.
QByteArrayList waysToWrite()
{
    QByteArrayList ways;
    for (char format = 0; format < 7; ++format)
        for (char compression = 0; compression < (format == 2 || format > 4 ? 5 : 1); ++compression)
            ways.append(QByteArray(1, format) + compression + '\7');
    return ways;
}

QStringList filesBelow(const QString& folder, const QString& pattern)
{
    QStringList paths;
    QDirIterator each(folder, { pattern }, QDir::Files, QDirIterator::Subdirectories);
    while (each.hasNext())
        paths.append(each.next());
    paths.sort();
    return paths;
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
        for (const auto& [name, target] : targets) {
            for (const QString& path : filesBelow(root + u"/tests/data/fuzz"_s, u"*"_s))
                addRow(name, path, { "" }, target);
            const bool isWriter = target == &writePages;
            for (const QString& path : filesBelow(root + u"/samples"_s, u"*.tif"_s))
                addRow(name, path, isWriter ? waysToWrite() : QByteArrayList { "" }, target);
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

private:
    static void addRow(const char* name, const QString& path, const QByteArrayList& starts,
                       Target target)
    {
        QTest::addRow("%s %s", name, qPrintable(path.section(u'/', -2)))
            << path << starts << target;
    }
};

QTEST_GUILESS_MAIN(FuzzSeedsTest)
#include "FuzzSeedsTest.moc"
