#include "engine/image/decode/TiffPage.h"

#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/JpegPageBlocks.h"
#include "engine/image/metadata/MetadataReader.h"
#include "engine/image/tiff/TiffLimits.h"

#include <tiffio.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// A page of several slices, one behind the other, would lose all but the first.
    void checkDepth(tiff* page)
    {
        for (const ttag_t tag : { TIFFTAG_IMAGEDEPTH, TIFFTAG_TILEDEPTH }) {
            std::uint32_t depth = 0;
            if (TIFFGetField(page, tag, &depth) == 1 && depth > 1)
                throw std::runtime_error("a page of " + std::to_string(depth)
                                         + " slices in depth is not supported");
        }
    }

    /// What the SubfileType of old files says (TIFF 6.0, section 8), which libtiff does not read.
    void takeOldSubfileType(const TiffPage& page, TiffPageTags& tags)
    {
        if (page.directory().find(TIFFTAG_SUBFILETYPE) != nullptr)
            return;
        switch (page.document().number(page.directory().find(TIFFTAG_OSUBFILETYPE)).value_or(0)) {
        case OFILETYPE_REDUCEDIMAGE:
            tags.subfileType = FILETYPE_REDUCEDIMAGE;
            break;
        case OFILETYPE_PAGE:
            tags.subfileType = FILETYPE_PAGE;
            break;
        default:
            break; // a page like any other
        }
    }

    /// libtiff takes indexes of 8 bits and more for grays where their colours are missing, or are
    /// not as many as there are indexes.
    void checkColorMap(const TiffPage& page, const TiffPageTags& tags)
    {
        if (tags.photometric != PHOTOMETRIC_MINISBLACK && tags.photometric != PHOTOMETRIC_RGB)
            return;
        const TiffTagValue* value = page.directory().find(TIFFTAG_PHOTOMETRIC);
        if (value == nullptr || value->bytes == 0)
            return;
        std::array<std::uint8_t, 1> low = {};
        page.reader().readAt(value->offset + (page.document().isBigEndian() ? value->bytes - 1 : 0),
                             low);
        if (low[0] == PHOTOMETRIC_PALETTE)
            throw std::runtime_error("the colour map is missing or of another length");
    }

} // namespace

TiffPage::TiffPage(std::shared_ptr<TiffReader> reader, int index, const PageTreatment& treatment)
    : m_reader(std::move(reader))
    , m_index(index)
    , m_treatment(treatment)
{
    const int pages = document().pageCount();
    if (index < 0 || index >= pages)
        throw std::out_of_range("index " + std::to_string(index) + " beyond bounds [0 .. "
                                + std::to_string(pages - 1) + "]");
}

const TiffPage::Description& TiffPage::description() const
{
    if (!m_description) {
        auto read = std::make_unique<Description>();
        checkDepth(load());
        TiffPageTags& tags = read->tags = readTiffPageTags(load());
        takeOldSubfileType(*this, tags);
        checkStripTable(*m_reader, m_index, tags);
        checkColorMap(*this, tags);
        read->properties.widthPx = static_cast<int>(tags.widthPx);
        read->properties.heightPx = static_cast<int>(tags.heightPx);
        read->properties.resolution = tags.resolution;
        read->properties.orientation = tags.orientation;
        read->change = pageChange(tags, m_treatment);
        read->properties.isSrgb = read->change.becomesSrgb;
        if (profileFitsDisplayRows(tags) && read->change.isNone())
            read->properties.iccProfile = tags.iccProfile;
        m_description = std::move(read);
    }
    return *m_description;
}

const TiffPageTags& TiffPage::tags() const { return description().tags; }

const PageChange& TiffPage::change() const { return description().change; }

const PageProperties& TiffPage::properties() const { return description().properties; }

tiff* TiffPage::restart() const
{
    const TiffPageTags& described = tags();
    tiff* handle = m_reader->restart(m_index);
    applyRowsPerStrip(handle, described);
    if (described.hasStripOfUnknownSize)
        messages().addPageWarning(
            u"the size of its strip is 0 in the file; as many bytes as its rows need were taken"_s);
    if (const QString fault = resolutionFault(); !fault.isNull())
        messages().addPageWarning(fault);
    return handle;
}

/// What is wrong with the resolution, for who expects another; null: nothing is.
QString TiffPage::resolutionFault() const
{
    constexpr double tolerance = 0.5;
    constexpr double cmAnInch = 2.54;
    const Resolution& found = tags().resolution;
    const int wanted = m_treatment.expectedDpi;
    if (wanted == 0)
        return {};
    if (found.x <= 0 || found.unit == ResolutionUnit::None)
        return u"its resolution is not known; %1 dpi were expected"_s.arg(wanted);
    const double scale = found.unit == ResolutionUnit::Centimeter ? cmAnInch : 1;
    const double x = found.x * scale;
    const double y = found.y * scale;
    if (std::abs(x - wanted) < tolerance && std::abs(y - wanted) < tolerance)
        return {};
    return u"its resolution is %1 x %2 dpi; %3 were expected"_s.arg(
        QString::number(x, 'g', 6), QString::number(y, 'g', 6), QString::number(wanted));
}

void TiffPage::checkSize() const
{
    const TiffPageTags& described = tags();
    checkEncodedSize(load(), described, document().sizeBytes());
}

std::shared_ptr<const PageMetadata> TiffPage::metadata() const
{
    if (m_treatment.stripsMetadata)
        return nullptr;
    PageMetadata read = readMetadata(document(), directory(), MetadataUse::Shown);
    if (read.isEmpty() && read.leftOut.isEmpty())
        return nullptr;
    const int photometric = tags().photometric;
    if ((photometric > PHOTOMETRIC_PALETTE && photometric != PHOTOMETRIC_YCBCR)
        || !change().isNone())
        std::erase_if(read.tags, [](const MetadataEntry& entry) {
            return entry.tag == TIFFTAG_WHITEPOINT || entry.tag == TIFFTAG_PRIMARYCHROMATICITIES;
        });
    if (change().becomesSrgb)
        read.describeSrgb();
    if (tags().orientation != ORIENTATION_TOPLEFT) {
        // They hold for sides as they are stored.
        read.imageResources.clear();
        std::erase_if(read.tags, [](const MetadataEntry& entry) {
            return entry.tag == TIFFTAG_XPOSITION || entry.tag == TIFFTAG_YPOSITION;
        });
        for (const unsigned tag : { TIFFTAG_PHOTOSHOP, TIFFTAG_XPOSITION, TIFFTAG_YPOSITION })
            read.heldTags.erase(tag);
    }
    return std::make_shared<const PageMetadata>(std::move(read));
}

std::shared_ptr<JpegBlocks> TiffPage::jpegBlocks() const { return pageBlocks(*this); }

std::unique_ptr<RowSource> TiffPage::rowsShownIn(int bits, SharedWork* work) const
{
    checkSize();
    auto rows = treatedRows(*this, bits, work);
    if (!change().refusal.isEmpty()) // once the pass, which forgets what was said before, is begun
        messages().addPageWarning(change().refusal);
    return rows;
}

} // namespace pagestack
