#pragma once

#include "engine/image/pixels/PageSource.h"
#include "engine/image/tiff/TiffFile.h"
#include "engine/image/tiff/TiffPageTags.h"

#include <memory>

namespace pagestack {

/// One page of a TIFF file. Nothing is read before it is asked for; what was read of the tags is
/// kept.
class TiffPage : public PageSource
{
public:
    /// Page `index`, from 0, of `file`; the page keeps the file open.
    TiffPage(std::shared_ptr<TiffFile> file, int index);

    const PageProperties& properties() const override;
    std::unique_ptr<RowSource> rows() const override { return rowsShownIn(16); }
    std::unique_ptr<RowSource> rowsShownIn(int bits) const override;
    std::uint64_t decodedBytes() const override { return tags().decodedBytes(); }
    const TiffPage* tiffPage() const override { return this; }

    TiffFile& file() const { return *m_file; }
    int index() const { return m_index; }

    /// Throws std::runtime_error when the page's directory cannot be read or is not supported.
    const TiffPageTags& tags() const;

    /// Gives back the memory of what was read of the tags, which are read again when asked for.
    /// What tags() and properties() gave is not valid any more.
    void forgetTags() const { m_description.reset(); }

    /// Throws std::runtime_error when the page's data cannot hold its pixels (see
    /// checkEncodedSize).
    void checkSize() const;

private:
    struct Description
    {
        TiffPageTags tags;
        PageProperties properties;
    };
    const Description& description() const;

    std::shared_ptr<TiffFile> m_file;
    int m_index;
    mutable std::unique_ptr<const Description> m_description; ///< read when first asked for
};

} // namespace pagestack
