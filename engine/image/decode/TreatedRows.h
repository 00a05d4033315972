#pragma once

#include "engine/image/pixels/RowSource.h"

#include <QString>

#include <memory>

namespace pagestack {

class SharedWork;
class TiffPage;
struct PageTreatment;
struct TiffPageTags;

/// What the treatment of a page's document comes to for the page itself.
struct PageChange
{
    bool becomesSrgb = false;
    bool becomesBilevel = false; ///< pages that are one bit deep do not
    QString refusal; ///< a warning: why the colours are not converted; else empty

    bool isNone() const { return !becomesSrgb && !becomesBilevel; }
};

/// Whether such a page becomes black and white.
bool becomesBilevel(const TiffPageTags& tags, const PageTreatment& treatment);

PageChange pageChange(const TiffPageTags& tags, const PageTreatment& treatment);

/// A pass over the page in stored order with the changes made; without any, as `displayRows`. For
/// Otsu's threshold another pass goes before it. `work` is as for PageSource::rowsShownIn. Throws
/// std::runtime_error.
std::unique_ptr<RowSource> treatedRows(const TiffPage& page, int shownBits, SharedWork* work);

} // namespace pagestack
