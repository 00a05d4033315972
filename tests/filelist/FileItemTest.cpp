#include "filelist/FileItem.h"

#include "tests/support/Testing.h"

#include <QProcess>

class FileItemTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_file = m_folder->filePath(u"three.TIF"_s);
        QVERIFY(QFile::copy(
            qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + u"/samples/three-pages.tif"_s, m_file));
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
        const auto item = itemOf(m_file);
        const int size = item->size();
        QCOMPARE(item->pages(), 3);
        QVERIFY(size >= QFile(m_file).size() && size % 512 == 0); // on disk, in blocks

        // Later changes of the file show only when the URL is set again.
        QVERIFY(QFile::resize(m_file, 0));
        QCOMPARE(item->pages(), 3);
        QCOMPARE(item->size(), size);
        item->setFilePath(item->filePath());
        QCOMPARE(item->size() + item->pages(), 0);
    }

    void readsThroughLinksThatAreItemsOfTheirOwn()
    {
        QVERIFY(QFile::link(m_file, m_file + u"l"_s));
        const auto item = itemOf(m_file);
        const auto linked = itemOf(m_file + u"l"_s);
        QCOMPARE(linked->pages(), 3);
        QCOMPARE(linked->size(), item->size());
        QCOMPARE(linked->name(), u"three.TIFl"_s);
        QVERIFY(!item->isEqual(linked.get()) && !item->isEqual(nullptr));
        linked->setFilePath(item->filePath());
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
        const QString table
            = u"0=0 KB;499=0 KB;500=1 KB;999=1 KB;1000=1 KB;1499=1 KB;1500=2 KB;"
              "4096=4 KB;999499=999 KB;1000000=1000 KB;1000001= 1 MB;1049999= 1 MB;"
              "1500000= 1.5 MB;2000000= 2 MB;9960000=10 MB;12300000=12.3 MB;"
              "999940000=999.9 MB;999999999=1000 MB;1000000032=1000 MB;1000000033= 1 GB"_s;
        for (const QString& row : table.split(u';')) {
            const int bytes = row.section(u'=', 0, 0).toInt();
            QCOMPARE(QString::number(bytes) + u'=' + FileItem::sizeText(bytes), row);
        }
    }

    void capsTheSizeOfAHugeFile()
    {
        if (QProcess::execute(u"fallocate"_s, { u"-l"_s, u"2200000000"_s, m_file }) != 0)
            QSKIP("this file system cannot set aside 2.2 GB");
        const auto item = itemOf(m_file);
        QCOMPARE(item->size(), std::numeric_limits<int>::max());
        QCOMPARE(item->sizeInKB(), u" 2.1 GB"_s);
    }

    void answersByColumn()
    {
        const auto item = itemOf(m_file);
        QCOMPARE(item->displayField(u"isSelected"_s), QVariant(true));
        QCOMPARE(item->displayField(u"Pages"_s), QVariant(3));
        item->setIsSelected(false);
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime(QDate(2021, 2, 3), QTime(16, 5)),
                                 QFileDevice::FileModificationTime));
        QVERIFY(file.setFileTime(QDateTime(QDate(2022, 12, 31), QTime(0, 1)),
                                 QFileDevice::FileAccessTime));

        QString texts;
        for (const auto* column : { "ISSELECTED", "name", "sizeInKB", "type", "location",
                                    "DATEMODIFIED", "dateAccessed", "SELECTION", "size", "" })
            texts += item->displayField(QLatin1String(column)).toString() + u'|';
        QCOMPARE(texts,
                 u"false|three.TIF|"_s + item->sizeInKB() + u"|TIF|"_s + m_folder->path()
                     + u"|03-Feb-2021 4:05 PM|31-Dec-2022 12:01 AM||||"_s);
        const QDateTime created = item->dateCreated(); // not every file system keeps it
        QVERIFY(!created.isValid() || qAbs(created.secsTo(QDateTime::currentDateTime())) <= 2);
        QCOMPARE(item->displayField(u"DATECREATED"_s).toString().isNull(), !created.isValid());
    }

private:
    static std::shared_ptr<FileItem> itemOf(const QString& path)
    {
        return FileItem::initWithURL(QUrl::fromLocalFile(path));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file; ///< three pages, made anew for every test
};

QTEST_GUILESS_MAIN(FileItemTest)
#include "FileItemTest.moc"
