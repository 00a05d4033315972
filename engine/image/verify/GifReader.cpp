#include "engine/image/verify/ImageReaders.h"

#include <gif_lib.h>

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

        ImageProof read()
        {
            std::unique_ptr<ProofMaker> maker;
            GifRecordType kind = UNDEFINED_RECORD_TYPE;
            while (kind != TERMINATE_RECORD_TYPE) {
                check(DGifGetRecordType(m_gif.get(), &kind));
                if (kind == EXTENSION_RECORD_TYPE) {
                    readExtension();
                } else if (kind == IMAGE_DESC_RECORD_TYPE) {
                    if (maker)
                        throw std::runtime_error("it holds several images");
                    maker = readImage();
                }
            }
            if (!maker)
                throw std::runtime_error("it holds no image");
            m_input->file.checkEnd();
            return maker->proof();
        }

    private:
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

        std::unique_ptr<ProofMaker> readImage()
        {
            check(DGifGetImageDesc(m_gif.get()));
            const GifImageDesc& image = m_gif->Image;
            const ColorMapObject* map
                = image.ColorMap != nullptr ? image.ColorMap : m_gif->SColorMap;
            if (map == nullptr || image.Interlace || image.Left != 0 || image.Top != 0
                || image.Width != m_gif->SWidth || image.Height != m_gif->SHeight)
                throw std::runtime_error("its header is damaged");
            PixelLayout layout;
            layout.model = ColorModel::Rgb;
            layout.alpha = AlphaKind::Straight;
            auto maker = std::make_unique<ProofMaker>(image.Width, layout, KeptPixels::Colors);
            std::vector<GifPixelType> indexes(static_cast<std::size_t>(image.Width));
            std::vector<std::uint8_t> row(indexes.size() * 4);
            for (int y = 0; y < image.Height; ++y) {
                check(DGifGetLine(m_gif.get(), indexes.data(), image.Width));
                auto* to = row.data();
                for (const GifPixelType index : indexes) {
                    if (index >= map->ColorCount)
                        throw std::runtime_error("its pixels have no colour");
                    const GifColorType& color = map->Colors[index];
                    *to++ = color.Red;
                    *to++ = color.Green;
                    *to++ = color.Blue;
                    *to++ = index == m_transparent ? 0 : 255;
                }
                maker->add(row.data());
            }
            return maker;
        }

        std::unique_ptr<GifInput> m_input;
        std::unique_ptr<GifFileType, GifCloser> m_gif;
        int m_transparent = NO_TRANSPARENT_COLOR;
    };

} // namespace

ImageProof readGif(ByteFile& file) { return GifPages(file).read(); }

} // namespace pagestack
