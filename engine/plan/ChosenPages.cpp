#include "engine/plan/ChosenPages.h"

#include "engine/options/PageChoice.h"
#include "engine/options/RunOptions.h"
#include "filelist/FileItem.h"

#include <algorithm>

namespace pagestack {

namespace {

    PageChoice choiceFor(const FileItem& item, const RunOptions& options)
    {
        return PageChoice(item.pageChoice().isEmpty() ? options.pages : item.pageChoice());
    }

} // namespace

QList<int> chosenPages(const FileItem& item, const RunOptions& options)
{
    QList<int> pages = choiceFor(item, options).pages(item.pages());
    const QList<int>& reduced = item.reducedPages();
    if (options.skipsReduced && !reduced.isEmpty())
        pages.removeIf([&](int page) { return std::ranges::binary_search(reduced, page); });
    return pages;
}

int chosenPageCount(const FileItem& item, const RunOptions& options)
{
    const bool isEvery = options.pages.isEmpty() && item.pageChoice().isEmpty()
        && (!options.skipsReduced || item.reducedPages().isEmpty());
    return isEvery ? item.pages() : static_cast<int>(chosenPages(item, options).size());
}

int ChosenPageCounter::count(const FileItem& item)
{
    const bool isOwn = !item.pageChoice().isEmpty()
        || (m_options.skipsReduced && !item.reducedPages().isEmpty());
    if (isOwn || m_options.pages.isEmpty())
        return chosenPageCount(item, m_options);
    auto known = m_known.constFind(item.pages());
    if (known == m_known.cend())
        known = m_known.insert(item.pages(), chosenPageCount(item, m_options));
    return *known;
}

QString missingPages(const FileItem& item, const RunOptions& options)
{
    return choiceFor(item, options).missing(item.pages());
}

} // namespace pagestack
