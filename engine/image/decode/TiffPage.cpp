#include "engine/image/decode/TiffPage.h"

#include "engine/image/decode/DisplayRows.h"
#include "engine/image/tiff/TiffLimits.h"

#include <tiffio.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace pagestack {

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

    /// libtiff takes indexes of 8 bits and more for grays where their colours are missing, or are
    /// not as many as there are indexes.
    void checkColorMap(const TiffFile& file, const TiffDirectory& directory,
                       const TiffPageTags& tags)
    {
        if (tags.photometric != PHOTOMETRIC_MINISBLACK && tags.photometric != PHOTOMETRIC_RGB)
            return;
        for (const TiffTagValue& value : directory.values) {
            if (value.tag != TIFFTAG_PHOTOMETRIC || value.bytes == 0)
                continue;
            std::array<std::uint8_t, 1> low = {};
            file.readAt(value.offset + (file.chain().isBigEndian ? value.bytes - 1 : 0), low);
            if (low[0] == PHOTOMETRIC_PALETTE)
                throw std::runtime_error("the colour map is missing or of another length");
        }
    }

} // namespace

TiffPage::TiffPage(std::shared_ptr<TiffFile> file, int index)
    : m_file(std::move(file))
    , m_index(index)
{
}

const TiffPage::Description& TiffPage::description() const
{
    if (!m_description) {
        auto read = std::make_unique<Description>();
        checkDepth(m_file->describe(m_index));
        read->tags = readTiffPageTags(m_file->describe(m_index));
        TiffPageTags& tags = read->tags;
        const TiffDirectory directory = m_file->directory(m_index);
        checkStripTable(*m_file, directory, m_file->describe(m_index), tags);
        checkColorMap(*m_file, directory, tags);
        read->properties.widthPx = static_cast<int>(tags.widthPx);
        read->properties.heightPx = static_cast<int>(tags.heightPx);
        read->properties.resolution = tags.resolution;
        read->properties.orientation = tags.orientation;
        if (profileFitsDisplayRows(tags))
            read->properties.iccProfile = tags.iccProfile;
        m_description = std::move(read);
    }
    return *m_description;
}

const TiffPageTags& TiffPage::tags() const { return description().tags; }

const PageProperties& TiffPage::properties() const { return description().properties; }

void TiffPage::checkSize() const
{
    const TiffPageTags& described = tags();
    checkEncodedSize(m_file->describe(m_index), described, m_file->sizeBytes());
}

std::unique_ptr<RowSource> TiffPage::rowsShownIn(int bits) const
{
    checkSize();
    return displayRows(*m_file, m_index, tags(), bits);
}

} // namespace pagestack
