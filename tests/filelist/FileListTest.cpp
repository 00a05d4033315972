#include "filelist/FileList.h"

#include "filelist/SortOrder.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/support/Testing.h"

#include <QDateTime>

#include <random>

namespace {

QString namesOf(const FileList& files)
{
    QStringList names;
    for (const auto& item : files.items())
        names.append(item->name());
    return names.join(u' ');
}

} // namespace

class FileListTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsItsTotalsThroughAnyChange()
    {
        const QTemporaryDir folder;
        std::mt19937 random(1);
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        FileList files;
        QList<std::shared_ptr<FileItem>> pool;
        for (int i = 0; i < 40; ++i)
            pool.append(itemOf(makeFile(folder.filePath(u"%1.tif"_s.arg(i)), i % 5)));

        for (int round = 0; round < 3000; ++round) {
            const int row = files.count() > 0 ? below(files.count()) : 0;
            const int action = files.count() > 0 ? below(6) : 0;
            if (action <= 2) {
                const auto& item = pool.at(below(40));
                const bool isThere = files.contains(item->filePath());
                QCOMPARE(files.append(item), !isThere);
                QVERIFY(files.contains(item->filePath()));
            } else if (action == 3) {
                const QUrl url = files.at(row)->filePath();
                files.removeRows(row, 1 + below(files.count() - row) / 4);
                QVERIFY(!files.contains(url));
            } else if (action == 4) {
                files.setSelected(row, !files.at(row)->isSelected());
            } else {
                const QList<int> rows
                    = sortedRows(files.items(), { { u"pages"_s, below(2) == 0 } });
                if (!rows.isEmpty())
                    files.reorder(rows);
            }
            qint64 pages = 0;
            qint64 checked = 0;
            qint64 checkedPages = 0;
            for (const auto& item : files.items()) {
                pages += item->pages();
                checked += item->isSelected() ? 1 : 0;
                checkedPages += item->isSelected() ? item->pages() : 0;
            }
            QCOMPARE(files.totalPages(), pages);
            QCOMPARE(files.checkedCount(), checked);
            QCOMPARE(files.checkedPages(), checkedPages);
        }
        files.clear();
        QVERIFY(files.totalPages() == 0 && files.checkedCount() == 0 && files.append(pool.at(0)));
    }

    void knowsAFileByItsUrl_data()
    {
        QTest::addColumn<QString>("name");
        for (const auto* name : { "plain.tif", "with blank.tif", "50%.tif", "50%25.tif",
                                  "a#b?c.tif", "grün 日本.tif", "a;b=c&d.tif" })
            QTest::newRow(name) << QString::fromUtf8(name);
    }
    void knowsAFileByItsUrl()
    {
        QFETCH(const QString, name);
        FileList files;
        QVERIFY(files.append(itemOf(u"/tmp/"_s + name)));
        QVERIFY(files.contains(QUrl::fromLocalFile(u"/tmp/"_s + name)));
        QVERIFY(!files.append(itemOf(u"/tmp/"_s + name)));
        QVERIFY(files.append(itemOf(u"/tmp/other/"_s + name)));
    }

    void sortsByEveryProperty_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("ascending");
        QTest::addColumn<QString>("descending");
        // Equal ones stay in the order of adding, forwards and backwards.
        QTest::newRow("check mark") << u"isSelected"_s << u"b10.tif a.TIF B2.tif c.tiff"_s
                                    << u"a.TIF B2.tif c.tiff b10.tif"_s;
        QTest::newRow("name, digits as numbers")
            << u"name"_s << u"a.TIF B2.tif b10.tif c.tiff"_s << u"c.tiff b10.tif B2.tif a.TIF"_s;
        QTest::newRow("pages") << u"pages"_s << u"c.tiff B2.tif a.TIF b10.tif"_s
                               << u"b10.tif a.TIF B2.tif c.tiff"_s;
        QTest::newRow("size") << u"size"_s << u"c.tiff a.TIF B2.tif b10.tif"_s
                              << u"b10.tif a.TIF B2.tif c.tiff"_s;
        QTest::newRow("type") << u"type"_s << u"b10.tif a.TIF B2.tif c.tiff"_s
                              << u"c.tiff b10.tif a.TIF B2.tif"_s;
        QTest::newRow("modified, unknown first")
            << u"dateModified"_s << u"c.tiff B2.tif b10.tif a.TIF"_s
            << u"a.TIF b10.tif B2.tif c.tiff"_s;
        QTest::newRow("location") << u"location"_s << u"b10.tif B2.tif c.tiff a.TIF"_s
                                  << u"a.TIF b10.tif B2.tif c.tiff"_s;
        QTest::newRow("no order") << QString() << u"b10.tif a.TIF B2.tif c.tiff"_s
                                  << u"b10.tif a.TIF B2.tif c.tiff"_s;
        QTest::newRow("no property")
            << u"pixels"_s << u"b10.tif a.TIF B2.tif c.tiff"_s << u"b10.tif a.TIF B2.tif c.tiff"_s;
    }
    void sortsByEveryProperty()
    {
        QFETCH(const QString, key);
        const QTemporaryDir folder;
        const auto filled = [&folder] {
            FileList files;
            files.append(itemOf(makeFile(folder.filePath(u"b10.tif"_s), 1000))); // several blocks
            files.append(itemOf(makeFile(folder.filePath(u"sub/a.TIF"_s), 12)));
            files.append(itemOf(makeFile(folder.filePath(u"B2.tif"_s), 2)));
            files.append(itemOf(makeFile(folder.filePath(u"c.tiff"_s), 0)));
            files.setSelected(0, false);
            int day = 1;
            for (const int row : { 2, 0, 1 }) {
                QFile file(files.at(row)->filePath().toLocalFile());
                if (!file.open(QIODevice::ReadWrite)
                    || !file.setFileTime(QDateTime({ 2020, 1, day++ }, {}),
                                         QFile::FileModificationTime))
                    qFatal("no date");
            }
            QFile::remove(files.at(3)->filePath().toLocalFile());
            return files;
        };
        const auto sort = [&key](FileList& files, bool isAscending) {
            const QList<int> rows = sortedRows(files.items(), { { key, isAscending } });
            if (!rows.isEmpty())
                files.reorder(rows);
        };
        FileList files = filled();
        sort(files, true);
        QTEST(namesOf(files), "ascending");
        QVERIFY(sortedRows(files.items(), { { key, true } }).isEmpty());
        files = filled();
        sort(files, false);
        QTEST(namesOf(files), "descending");
    }

    void readsDatesOnlyOfEqualFilesAndAsLongAsWanted()
    {
        QList<std::shared_ptr<FileItem>> items;
        for (const auto* name : { "/b.tif", "/a.tiff", "/d.tif", "/c.tiff", "/e.tif", "/f.txt" })
            items.append(itemOf(QLatin1String(name)));
        QString asked;
        DateReading dates;
        dates.read = [&asked](const FileItem& item) {
            asked += item.name().first(1);
            FileDates answer;
            answer.modified = QDateTime({ 2020, 1, item.name().at(0).unicode() % 3 + 1 }, {});
            return answer;
        };
        const SortOrders orders { { u"type"_s, false },
                                  { u"dateModified"_s, true },
                                  { u"name"_s, false } };
        // f, then c and a, then d, and e before b since both are of one day.
        QCOMPARE(sortedRows(items, orders, dates), (QList<int> { 5, 3, 1, 2, 4, 0 }));
        QCOMPARE(asked, u"acbde"_s);
        dates.isWanted = [&asked] { return asked.size() < 7; };
        QVERIFY(sortedRows(items, orders, dates).isEmpty());
        QCOMPARE(asked, u"acbdeac"_s);
    }
};

QTEST_GUILESS_MAIN(FileListTest)

#include "FileListTest.moc"
