#include "tests/support/TestFolder.h"

#include "tests/support/TiffBuilder.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QtEndian>

#include <tiffio.h>

#include <filesystem>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    void setUnknownTag(TIFF* tiff)
    {
        static char name[] = "Unknown";
        static const TIFFFieldInfo field { 65100, 1, 1, TIFF_SHORT, FIELD_CUSTOM, 1, 0, name };
        TIFFMergeFieldInfo(tiff, &field, 1);
        TIFFSetField(tiff, 65100, 1);
    }

    /// The strip of an F page: ITU-T T.4, an end of line and a run of 47 in each row but one.
    QByteArray damagedFax()
    {
        return QByteArray::fromHex(QByteArray("0010a").repeated(33).replace(10, 5, "00105") + '0');
    }

    TestPage pageOf(QChar kind, qsizetype index)
    {
        TestPage page(kind == u'H'       ? "width=40000 height=40000 rows=1000 bits=1 compression=8"
                          : kind == u'F' ? "bits=1 rows=33 compression=3"
                                         : "rows=33 compression=8");
        const auto gray = static_cast<std::uint64_t>(index + (kind == u'V' ? 101 : 1));
        page.sample = [gray](int, int, int) { return gray; };
        if (kind == u'H')
            page.encoded = QList<QByteArray>(40, qCompress(QByteArray(5'000'000, '\1')).sliced(4));
        else if (kind == u'F')
            page.encoded = { damagedFax() };
        else if (kind == u'B')
            page.encoded = { QByteArray(9, static_cast<char>(gray)) };
        else if (kind == u'U')
            page.moreTags = setUnknownTag;
        else if (kind == u'T')
            page.moreTags = [](tiff* file) {
                TIFFSetField(file, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
            };
        else if (kind == u'M')
            page.moreTags
                = [](tiff* file) { TIFFSetField(file, TIFFTAG_SUBFILETYPE, FILETYPE_MASK); };
        return page;
    }

    /// Lets the last directory of the file lead back to the first one.
    void closeChain(const QString& path)
    {
        QByteArray bytes = bytesOf(path);
        const auto first = qFromLittleEndian<quint32>(bytes.constData() + 4);
        qsizetype next = 4;
        for (quint32 at = first; at != 0; at = qFromLittleEndian<quint32>(bytes.constData() + next))
            next = at + 2 + 12 * qFromLittleEndian<quint16>(bytes.constData() + at);
        qToLittleEndian(first, bytes.data() + next);
        putBytes(path, bytes);
    }

    QString tiffPages(const QString& path)
    {
        QStringList pages;
        for (const TiffPicture& page : readTiff(path))
            pages.append(u"%1/%2"_s.arg(page.samples.isEmpty() ? -1 : page.samples.at(0))
                             .arg(page.number(TIFFTAG_COMPRESSION)));
        return pages.join(u',');
    }

} // namespace

void TestFolder::make(const QString& list) const
{
    for (QString word : list.split(u' ', Qt::SkipEmptyParts)) {
        word.replace(u'~', u' ').replace(u'@', m_folder.path());
        const qsizetype mark = word.indexOf(QRegularExpression(u"[:>&]"_s));
        QFile file(path(word.left(mark)));
        const QString rest = word.mid(mark + 1);
        bool isMade = QDir().mkpath(QFileInfo(file).path());
        if (mark >= 0 && word.at(mark) == u':') {
            QList<TestPage> pages;
            for (const QChar kind : rest.chopped(rest.endsWith(u'L') ? 1 : 0))
                pages.append(pageOf(kind, pages.size()));
            writeTiff(file.fileName(), pages);
            if (rest.endsWith(u'L'))
                closeChain(file.fileName());
        } else if (mark >= 0 && word.at(mark) == u'>') {
            isMade = isMade && QFile::link(rest, file.fileName());
        } else if (mark >= 0) {
            std::filesystem::create_hard_link(path(rest).toStdString(),
                                              file.fileName().toStdString());
        } else if (!word.endsWith(u'/')) {
            isMade = isMade && file.open(QIODevice::WriteOnly) && file.write("text") == 4;
        }
        if (!isMade)
            throw std::runtime_error("cannot make " + word.toStdString());
    }
}

QMap<QString, QByteArray> TestFolder::entries() const
{
    QMap<QString, QByteArray> found;
    constexpr auto all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    QDirIterator entry(path({}), all, QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        QFile file(entry.next());
        const QString name = QDir(path({})).relativeFilePath(entry.filePath());
        if (entry.fileInfo().isSymLink())
            found[name] = "> " + file.symLinkTarget().toUtf8();
        else if (entry.fileInfo().isDir())
            found[name + u'/'] = "a folder";
        else if (file.open(QIODevice::ReadOnly))
            found[name] = "a file: " + file.readAll();
    }
    return found;
}

QString TestFolder::changes() const
{
    QStringList names;
    const QMap<QString, QByteArray> now = entries();
    for (const QString& name : now.keys() + m_before.keys()) {
        const bool isTiff = now.contains(name) && name.endsWith(u".tiff");
        const QString shown = isTiff ? u"%1[%2]"_s.arg(name, tiffPages(path(name))) : name;
        if (m_before.value(name) != now.value(name))
            names.append(now.contains(name) ? shown : u'-' + name);
    }
    names.removeDuplicates();
    return names.replaceInStrings(u" "_s, u"~"_s).join(u' ');
}

QString withStars(QString found, const QString& expected)
{
    for (const QString& line : expected.split(u'\n').filter(QRegularExpression(u"\\*$"_s))) {
        const QString start = QRegularExpression::escape(line.chopped(1));
        found.replace(QRegularExpression(u"(?m)^%1.+$"_s.arg(start)), line);
    }
    return found;
}

} // namespace pagestack
