#include "engine/sources/FolderWalk.h"

#include "engine/support/Paths.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    namespace fs = std::filesystem;

    bool isHidden(const fs::path& path, [[maybe_unused]] FolderWalk::Order order)
    {
        if (path.filename().native().starts_with('.'))
            return true;
#ifdef Q_OS_MACOS
        return order == FolderWalk::Order::Listed
            && QFileInfo(QFile::decodeName(path.c_str())).isHidden();
#else
        return false;
#endif
    }

    bool isPackage([[maybe_unused]] const QString& path)
    {
#ifdef Q_OS_MACOS
        return QFileInfo(path).isBundle();
#else
        return false;
#endif
    }

    bool isListedBefore(const FolderWalk::Entry& a, const FolderWalk::Entry& b)
    {
        return a.isFolder != b.isFolder ? b.isFolder : naturallyLess(a.path, b.path);
    }

    bool isDigit(QChar character) { return character >= u'0' && character <= u'9'; }

    /// The digits at `start`, without leading zeros; `start` moves behind them.
    QStringView takeNumber(QStringView text, qsizetype& start)
    {
        while (start < text.size() && text.at(start) == u'0')
            ++start;
        const qsizetype first = start;
        while (start < text.size() && isDigit(text.at(start)))
            ++start;
        return text.sliced(first, start - first);
    }

    /// Below, at or above 0 like the order of the two numbers, however long.
    int compareNumbers(QStringView a, QStringView b)
    {
        if (a.size() != b.size())
            return a.size() < b.size() ? -1 : 1;
        return a.compare(b);
    }

} // namespace

FolderWalk::FolderWalk(const QString& folder, Order order, bool isRecursive)
    : m_order(order)
    , m_isRecursive(isRecursive)
{
    enter(folder);
}

// Not with QDir, whose listings leave out names that are not text.
void FolderWalk::enter(const QString& path)
{
    const QByteArray bytes = QFile::encodeName(path);
    if (m_order == Order::Natural) {
        const std::optional<FileIdentity> identity = fileIdentity(bytes);
        if (identity && m_entered.contains(*identity))
            return;
        if (identity)
            m_entered.insert(*identity);
    }
    std::error_code error;
    Folder& folder = m_open.emplace_back();
    folder.path = path;
    folder.unread = fs::directory_iterator(bytes.toStdString(), error);
    if (error)
        folder.read.push_back(
            { path, true, false, QString::fromLocal8Bit(error.message().c_str()) });
}

/// Reads the next entry, or all of them where they have to be sorted.
void FolderWalk::read(Folder& folder) const
{
    std::error_code error;
    while (folder.unread != fs::directory_iterator()
           && (m_order == Order::Natural || folder.read.empty())) {
        const fs::directory_entry entry = *folder.unread;
        folder.unread.increment(error); // to the end when it fails
        if (isHidden(entry.path(), m_order))
            continue;
        std::error_code ignored;
        const QString name = pathFromBytes(entry.path().filename().c_str());
        const bool isFolder = entry.is_directory(ignored);
        const bool isOfUse = isPath(name) || (isFolder && !m_isRecursive);
        folder.read.push_back({ joinedPath(folder.path, name), isFolder,
                                isFolder && entry.is_symlink(ignored),
                                isOfUse ? QString() : u"the name is no UTF-8 text"_s });
    }
    if (m_order == Order::Natural)
        std::sort(folder.read.begin(), folder.read.end(), isListedBefore);
    if (error)
        folder.read.push_back(
            { folder.path, true, false, QString::fromLocal8Bit(error.message().c_str()) });
}

std::optional<FolderWalk::Entry> FolderWalk::next()
{
    while (!m_open.empty() || !m_links.empty()) {
        if (m_open.empty()) {
            enter(std::exchange(m_links.front(), {}));
            m_links.pop_front();
            continue;
        }
        Folder& folder = m_open.back();
        if (folder.read.empty())
            read(folder);
        if (folder.read.empty()) {
            m_open.pop_back();
            continue;
        }
        Entry entry = std::move(folder.read.front());
        folder.read.pop_front();
        if (m_isRecursive && entry.isFolder && entry.fault.isEmpty())
            follow(entry);
        return entry;
    }
    return std::nullopt;
}

void FolderWalk::follow(const Entry& folder)
{
    if (m_order == Order::Listed && (folder.isLink || isPackage(folder.path)))
        return;
    if (folder.isLink)
        m_links.push_back(folder.path);
    else
        enter(folder.path);
}

bool naturallyLess(const QString& a, const QString& b)
{
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a.at(i)) && isDigit(b.at(j))) {
            const QStringView first = takeNumber(a, i);
            if (const int order = compareNumbers(first, takeNumber(b, j)))
                return order < 0;
        } else if (a.at(i) != b.at(j)) {
            return a.at(i) < b.at(j);
        } else {
            ++i;
            ++j;
        }
    }
    const qsizetype restA = a.size() - i;
    const qsizetype restB = b.size() - j;
    return restA != restB ? restA < restB : a < b;
}

} // namespace pagestack
