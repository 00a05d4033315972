#include "filelist/FileList.h"

#include "filelist/SortOrder.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

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

    void sortsByEveryProperty_data()
    {
        // Equal ones stay in the order of adding, forwards and backwards; digits count as numbers,
        // and what has no date comes first.
        addTextRows({ "key", "ascending", "descending" }, R"(
            isSelected   | b10.tif a.TIF B2.tif c.tiff | a.TIF B2.tif c.tiff b10.tif
            name         | a.TIF B2.tif b10.tif c.tiff | c.tiff b10.tif B2.tif a.TIF
            pages        | c.tiff B2.tif a.TIF b10.tif | b10.tif a.TIF B2.tif c.tiff
            size         | c.tiff a.TIF B2.tif b10.tif | b10.tif a.TIF B2.tif c.tiff
            type         | b10.tif a.TIF B2.tif c.tiff | c.tiff b10.tif a.TIF B2.tif
            dateModified | c.tiff B2.tif b10.tif a.TIF | a.TIF b10.tif B2.tif c.tiff
            dateCreated  | c.tiff b10.tif a.TIF B2.tif | B2.tif a.TIF b10.tif c.tiff
            dateAccessed | c.tiff a.TIF B2.tif b10.tif | b10.tif B2.tif a.TIF c.tiff
            location     | b10.tif B2.tif c.tiff a.TIF | a.TIF b10.tif B2.tif c.tiff
                         | b10.tif a.TIF B2.tif c.tiff | b10.tif a.TIF B2.tif c.tiff
            pixels       | b10.tif a.TIF B2.tif c.tiff | b10.tif a.TIF B2.tif c.tiff)");
    }
    void sortsByEveryProperty()
    {
        QFETCH(const QString, key);
        const QTemporaryDir folder;
        FileList files;
        files.append(itemOf(makeFile(folder.filePath(u"b10.tif"_s), 1000))); // several blocks
        files.append(itemOf(makeFile(folder.filePath(u"sub/a.TIF"_s), 12)));
        files.append(itemOf(makeFile(folder.filePath(u"B2.tif"_s), 2)));
        files.append(itemOf(makeFile(folder.filePath(u"c.tiff"_s), 0)));
        files.setSelected(0, false);
        const auto on = [](int modified, int created, int accessed) {
            return FileDates { QDateTime({ 2020, 1, modified }, {}),
                               QDateTime({ 2020, 1, created }, {}),
                               QDateTime({ 2020, 1, accessed }, {}) };
        };
        const QMap<QString, FileDates> known { { u"B2.tif"_s, on(1, 3, 2) },
                                               { u"b10.tif"_s, on(2, 1, 3) },
                                               { u"a.TIF"_s, on(3, 2, 1) } };
        DateReading dates;
        dates.read = [&](const FileItem& item) { return known.value(item.name()); };
        const QList<int> rows = sortedRows(files.items(), { { key, true } }, dates);
        const QList<int> backwards = sortedRows(files.items(), { { key, false } }, dates);
        const auto namesAfter = [&files](const QList<int>& order) {
            FileList sorted = files;
            if (!order.isEmpty())
                sorted.reorder(order);
            return namesOf(sorted);
        };
        QTEST(namesAfter(rows), "ascending");
        QTEST(namesAfter(backwards), "descending");
        if (!rows.isEmpty())
            files.reorder(rows);
        QVERIFY(sortedRows(files.items(), { { key, true } }, dates).isEmpty());
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
