#include "engine/image/decode/TreatedRows.h"

#include "engine/image/decode/ColorTransform.h"
#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/BilevelRows.h"

#include <tiffio.h>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    void chooseColors(const TiffPageTags& tags, PageChange& change)
    {
        switch (tags.photometric) {
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
            change.becomesSrgb = true; // by definition
            return;
        case PHOTOMETRIC_SEPARATED:
            change.becomesSrgb = isCmykProfile(tags.iccProfile);
            break;
        default:
            if (tags.isOneBitDeep() && tags.photometric != PHOTOMETRIC_PALETTE)
                return; // black and white are the same in all
            if (!profileFitsDisplayRows(tags))
                break;
            const bool isGray = tags.iccProfile.mid(16, 4) == "GRAY";
            const ProfileKind kind
                = profileKind(tags.iccProfile, isGray ? ColorModel::Gray : ColorModel::Rgb);
            change.becomesSrgb = kind == ProfileKind::Other;
            if (kind == ProfileKind::Srgb)
                return;
        }
        if (!change.becomesSrgb && !tags.iccProfile.isEmpty())
            change.refusal = u"its colours are not converted to sRGB, since its ICC profile is "
                             "broken or not for them"_s;
    }

    /// Of CMYK and L*a*b*, display rows are in sRGB already.
    std::unique_ptr<RowSource> convertedRows(const TiffPage& page, int shownBits, SharedWork* work)
    {
        auto rows = displayRows(page, shownBits, {}, work);
        if (!page.change().becomesSrgb || !profileFitsDisplayRows(page.tags()))
            return rows;
        return srgbRows(std::move(rows), page.tags().iccProfile);
    }

} // namespace

bool becomesBilevel(const TiffPageTags& tags, const PageTreatment& treatment)
{
    return treatment.bilevel != Bilevel::None && !tags.isOneBitDeep();
}

PageChange pageChange(const TiffPageTags& tags, const PageTreatment& treatment)
{
    PageChange change;
    change.becomesBilevel = becomesBilevel(tags, treatment);
    if (treatment.convertsToSrgb)
        chooseColors(tags, change);
    return change;
}

std::unique_ptr<RowSource> treatedRows(const TiffPage& page, int shownBits, SharedWork* work)
{
    if (!page.change().becomesBilevel)
        return convertedRows(page, shownBits, work);
    const auto startPass = [&] { return luminanceRows(convertedRows(page, 8, work)); };
    switch (page.treatment().bilevel) {
    case Bilevel::Dither:
        return ditheredRows(startPass());
    case Bilevel::Otsu: {
        const int threshold = otsuThreshold(*startPass()); // whose pass is over before the next
        return thresholdRows(startPass(), threshold);
    }
    default:
        return thresholdRows(startPass(), page.treatment().threshold);
    }
}

} // namespace pagestack
