#include "engine/image/verify/ImageReaders.h"

#include <gif_lib.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

namespace pagestack {

namespace {

    struct GifCloser
    {
        void operator()(GifFileType* gif) const noexcept { DGifCloseFile(gif, nullptr); }
    };

    /// What giflib reads from; its reason for reading no further is kept.
    struct GifInput
    {
        FileSequence file;
        std::exception_ptr failure {};
    };

    int readInput(GifFileType* gif, GifByteType* to, int count)
    {
        auto& input = *static_cast<GifInput*>(gif->UserData);
        try {
            return static_cast<int>(input.file.read({ to, static_cast<std::size_t>(count) }));
        } catch (const std::exception&) {
            input.failure = std::current_exception();
            return 0;
        }
    }

    class GifPages
    {
    public:
        explicit GifPages(ByteFile& file)
            : m_input(new GifInput { FileSequence(file) })
        {
            int error = 0;
            m_gif.reset(DGifOpen(m_input.get(), readInput, &error));
            if (!m_gif)
                fail(error);
        }

        /// Goes on to the image.
        void begin()
        {
            if (!findImage())
                throw std::runtime_error("it holds no image");
            check(DGifGetImageDesc(m_gif.get()));
            const GifImageDesc& image = m_gif->Image;
            m_colors = image.ColorMap != nullptr ? image.ColorMap : m_gif->SColorMap;
            if (m_colors == nullptr || image.Interlace || image.Left != 0 || image.Top != 0
                || image.Width < 1 || image.Width != m_gif->SWidth
                || image.Height != m_gif->SHeight)
                throw std::runtime_error("its header is damaged");
            m_indexes.resize(static_cast<std::size_t>(image.Width));
        }

        int widthPx() const { return m_gif->Image.Width; }
        int heightPx() const { return m_gif->Image.Height; }

        /// Of indexes; of colours where one is transparent.
        PixelLayout layout() const
        {
            PixelLayout layout;
            layout.model = m_transparent < 0 ? ColorModel::Palette : ColorModel::Rgb;
            layout.alpha = m_transparent < 0 ? AlphaKind::None : AlphaKind::Straight;
            if (m_transparent < 0)
                layout.palette.resize(256);
            for (std::size_t i = 0; i < layout.palette.size(); ++i)
                layout.palette[i] = colorOf(static_cast<int>(i));
            return layout;
        }

        /// The next row, which is valid until the call after it.
        const std::uint8_t* readRow()
        {
            check(DGifGetLine(m_gif.get(), m_indexes.data(), widthPx()));
            if (*std::ranges::max_element(m_indexes) >= m_colors->ColorCount)
                throw std::runtime_error("its pixels have no colour");
            if (m_transparent < 0)
                return m_indexes.data();
            m_row.clear();
            for (const GifPixelType index : m_indexes) {
                const RgbColor color = colorOf(index);
                m_row.insert(m_row.end(), color.begin(), color.end());
                m_row.push_back(index == m_transparent ? 0 : 255);
            }
            return m_row.data();
        }

        void finish()
        {
            if (findImage())
                throw std::runtime_error("it holds several images");
            m_input->file.checkEnd();
        }

    private:
        /// Black where there is none.
        RgbColor colorOf(int index) const
        {
            const GifColorType color
                = index < m_colors->ColorCount ? m_colors->Colors[index] : GifColorType {};
            return { color.Red, color.Green, color.Blue };
        }

        void check(int result)
        {
            if (result != GIF_OK)
                fail(m_gif->Error);
        }

        [[noreturn]] void fail(int error)
        {
            if (m_input->failure)
                std::rethrow_exception(m_input->failure);
            const char* text = GifErrorString(error);
            throw std::runtime_error(std::string("giflib says: ")
                                     + (text == nullptr ? "unknown error" : text));
        }

        /// False when the file is at its end.
        bool findImage()
        {
            GifRecordType kind = UNDEFINED_RECORD_TYPE;
            while (kind != TERMINATE_RECORD_TYPE) {
                check(DGifGetRecordType(m_gif.get(), &kind));
                if (kind == IMAGE_DESC_RECORD_TYPE)
                    return true;
                if (kind == EXTENSION_RECORD_TYPE)
                    readExtension();
            }
            return false;
        }

        void readExtension()
        {
            int code = 0;
            GifByteType* block = nullptr;
            check(DGifGetExtension(m_gif.get(), &code, &block));
            while (block != nullptr) {
                GraphicsControlBlock control {};
                if (code == GRAPHICS_EXT_FUNC_CODE
                    && DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
                    m_transparent = control.TransparentColor;
                check(DGifGetExtensionNext(m_gif.get(), &block));
            }
        }

        std::unique_ptr<GifInput> m_input;
        std::unique_ptr<GifFileType, GifCloser> m_gif;
        const ColorMapObject* m_colors = nullptr;
        std::vector<GifPixelType> m_indexes; ///< of a row
        std::vector<std::uint8_t> m_row; ///< RGB and alpha
        int m_transparent = NO_TRANSPARENT_COLOR;
    };

    /// A row each band.
    class GifRows : public RowSource
    {
    public:
        explicit GifRows(std::unique_ptr<GifPages> pages)
            : RowSource(pages->widthPx(), pages->heightPx(), pages->layout())
            , m_pages(std::move(pages))
        {
        }

        Band nextBand() override
        {
            if (m_read == heightPx()) {
                m_pages->finish();
                return {};
            }
            ++m_read;
            return { m_pages->readRow(), 1, rowBytes() };
        }

    private:
        std::unique_ptr<GifPages> m_pages;
        int m_read = 0;
    };

} // namespace

ImageProof readGif(ByteFile& file) { return readProof(*openGif(file).rows, KeptPixels::Colors); }

OpenImage openGif(ByteFile& file)
{
    auto pages = std::make_unique<GifPages>(file);
    pages->begin();
    return { std::make_unique<GifRows>(std::move(pages)) };
}

} // namespace pagestack
