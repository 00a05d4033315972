#include "engine/sources/FolderWalk.h"

#include "engine/support/Paths.h"
#include "engine/threads/StopScope.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    namespace fs = std::filesystem;

    bool isHidden(const fs::path& path, [[maybe_unused]] FolderWalk::Links links)
    {
        if (path.filename().native().starts_with('.'))
            return true;
#ifdef Q_OS_MACOS
        return links == FolderWalk::Links::Left
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

FolderWalk::FolderWalk(const QString& folder, Links links, bool isRecursive, Wanted wanted)
    : m_linkRule(links)
    , m_isRecursive(isRecursive)
    , m_isWanted(std::move(wanted))
{
    enter(folder);
}

void FolderWalk::enter(const QString& path)
{
    if (m_linkRule == Links::Followed) {
        const std::optional<FileIdentity> identity = fileIdentity(QFile::encodeName(path));
        if (identity && m_entered.contains(*identity))
            return;
        if (identity)
            m_entered.insert(*identity);
    }
    read(m_open.emplace_back(Folder { path, {} }));
}

bool FolderWalk::isListedBefore(const Name& a, const Name& b)
{
    return a.isFolder != b.isFolder ? b.isFolder : naturallyLess(a.text, b.text);
}

// Not with QDir, whose listings leave out names that are not text.
void FolderWalk::read(Folder& folder)
{
    std::error_code error;
    fs::directory_iterator unread(QFile::encodeName(folder.path).toStdString(), error);
    while (unread != fs::directory_iterator() && !StopScope::isStopped()) {
        const fs::directory_entry entry = *unread;
        unread.increment(error); // to the end when it fails
        if (isHidden(entry.path(), m_linkRule))
            continue;
        std::error_code ignored;
        const bool isFolder = entry.is_directory(ignored);
        QString name = pathFromBytes(entry.path().filename().c_str());
        if (!isFolder && isPath(name) && !m_isWanted(name))
            ++m_unwanted;
        else
            folder.names.push_back(
                { std::move(name), isFolder, isFolder && entry.is_symlink(ignored) });
    }
    if (StopScope::isStopped())
        folder.names.clear(); // a long folder takes its time to be sorted, too
    std::ranges::sort(folder.names, isListedBefore);
    if (error)
        folder.fault = QString::fromLocal8Bit(error.message().c_str());
}

FolderWalk::Entry FolderWalk::entryOf(const Folder& folder, const Name& name) const
{
    const bool isOfUse = isPath(name.text) || (name.isFolder && !m_isRecursive);
    return { joinedPath(folder.path, name.text), name.isFolder, name.isLink,
             isOfUse ? QString() : u"the name is no UTF-8 text"_s };
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
        if (folder.next < folder.names.size()) {
            const Entry entry = entryOf(folder, folder.names.at(folder.next++));
            if (m_isRecursive && entry.isFolder && entry.fault.isEmpty())
                follow(entry);
            return entry;
        }
        if (folder.fault.isEmpty())
            m_open.pop_back();
        else
            return Entry { folder.path, true, false, std::exchange(folder.fault, {}) };
    }
    return std::nullopt;
}

void FolderWalk::follow(const Entry& folder)
{
    if (m_linkRule == Links::Left && (folder.isLink || isPackage(folder.path)))
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
