#include "engine/image/TiffDocument.h"
#include "tests/fuzz/FuzzSupport.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int mostPagesDecoded = 8;
    constexpr std::uint64_t wholePageBytes = 2 * 1024 * 1024;

    /// The start of a page that would take too long as a whole. What it announces must not cost
    /// more than the program's own limits allow.
    void decodeStart(const PageImage& page)
    try {
        const std::unique_ptr<RowSource> rows = page.source().rows();
        const Band band = rows->nextBand();
        require(band.rows > 0 && band.rows <= rows->heightPx(), "a page starts with a band");
    } catch (const std::runtime_error& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
    }

} // namespace

void decodePages(FuzzInput input)
{
    const FuzzFolder folder;
    const QString path = folder.put(u"input.tif"_s, input);
    try {
        const TiffDocument document(path);
        const std::unique_ptr<TiffDocument> clone = document.clone();
        for (int index = 0; index < std::min(document.pageCount(), mostPagesDecoded); ++index) {
            const PageImage page = document.page(index);
            if (!isSmall(page, wholePageBytes))
                decodeStart(page);
            else
                require(appearance(page) == appearance(clone->page(index)),
                        "every pass over a page gives the same pixels");
        }
    } catch (const std::runtime_error& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
    }
}

} // namespace pagestack
