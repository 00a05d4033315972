#include "engine/image/TiffDocument.h"
#include "filelist/FileItem.h"
#include "tests/fuzz/FuzzSupport.h"

#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int mostPagesRead = 64;

    /// What the tags of a page say; empty when they cannot be read.
    QList<int> described(const PageImage& page)
    try {
        const PageProperties& tags = page.source().properties();
        require(tags.widthPx > 0 && tags.heightPx > 0, "a page that is described has pixels");
        require(tags.orientation >= 1 && tags.orientation <= 8, "an orientation is one of eight");
        require(tags.resolution.x >= 0 && tags.resolution.y >= 0, "a resolution is not negative");
        require(page.source().decodedBytes() > 0, "a page that is described has bytes");
        return { tags.widthPx, tags.heightPx, tags.orientation,
                 static_cast<int>(tags.iccProfile.size()) };
    } catch (const std::runtime_error&) {
        return {};
    }

    void walk(const TiffDocument& document)
    {
        const std::unique_ptr<TiffDocument> clone = document.clone();
        require(clone->pageCount() == document.pageCount(), "a clone has the same pages");
        const int pages = std::min(document.pageCount(), mostPagesRead);
        QList<QList<int>> descriptions;
        for (int page = 0; page < pages; ++page)
            descriptions.append(described(document.page(page)));
        for (int page = pages - 1; page >= 0; --page)
            require(described(clone->page(page)) == descriptions.at(page),
                    "a page is the same whatever was read before it");
    }

} // namespace

void openFile(FuzzInput input)
{
    const FuzzFolder folder;
    // The name lets what is no TIFF file be counted as a PDF document.
    const QString path = folder.put(u"input.pdf"_s, input);
    const std::shared_ptr<FileItem> item = FileItem::initWithURL(QUrl::fromLocalFile(path));
    require(item && item->pages() >= 0, "a file has no negative number of pages");
    try {
        const TiffDocument document(path);
        require(document.pageCount() == item->pages(), "the list counts the pages that are read");
        walk(document);
    } catch (const std::runtime_error& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
    }
}

} // namespace pagestack
