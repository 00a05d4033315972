#include "filelist/FileList.h"

#include "filelist/ListFilter.h"
#include "filelist/PathClipboard.h"
#include "filelist/SortOrder.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

#include <QDateTime>
#include <QMimeData>

#include <random>

/// The list and its files.
class FileListTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_file = m_folder->filePath(u"three.TIF"_s);
        makeFile(m_file, 3);
    }

    void takesFileUrlsOnly()
    {
        for (const auto* url : { "", "https://example.com/a.tif", "/tmp/a.tif" })
            QVERIFY2(!FileItem::initWithURL(QUrl(QLatin1String(url))), url);
        const auto item = itemOf(u"/tmp/50%25 #1?.tif"_s);
        QCOMPARE(item->filePath().toLocalFile(), u"/tmp/50%25 #1?.tif"_s);
        const auto rare = itemOf(u"/tmp/\uFDD0\uFFFD.tif"_s);
        QCOMPARE(rare->filePath().toLocalFile(), u"/tmp/\uFDD0\uFFFD.tif"_s);
        // Bytes that are no text would show as the name of another file.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"no UTF-8 text"_s));
        QVERIFY(!FileItem::initWithURL(QUrl(u"file:///tmp/%FF.tif"_s)));
    }

    void takesSizeAndPagesWhenItIsMade()
    {
        QVERIFY(QFile::link(m_file, m_file + u"l"_s));
        const auto item = itemOf(m_file);
        const auto linked = itemOf(m_file + u"l"_s); // an item of its own
        const int size = item->size();
        QVERIFY(size >= QFile(m_file).size() && size % 512 == 0); // on disk, in blocks
        QCOMPARE(linked->size(), size);
        QVERIFY(!item->isEqual(linked.get()) && !item->isEqual(nullptr));
        // Later changes of the file show only when the URL is set again.
        QVERIFY(QFile::resize(m_file, 0));
        QCOMPARE(item->pages(), 3);
        QCOMPARE(linked->pages(), 3);
        linked->setFilePath(item->filePath());
        QCOMPARE(linked->size() + linked->pages(), 0);
        linked->setIsSelected(false);
        QVERIFY(*item == *linked);
    }

    void holdsAFileThatIsNotThere()
    {
        QVERIFY(QFile::link(m_file + u"nowhere"_s, m_file + u"dangling"_s));
        for (const QString& missing : { m_file + u"nowhere"_s, m_file + u"dangling"_s }) {
            const auto item = itemOf(missing);
            QCOMPARE(item->size() + item->pages(), 0);
            for (const auto* column : { "DATEMODIFIED", "DATECREATED", "DATEACCESSED" })
                QVERIFY(item->displayField(QLatin1String(column)).toString().isNull());
            const auto kept = itemOf(m_file);
            kept->setFilePath(item->filePath());
            QCOMPARE(kept->size(), itemOf(m_file)->size()); // it could not be looked up
            QCOMPARE(kept->pages(), 0);
        }
    }

    void splitsItsPath()
    {
        const QString table
            = u"/no/such/a.tif|/no/such|a.tif|tif;/no/a.b.TIFF|/no|a.b.TIFF|TIFF;"
              "/a.tif|/|a.tif|tif;/no.x/a|/no.x|a|;/no/.tif|/no|.tif|;/no/a.|/no|a.|;"
              "/1 2/50%20 #\u00fc?.tif|/1 2|50%20 #\u00fc?.tif|tif;/no/such/|/no|such|"_s;
        for (const QString& row : table.split(u';')) {
            const QString path = row.section(u'|', 0, 0);
            const auto item = itemOf(path);
            const QStringList parts { path, item->location(), item->name(), item->type() };
            QCOMPARE(parts.join(u'|'), row);
        }
    }

    void writesTheSize()
    {
        // Halves are rounded away from zero. The last two: 1e9 and 1000000064 in single precision.
        for (const auto& [bytes, text] :
             { std::pair(499, u"0 KB"_s), std::pair(500, u"1 KB"_s), std::pair(1499, u"1 KB"_s),
               std::pair(999499, u"999 KB"_s), std::pair(1000000, u"1000 KB"_s),
               std::pair(1000001, u" 1 MB"_s), std::pair(1500000, u" 1.5 MB"_s),
               std::pair(9960000, u"10 MB"_s), std::pair(999940000, u"999.9 MB"_s),
               std::pair(1000000032, u"1000 MB"_s), std::pair(1000000033, u" 1 GB"_s) })
            QCOMPARE(FileItem::sizeText(bytes), text);
    }

    void answersByColumn()
    {
        const auto item = itemOf(m_file);
        QCOMPARE(item->displayField(u"isSelected"_s), QVariant(true));
        QCOMPARE(item->displayField(u"Pages"_s), QVariant(3));
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QDateTime modified(QDate(2021, 2, 3), QTime(16, 5));
        const QDateTime accessed(QDate(2022, 12, 31), QTime(0, 1));
        QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
        QVERIFY(file.setFileTime(accessed, QFileDevice::FileAccessTime));
        QString texts;
        for (const auto* column : { "name", "sizeInKB", "type", "location", "DATEMODIFIED",
                                    "dateAccessed", "SELECTION", "size", "" })
            texts += item->displayField(QLatin1String(column)).toString() + u'|';
        QCOMPARE(texts,
                 u"three.TIF|"_s + item->sizeInKB() + u"|TIF|"_s + m_folder->path()
                     + u"|03-Feb-2021 4:05 PM|31-Dec-2022 12:01 AM||||"_s);
        const QDateTime created = item->dateCreated(); // not every file system keeps it
        QCOMPARE(created.isValid(), QFileInfo(m_file).birthTime().isValid());
        QVERIFY(!created.isValid() || qAbs(created.secsTo(QDateTime::currentDateTime())) <= 2);
    }

    void narrowsTheListToWhatIsTyped_data()
    {
        addTextRows(R"(
                              | box.TIF invoice 1.tif invoice 2.tif old.tiff
            INV               | invoice 1.tif invoice 2.tif
            inv 2             | invoice 2.tif
            "e 1"             | invoice 1.tif
            -inv              | box.TIF old.tiff
            inv -"e 1"        | invoice 2.tif
            deep/             | old.tiff
            deep              |
            pages>1           | invoice 1.tif old.tiff
            pages>=3 PAGES<4  | old.tiff
            -pages=1 pages<9  | invoice 1.tif old.tiff
            type=tif          | box.TIF invoice 1.tif invoice 2.tif
            size>8KB          | old.tiff
            size<=0.008mb     | box.TIF invoice 1.tif invoice 2.tif
            pages> size<x inv | invoice 1.tif invoice 2.tif
            pages=1x          | box.TIF invoice 1.tif invoice 2.tif old.tiff)");
    }
    void narrowsTheListToWhatIsTyped()
    {
        const auto [typed, left] = textRow<2>();
        const TestFolder folder;
        FileList files;
        for (const auto& [name, pages] :
             { std::pair("box.TIF", 1), std::pair("invoice 1.tif", 2),
               std::pair("invoice 2.tif", 1), std::pair("deep/old.tiff", 3) }) {
            const QString path = makeFile(folder.path(QLatin1String(name)), pages);
            QFile file(path);
            QVERIFY(file.open(QIODevice::Append));
            file.write(QByteArray(pages == 3 ? 9000 : 0, ' ')); // a block is 4 KB at least
            file.close();
            files.append(itemOf(path));
        }
        const ListFilter filter(typed, RowGroup::All);
        QStringList names;
        for (const auto& item : files.items())
            if (filter.accepts(*item, RowStatus::State::None))
                names.append(item->name());
        QCOMPARE(names.join(u' '), left);
        QVERIFY(!ListFilter(typed, RowGroup::Failed).accepts(*files.at(0), {}));
    }

    void readsPathsFromTheClipboard()
    {
        QMimeData text;
        text.setText(u"/a b.tif\r\n \"/q.tif\"\nfile:///c%20d.tif\nrelative.tif\n\n~/h.tif\n"_s);
        QStringList paths;
        const ClipboardFiles read = filesIn(&text);
        for (const QUrl& url : read.urls)
            paths.append(url.toLocalFile());
        QCOMPARE(paths.join(u'|'), u"/a b.tif|/q.tif|/c d.tif|"_s + QDir::homePath() + u"/h.tif"_s);
        QCOMPARE(read.unreadLines, 1);
        FileList::Items items;
        for (const QUrl& url : read.urls)
            items.append(FileItem::initWithURL(url));
        const auto copied = offeredFiles(items, true);
        QCOMPARE(copied->text().split(u'\n'), paths);
        QCOMPARE(filesIn(copied.get()).urls, read.urls);
        QVERIFY(filesIn(nullptr).urls.isEmpty());
        QMimeData copiedUrls;
        copiedUrls.setUrls({ QUrl(u"http://a/b.tif"_s), QUrl(u"file:///c.tif"_s) });
        QCOMPARE(filesIn(&copiedUrls).urls, QList<QUrl> { QUrl(u"file:///c.tif"_s) });
        text.setText(QString(5'000'000, u'/'));
        QVERIFY(filesIn(&text).isTooLong);
    }

    // Of a URL that says no more than a path the path alone is kept.
    void tellsFilesByTheWholeOfTheirUrls()
    {
        FileList files;
        QList<QUrl> urls;
        for (const auto* end : { "", "/", "?page=2", "#2", ".tif", "%23" })
            urls.append(QUrl(u"file:///tmp/a"_s + QLatin1String(end)));
        urls.append(QUrl(u"file://far/tmp/a"_s));
        for (const QUrl& url : std::as_const(urls)) {
            QVERIFY(!files.contains(url));
            QVERIFY(files.append(FileItem::initWithURL(url)));
            QVERIFY(!files.append(FileItem::initWithURL(url)));
            QCOMPARE(files.items().last()->filePath(), url);
            QCOMPARE(files.items().last()->clone()->filePath(), url);
            QCOMPARE(files.items().last()->localFile(), url.toLocalFile());
        }
        files.removeRows(0, 1);
        for (qsizetype i = 0; i < urls.size(); ++i)
            QCOMPARE(files.contains(urls.at(i)), i > 0);
    }

    void keepsItsTotalsThroughAnyChange()
    {
        std::mt19937 random(1);
        const auto below = [&random](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        FileList files;
        QList<std::shared_ptr<FileItem>> pool;
        for (int i = 0; i < 40; ++i)
            pool.append(itemOf(makeFile(m_folder->filePath(u"%1.tif"_s.arg(i)), i % 5)));

        for (int round = 0; round < 3000; ++round) {
            const int row = files.count() > 0 ? below(files.count()) : 0;
            const int action = files.count() > 0 ? below(6) : 0;
            if (action <= 2) {
                const auto& item = pool.at(below(40));
                QCOMPARE(files.append(item), !files.items().contains(item));
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
            QList<int> wanted { 0, files.count() / 2, files.count() - 1 };
            for (const bool isInOrder : { true, false }) { // which has a way of its own
                if (!isInOrder)
                    std::reverse(wanted.begin(), wanted.end());
                FileList::Items items { itemOf(m_file) }; // not in the list
                for (const int at : std::as_const(wanted))
                    items.append(files.count() > 0 ? files.at(at) : items.first());
                QCOMPARE(files.rowsOf(items), files.count() > 0 ? ascending(wanted) : QList<int>());
            }
            qint64 pages = 0;
            qint64 checked = 0;
            qint64 checkedPages = 0;
            for (const auto& item : files.items()) {
                pages += item->pages();
                checked += item->isSelected() ? 1 : 0;
                checkedPages += item->isSelected() ? item->pages() : 0;
            }
            QVERIFY(files.totalPages() == pages && files.checkedCount() == checked
                    && files.checkedPages() == checkedPages);
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
            location     | b10.tif B2.tif c.tiff a.TIF | a.TIF b10.tif B2.tif c.tiff)");
    }
    void sortsByEveryProperty()
    {
        QFETCH(const QString, key);
        FileList files;
        for (const auto& [name, pages] :
             { std::pair(u"b10.tif"_s, 1000), std::pair(u"sub/a.TIF"_s, 12),
               std::pair(u"B2.tif"_s, 2), std::pair(u"c.tiff"_s, 0) })
            files.append(itemOf(makeFile(m_folder->filePath(name), pages)));
        files.setSelected(0, false);
        const auto on = [](int modified, int created, int accessed) {
            return FileDates { QDateTime({ 2020, 1, modified }, {}),
                               QDateTime({ 2020, 1, created }, {}),
                               QDateTime({ 2020, 1, accessed }, {}) };
        };
        const QMap<QString, FileDates> known { { u"B2.tif"_s, on(1, 3, 2) },
                                               { u"b10.tif"_s, on(2, 1, 3) },
                                               { u"a.TIF"_s, on(3, 2, 1) } };
        SortReading dates;
        dates.readDates = [&](const FileItem& item) { return known.value(item.name()); };
        for (const bool isAscending : { true, false }) {
            FileList sorted = files;
            if (const auto rows = sortedRows(files.items(), { { key, isAscending } }, dates);
                !rows.isEmpty())
                sorted.reorder(rows);
            QTEST(namesOf(sorted).join(u' '), isAscending ? "ascending" : "descending");
            QVERIFY(sortedRows(sorted.items(), { { key, isAscending } }, dates).isEmpty());
        }
    }

    void readsDatesOnlyOfEqualFilesAndAsLongAsWanted()
    {
        QList<std::shared_ptr<FileItem>> items;
        for (const auto* name : { "/b.tif", "/a.tiff", "/d.tif", "/c.tiff", "/e.tif", "/f.txt" })
            items.append(itemOf(QLatin1String(name)));
        QString asked;
        SortReading dates;
        dates.readDates = [&asked](const FileItem& item) {
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

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file; ///< three pages, made anew for every test
};

QTEST_GUILESS_MAIN(FileListTest)

#include "FileListTest.moc"
