#include "filelist/FileItem.h"

#include "engine/image/PageCount.h"
#include "engine/support/Dates.h"
#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"

#include <QFile>
#include <QStringList>

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <sys/stat.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    template <typename Number>
    int saturated(Number number)
    {
        return std::in_range<int>(number) ? static_cast<int>(number)
                                          : std::numeric_limits<int>::max();
    }

    /// Bytes on disk, links followed; none when the file cannot be looked up.
    std::optional<qint64> allocatedSize(const QString& path)
    {
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) != 0)
            return std::nullopt;
        // Linux and macOS count in 512 bytes, whatever the block size of the file system is.
        return qint64 { status.st_blocks } * 512;
    }

    QByteArray pathBytes(const QUrl& url)
    {
        return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    }

} // namespace

std::shared_ptr<FileItem> FileItem::initWithURL(const QUrl& url)
{
    if (url.isEmpty() || !url.isLocalFile())
        return nullptr;
    if (!hasTextPath(url)) {
        systemLog(u"The name is no UTF-8 text, so the file is left out: "_s + url.toLocalFile());
        return nullptr;
    }
    // Not every character survives: U+FDD0 and its like are replaced.
    const QUrl parsed(url.toString(QUrl::FullyEncoded));
    const bool isSame = parsed.toLocalFile() == url.toLocalFile();
    auto item = std::make_shared<FileItem>(Made());
    item->setFilePath(isSame ? parsed : url);
    return item;
}

std::shared_ptr<const FileItem> FileItem::unread(const QUrl& url)
{
    auto item = std::make_shared<FileItem>(Made());
    item->takeURL(url);
    return item;
}

FileItem::FileItem(const FileItem& other, Made)
    : m_isSelected(other.m_isSelected)
    , m_identityHash(other.m_identityHash)
    , m_path(other.m_path)
    , m_foundIn(other.m_foundIn)
    , m_rare(other.m_rare ? std::make_unique<Rare>(*other.m_rare) : nullptr)
    , m_pages(other.m_pages)
    , m_size(other.m_size)
{
}

FileItem::~FileItem() = default;

std::shared_ptr<FileItem> FileItem::clone() const
{
    return std::make_shared<FileItem>(*this, Made());
}

void FileItem::setFilePath(const QUrl& url)
{
    takeURL(url);
    const std::optional<qint64> bytes = allocatedSize(url.toLocalFile());
    if (bytes)
        m_size = saturated(*bytes);
    const CountedPages counted = countPages(url, u""_s);
    m_pages = saturated(counted.count);
    if (!m_rare && counted.reduced.isEmpty() && counted.fault.isEmpty())
        return;
    Rare& rare = madeRare();
    rare.reducedPages = counted.reduced;
    rare.fault = counted.fault;
    rare.isMissing = m_pages == 0 && !bytes;
}

void FileItem::takeURL(const QUrl& url)
{
    m_path = withoutEndingSlash(url.toLocalFile()).toString();
    const bool isPath = QUrl::fromLocalFile(m_path) == url;
    if (!isPath || m_rare)
        madeRare().url = isPath ? QUrl() : url;
    m_identityHash = static_cast<quint32>(qHash(identity()));
}

FileItem::Rare& FileItem::madeRare()
{
    if (!m_rare)
        m_rare = std::make_unique<Rare>();
    return *m_rare;
}

const FileItem::Rare& FileItem::rare() const
{
    static const Rare asByDefault;
    return m_rare ? *m_rare : asByDefault;
}

void FileItem::setPageChoice(const QString& choice)
{
    if (!m_rare && choice.isEmpty())
        return;
    madeRare().pageChoice = choice;
}

QUrl FileItem::filePath() const
{
    return rare().url.isEmpty() ? QUrl::fromLocalFile(m_path) : rare().url;
}

QString FileItem::localFile() const
{
    return rare().url.isEmpty() ? m_path : rare().url.toLocalFile();
}

QString FileItem::identity() const
{
    return rare().url.isEmpty() ? m_path : rare().url.toString(QUrl::FullyEncoded);
}

QString FileItem::name() const { return lastPathComponent(m_path); }

QString FileItem::location() const { return folderPart(m_path); }

QString FileItem::type() const { return pathExtension(m_path); }

QString FileItem::sizeInKB() const { return sizeText(m_size); }

FileDates FileItem::dates() const { return m_path.isEmpty() ? FileDates() : fileDates(m_path); }

bool FileItem::isEqual(const FileItem* other) const
{
    return other
        && (other == this
            || (other->m_identityHash == m_identityHash && other->identity() == identity()));
}

QVariant FileItem::displayField(const QString& identifier) const
{
    const QString column = identifier.toUpper();
    if (column == u"ISSELECTED"_s)
        return isSelected();
    if (column == u"NAME"_s)
        return name();
    if (column == u"PAGES"_s)
        return pages();
    if (column == u"PAGESTOCONVERT"_s)
        return pageChoice();
    if (column == u"SIZEINKB"_s)
        return sizeInKB();
    if (column == u"TYPE"_s)
        return type();
    if (column == u"DATEMODIFIED"_s)
        return columnText(dateModified());
    if (column == u"DATECREATED"_s)
        return columnText(dateCreated());
    if (column == u"DATEACCESSED"_s)
        return columnText(dateAccessed());
    if (column == u"LOCATION"_s)
        return location();
    return u""_s; // "SELECTION" too, which is a column without a text
}

bool FileItem::hasTextPath(const QUrl& url)
{
    return pathBytes(QUrl::fromLocalFile(url.toLocalFile())) == pathBytes(url);
}

QString FileItem::columnText(const QDateTime& date)
{
    return dateText(date, u"dd-MMM-yyyy h:mm AP"_s);
}

QString FileItem::sizeText(int bytes)
{
    static constexpr std::array<const char*, 5> units { "B", "KB", "MB", "GB", "TB" };
    // Single precision on purpose, at every step: it decides where a unit ends.
    float amount = static_cast<float>(bytes);
    std::size_t unit = 0;
    while (double { amount } > 1000.0) {
        amount = static_cast<float>(double { amount } / 1000.0);
        ++unit;
    }
    if (unit <= 1) {
        return QString::asprintf("%d KB",
                                 static_cast<int>(std::round(static_cast<float>(bytes / 1000.0))));
    }

    // asprintf of QString writes a decimal point in every locale.
    const QString text = QString::asprintf("%4.1f", double { amount });
    const QStringList parts = text.split(u'.');
    const bool isWhole = parts.size() == 2 && parts.at(1).toInt() == 0;
    return (isWhole ? parts.first() : text) + u' ' + QLatin1String(units.at(unit));
}

} // namespace pagestack
