#include "engine/image/TiffPage.h"

#include "engine/image/DisplayRows.h"

namespace pagestack {

TiffPage::TiffPage(std::shared_ptr<TiffFile> file, int index)
    : m_file(std::move(file))
    , m_index(index)
{
}

const TiffPage::Description& TiffPage::description() const
{
    if (!m_description) {
        auto read = std::make_unique<Description>();
        read->tags = readTiffPageTags(m_file->describe(m_index));
        const TiffPageTags& tags = read->tags;
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

std::unique_ptr<RowSource> TiffPage::rows() const
{
    checkSize();
    return displayRows(*m_file, m_index, tags());
}

} // namespace pagestack
