#include "engine/image/PageCount.h"
#include "engine/threads/StopScope.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <QtEndian>
#include <qpdf/qpdf-c.h>

#include <sys/stat.h>

namespace {

/// The header of a file and directories of one entry each.
QByteArray chain(TiffKind kind, const QList<int>& next)
{
    return rawTiff(kind, { { 0x0101, 0x01010101 } }, next);
}

void writePdf(const QString& path, int pages, const char* userPassword)
{
    const QByteArray name = QFile::encodeName(path);
    qpdf_data pdf = qpdf_init();
    qpdf_empty_pdf(pdf);
    for (int i = 0; i < pages; ++i) {
        const qpdf_oh page
            = qpdf_oh_parse(pdf, "<< /Type /Page /MediaBox [0 0 9 9] /Resources << >> >>");
        qpdf_add_page(pdf, pdf, qpdf_make_indirect_object(pdf, page), QPDF_FALSE);
    }
    qpdf_init_write(pdf, name.constData());
    if (userPassword != nullptr)
        qpdf_set_r6_encryption_parameters2(pdf, userPassword, "owner", QPDF_TRUE, QPDF_TRUE,
                                           QPDF_TRUE, QPDF_TRUE, QPDF_TRUE, QPDF_TRUE,
                                           qpdf_r3p_full, QPDF_TRUE);
    if (qpdf_write(pdf) != QPDF_SUCCESS)
        qFatal("a test file cannot be made");
    qpdf_cleanup(&pdf);
}

} // namespace

class TiffDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void countsThePagesOfTheChain_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("pages");
        QTest::addColumn<QString>("fault");
        for (const TiffKind kind :
             { TiffKind { false, false }, { true, false }, { false, true }, { true, true } }) {
            const auto add
                = [&kind](const char* name, const QByteArray& bytes, int pages, const char* fault) {
                      QTest::addRow("%s%s, %s", kind.isBigTiff ? "BigTIFF" : "TIFF",
                                    kind.isBigEndian ? " big-endian" : "", name)
                          << bytes << pages << QString::fromLatin1(fault);
                  };
            const QByteArray three = chain(kind, { 2, -1, 1 });
            const qsizetype end = kind.isBigTiff ? 16 + 2 * 36 : 8 + 2 * 18;
            add("in another order", three, 3, "");
            add("looping", chain(kind, { 1, 2, 1 }), 3,
                "the chain of pages leads back to page 2 after page 3");
            add("leading out", chain(kind, { 1, 9 }), 2,
                "the chain of pages leads out of the file after page 2");
            add("cut in a directory", chain(kind, { 1, 2, -1 }).left(end + 10), 3,
                "the file ends within the directory of page 3");
            add("cut before a directory", chain(kind, { 1, 2, -1 }).left(end), 2,
                "the chain of pages leads out of the file after page 2");
            QByteArray none = three;
            none.replace(end, kind.isBigTiff ? 8 : 2, QByteArray(kind.isBigTiff ? 8 : 2, '\0'));
            add("with an empty directory", none, 1, "the directory after page 1 is damaged");
            add("very long", chain(kind, oneAfterTheOther(20'000)), 20'000, "");
        }
        // One entry is found 6 bytes behind the start of the first directory, too.
        QTest::newRow("overlapping")
            << chain({}, { 1, -1 }).replace(22, 4, QByteArray("\x0E\0\0\0", 4)) << 1
            << u"the directory after page 1 overlaps that of page 1"_s;
    }

    void countsThePagesOfTheChain()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, pages);
        const QString path = write(u"chain.tif"_s, bytes);
        QCOMPARE(count(path), pages);
        const TiffDocument document(path);
        QCOMPARE(document.pageCount(), pages);
        QTEST(document.chainFault(), "fault");
    }

    void stopsLookingWhenItIsNotWanted()
    {
        const QString path = write(u"chain.tif"_s, chain({}, oneAfterTheOther(20'000)));
        int looks = 0;
        {
            const StopScope scope([&looks] { return ++looks > 6; }); // from the second page on
            QCOMPARE(count(path), 7);
            looks = 0;
            QCOMPARE(TiffDocument(path).chainFault(),
                     u"the search for pages was stopped after page 7"_s);
        }
        QCOMPARE(count(path), 20'000);
    }

    // Libtiff is shown an end of the chain at page 1, and pixels that lie there were 0.
    void showsPixelsThatLieOnALink()
    {
        const auto number = [](std::uint32_t value) {
            QByteArray bytes(4, 0);
            qToLittleEndian(value, bytes.data());
            return bytes;
        };
        const auto directory = [&](std::uint32_t stripAt, std::uint32_t next) {
            QByteArray bytes("\x09\0", 2);
            for (const auto& [tag, value] : { std::pair(256, 16U),
                                              { 257, 16U },
                                              { 258, 8U },
                                              { 259, 1U },
                                              { 262, 1U },
                                              { 273, stripAt },
                                              { 277, 1U },
                                              { 278, 16U },
                                              { 279, 256U } })
                bytes += number(static_cast<unsigned>(tag) | 4U << 16U) + number(1) + number(value);
            return bytes + number(next);
        };
        constexpr std::uint32_t first = 8;
        constexpr std::uint32_t second = first + 2 + 9 * 12 + 4;
        const QByteArray bytes = QByteArray("II*\0", 4) + number(first)
            + directory(second * 2 - first, second) + directory(first, 0) + QByteArray(256, 'p');
        const QString path = m_folder.filePath(u"link.tif"_s);
        putBytes(path, bytes);
        const TiffDocument document(path);
        QCOMPARE(document.pageCount(), 2);
        const PageImage page = document.page(1);
        const std::unique_ptr<RowSource> rows = page.source().rows();
        QByteArray pixels;
        for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
            for (int i = 0; i < band.rows; ++i)
                pixels.append(reinterpret_cast<const char*>(band.row(i)), 16);
        QFile::remove(path);
        QCOMPARE(pixels, bytes.mid(first, 256));
    }

    void takesNoOtherFileForTiff()
    {
        QFile::remove(m_folder.filePath(u"chain.tif"_s)); // of the cases above
        write(u"empty.tif"_s, "");
        write(u"text.tif"_s, "II is how this text begins");
        write(u"cut.tif"_s, QByteArray("II*\0\x8", 5));
        write(u"no page.tif"_s, QByteArray("II*\0\0\0\0\0", 8));
        write(u"text.pdf"_s, "%PDF-1.4 and no more");
        for (const char* name : { "pipe.tif", "pipe.pdf" })
            QCOMPARE(::mkfifo(m_folder.filePath(QLatin1String(name)).toLatin1(), 0600), 0);
        for (const QString& name : namesIn(m_folder.path()) + QStringList(u"missing.tif"_s)) {
            const QString path = m_folder.filePath(name);
            QVERIFY2(count(path) == 0, qPrintable(name));
            QVERIFY_THROWS_EXCEPTION(std::runtime_error, TiffDocument { path });
            QVERIFY(!verifyPDF(QUrl::fromLocalFile(path), u""_s));
        }
    }

    void countsPagesOfPdfDocuments_data()
    {
        // Without a user's password it is not encrypted; the program gives no, or an empty one.
        addTextRows(R"(
a.pdf | none | null  | 3 | no
a.PdF | none | x     | 3 | yes
a.tif | none |       | 0 | yes
a.pdf |      |       | 3 | yes
a.pdf | key  | key   | 3 | yes
a.pdf | key  | owner | 3 | yes
a.pdf | key  |       | 0 | no
)");
    }

    void countsPagesOfPdfDocuments()
    {
        const auto [name, userPassword, password, pages, opens] = textRow<5>();
        const QString given = password == u"null" ? QString() : u""_s + password;
        const QString path = m_folder.filePath(name);
        writePdf(path, 3, userPassword == u"none" ? nullptr : qPrintable(userPassword));
        QCOMPARE(QString::number(count(path, given)), pages);
        QCOMPARE(verifyPDF(QUrl::fromLocalFile(path), given), opens == u"yes");
        QVERIFY(!verifyPDF(QUrl(), given));
        // What a file is counts before its name.
        const QString tiff = write(u"tiff.pdf"_s, chain({}, { 1, -1 }));
        QCOMPARE(count(tiff, given), 2);
    }

private:
    QString write(const QString& name, const QByteArray& bytes) const
    {
        putBytes(m_folder.filePath(name), bytes);
        return m_folder.filePath(name);
    }
    static int count(const QString& path, const QString& password = QString())
    {
        return static_cast<int>(getTiffPageCount(QUrl::fromLocalFile(path), password));
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TiffDocumentTest)
#include "TiffDocumentTest.moc"
