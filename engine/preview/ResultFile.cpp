#include "engine/preview/ResultFile.h"

#include "engine/files/PosixFile.h"
#include "engine/files/StagedFile.h"
#include "engine/image/PageEncoding.h"
#include "engine/image/pixels/RowConversions.h"
#include "engine/image/verify/ImageReaders.h"
#include "engine/preview/Reduction.h"
#include "engine/settings/OutputCodes.h"

#include <stdexcept>
#include <unistd.h>

namespace pagestack {

namespace {

    /// Reads for any thread, by the offsets alone.
    class DescribedFile : public ByteFile
    {
    public:
        explicit DescribedFile(StagedFile& made)
            : m_file(made.openForReading())
            , m_size(made.size())
        {
        }
        ~DescribedFile() override { ::close(m_file); }
        DescribedFile(const DescribedFile&) = delete;
        DescribedFile& operator=(const DescribedFile&) = delete;

        std::uint64_t size() const override { return m_size; }
        void writeAt(std::uint64_t /*offset*/, std::span<const std::uint8_t> /*bytes*/) override
        {
            throw std::logic_error("the file is open for reading");
        }
        void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) override
        {
            readFully(m_file, offset, bytes);
        }

    private:
        int m_file;
        std::uint64_t m_size;
    };

} // namespace

ResultFile::ResultFile(OutputType type, const QString& name, StagedFile& made)
    : m_type(type)
{
    if (type == OutputType::Tiff)
        m_tiff = std::make_shared<const OpenTiffFile>(name, made);
    else
        m_bytes = std::make_unique<DescribedFile>(made);
}

PagePicture ResultFile::picture(const QSize& size, const QRect& region, const QSize& most,
                                const IsStopped& isStopped) const
{
    if (m_tiff) {
        PagePicture picture = pictureOf(m_tiff, { 0, region, most }, isStopped);
        picture.hasParts = true; // even where they take long
        return picture;
    }
    OpenImage image = pageEncoding(m_type).open(*m_bytes);
    if (size != QSize(image.rows->widthPx(), image.rows->heightPx()))
        throw std::runtime_error("its pixels are not those of the page");
    const auto rows = adaptRows(std::move(image.rows), {});
    PagePicture picture;
    picture.pageSize = size;
    picture.region = regionInPage(region, size);
    const Reduction reduction { picture.region, reducedSize(picture.region.size(), most) };
    std::vector<std::uint8_t> samples;
    samples.reserve(static_cast<std::size_t>(rows->layout().rowBytes(reduction.to.width()))
                    * static_cast<unsigned>(reduction.to.height()));
    reduction.reduce(*rows, 0, 0, reduction.to.height(), isStopped,
                     [&samples](const std::vector<std::uint8_t>& row) {
                         samples.insert(samples.end(), row.begin(), row.end());
                     });
    PageProperties properties;
    properties.iccProfile = image.iccProfile;
    const Bitmap stored(reduction.to.width(), reduction.to.height(), rows->layout(),
                        std::move(samples));
    finishPicture(picture, stored, properties);
    return picture;
}

} // namespace pagestack
