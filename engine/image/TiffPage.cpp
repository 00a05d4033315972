#include "engine/image/TiffPage.h"

#include "engine/image/DisplayRows.h"

namespace pagestack {

TiffPage::TiffPage(std::shared_ptr<TiffFile> file, int index)
    : m_file(std::move(file))
    , m_index(index)
{
}

const TiffPageTags& TiffPage::tags() const
{
    if (!m_tags) {
        const TiffPageTags tags = readTiffPageTags(m_file->describe(m_index));
        m_properties.widthPx = static_cast<int>(tags.widthPx);
        m_properties.heightPx = static_cast<int>(tags.heightPx);
        m_properties.resolution = tags.resolution;
        m_properties.orientation = tags.orientation;
        if (profileFitsDisplayRows(tags))
            m_properties.iccProfile = tags.iccProfile;
        m_tags = tags;
    }
    return *m_tags;
}

const PageProperties& TiffPage::properties() const
{
    tags();
    return m_properties;
}

void TiffPage::checkSize() const
{
    const TiffPageTags& described = tags();
    checkEncodedSize(m_file->describe(m_index), described, m_file->sizeBytes());
}

std::unique_ptr<RowSource> TiffPage::rows() const
{
    checkSize();
    return displayRows(*m_file, m_index, tags());
}

} // namespace pagestack
