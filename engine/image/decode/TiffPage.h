#pragma once

#include "engine/image/decode/TreatedRows.h"
#include "engine/image/pixels/PageSource.h"
#include "engine/image/tiff/TiffPageTags.h"
#include "engine/image/tiff/TiffReader.h"
#include "engine/options/RunOptions.h"

#include <memory>

namespace pagestack {

/// One page of a TIFF file. Nothing is read before it is asked for; what was read of the tags is
/// kept.
class TiffPage : public PageSource
{
public:
    /// Page `index`, from 0, of the reader's file, which the page keeps open. Throws
    /// std::out_of_range, reason "index 3 beyond bounds [0 .. 2]".
    TiffPage(std::shared_ptr<TiffReader> reader, int index, const PageTreatment& treatment = {});

    const PageProperties& properties() const override;
    std::unique_ptr<RowSource> rowsShownIn(int bits, SharedWork* work) const override;
    std::uint64_t decodedBytes() const override { return tags().decodedBytes(); }
    /// Without what does not hold for upright pixels in the colours of `rowsShownIn`.
    std::shared_ptr<const PageMetadata> metadata() const override;
    std::shared_ptr<JpegBlocks> jpegBlocks() const override;
    const TiffPage* tiffPage() const override { return this; }

    TiffReader& reader() const { return *m_reader; }
    const OpenTiffFile& document() const { return m_reader->document(); }
    TiffMessages& messages() const { return m_reader->messages(); }
    int index() const { return m_index; }
    const PageTreatment& treatment() const { return m_treatment; }

    /// Throws std::runtime_error when the page's directory cannot be read or is not supported.
    const TiffPageTags& tags() const;

    /// What the treatment does to this page; throws in the same way.
    const PageChange& change() const;

    /// Gives back the memory of tags() and properties(), and ends the passes over the page. The
    /// tags are read again when asked for.
    void forgetTags() const { m_description.reset(); }

    /// The handle, for reading tags: see TiffReader::load.
    tiff* load() const { return m_reader->load(m_index); }

    /// The handle for decoding from the start (see TiffReader::restart) in strips as the tags say;
    /// with a warning where these were guessed. Throws std::runtime_error.
    tiff* restart() const;

    /// The page's directory, valid until another page of the reader is asked for.
    const TiffDirectory& directory() const { return m_reader->directory(m_index); }

    /// As checkEncodedSize.
    void checkSize() const;

private:
    struct Description
    {
        TiffPageTags tags;
        PageChange change;
        PageProperties properties;
    };
    const Description& description() const;
    QString resolutionFault() const;

    std::shared_ptr<TiffReader> m_reader;
    int m_index;
    PageTreatment m_treatment;
    mutable std::unique_ptr<const Description> m_description; ///< read when first asked for
};

} // namespace pagestack
