#include "tests/support/ImageReaders.h"

#include "tests/support/Bytes.h"

#include <cstdio>
#include <gif_lib.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

#include <cmath>
#include <memory>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    [[noreturn]] void refuse(png_structp, const char* reason) { qFatal("libpng: %s", reason); }

    Picture readPng(std::FILE* file)
    {
        Picture picture;
        std::fseek(file, 24, SEEK_SET); // of the header; libpng tells what it has made of them
        picture.bits = std::fgetc(file);
        std::rewind(file);
        png_structp codec = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, refuse, nullptr);
        png_infop info = png_create_info_struct(codec);
        png_init_io(codec, file);
        // A byte a sample below 8 bits.
        png_read_png(codec, info, PNG_TRANSFORM_PACKING, nullptr);
        picture.width = static_cast<int>(png_get_image_width(codec, info));
        picture.height = static_cast<int>(png_get_image_height(codec, info));
        picture.channels = png_get_channels(codec, info);
        png_uint_32 x = 0;
        png_uint_32 y = 0;
        int unit = -1;
        png_get_pHYs(codec, info, &x, &y, &unit);
        picture.density = { unit, static_cast<int>(x), static_cast<int>(y) };
        png_charp name = nullptr;
        png_bytep profile = nullptr;
        png_uint_32 profileBytes = 0;
        int method = 0;
        if (png_get_iCCP(codec, info, &name, &method, &profile, &profileBytes) != 0)
            picture.iccProfile = QByteArray(reinterpret_cast<char*>(profile), profileBytes);
        png_bytepp rows = png_get_rows(codec, info);
        const int samples = picture.width * picture.channels;
        for (int i = 0; i < picture.height * samples; ++i) {
            const png_byte* row = rows[i / samples];
            const int at = i % samples;
            picture.samples.push_back(picture.bits == 16 ? row[2 * at] << 8 | row[2 * at + 1]
                                                         : row[at]);
        }
        png_destroy_read_struct(&codec, &info, nullptr);
        return picture;
    }

    Picture readJpeg(std::FILE* file)
    {
        Picture picture;
        jpeg_decompress_struct codec = {};
        jpeg_error_mgr errors = {};
        codec.err = jpeg_std_error(&errors); // an error ends the program
        jpeg_create_decompress(&codec);
        jpeg_stdio_src(&codec, file);
        jpeg_save_markers(&codec, JPEG_APP0 + 2, 0xFFFF);
        jpeg_read_header(&codec, TRUE);
        JOCTET* profile = nullptr;
        unsigned profileBytes = 0;
        if (jpeg_read_icc_profile(&codec, &profile, &profileBytes) != 0)
            picture.iccProfile
                = QByteArray(reinterpret_cast<char*>(profile), qsizetype { profileBytes });
        std::free(profile);
        picture.density = { codec.saw_JFIF_marker != 0 ? codec.density_unit : -1, codec.X_density,
                            codec.Y_density };
        picture.sampling = { codec.comp_info[0].h_samp_factor, codec.comp_info[0].v_samp_factor };
        picture.bits = 8;
        jpeg_start_decompress(&codec);
        picture.channels = codec.output_components;
        std::vector<JSAMPLE> row(std::size_t { codec.output_width }
                                 * static_cast<unsigned>(picture.channels));
        while (codec.output_scanline < codec.output_height) {
            JSAMPROW line = row.data();
            jpeg_read_scanlines(&codec, &line, 1);
            picture.samples.insert(picture.samples.end(), row.begin(), row.end());
        }
        jpeg_finish_decompress(&codec);
        if (errors.num_warnings == 0) {
            picture.width = static_cast<int>(codec.output_width);
            picture.height = static_cast<int>(codec.output_height);
        }
        jpeg_destroy_decompress(&codec);
        return picture;
    }

    Picture readGif(const QString& path)
    {
        Picture picture;
        int error = 0;
        GifFileType* gif = DGifOpenFileName(QFile::encodeName(path).constData(), &error);
        if (gif == nullptr)
            return picture;
        if (DGifSlurp(gif) == GIF_OK && gif->ImageCount == 1 && gif->SColorMap != nullptr) {
            picture.width = gif->SavedImages[0].ImageDesc.Width;
            picture.height = gif->SavedImages[0].ImageDesc.Height;
            picture.channels = 1;
            picture.bits = 8;
            const GifByteType* raster = gif->SavedImages[0].RasterBits;
            picture.samples.assign(raster, raster + picture.width * picture.height);
            for (int i = 0; i < gif->SColorMap->ColorCount; ++i) {
                const GifColorType& color = gif->SColorMap->Colors[i];
                picture.palette.push_back({ color.Red, color.Green, color.Blue });
            }
            GraphicsControlBlock control = {};
            if (DGifSavedExtensionToGCB(gif, 0, &control) == GIF_OK)
                picture.transparentIndex = control.TransparentColor;
        }
        DGifCloseFile(gif, &error);
        return picture;
    }

    /// The tags of the directory at `offset`, read without libtiff.
    std::map<int, QList<double>> tagsOf(const QByteArray& file, std::uint64_t offset)
    {
        const auto number = [&](std::uint64_t at, unsigned size) {
            std::uint64_t value = 0;
            for (unsigned i = 0; i < size; ++i)
                value = value << 8U | span(file)[at + (file.startsWith('M') ? i : size - 1 - i)];
            return value;
        };
        const unsigned wide = number(2, 2) == 43 ? 8 : 4;
        const unsigned head = wide == 8 ? 8 : 2;
        std::map<int, QList<double>> tags;
        for (std::uint64_t i = 0; i < number(offset, head); ++i) {
            const std::uint64_t entry = offset + head + i * (4 + 2 * wide);
            const auto type = static_cast<TIFFDataType>(number(entry + 2, 2));
            const auto size = static_cast<unsigned>(TIFFDataWidth(type));
            const std::uint64_t count = number(entry + 4, wide);
            const std::uint64_t place = entry + 4 + wide;
            const std::uint64_t at = count * size > wide ? number(place, wide) : place;
            for (std::uint64_t k = 0; k < count; ++k)
                tags[static_cast<int>(number(entry, 2))].append(
                    static_cast<double>(number(at + k * size, size)));
        }
        return tags;
    }

    void readPixels(TIFF* tiff, TiffPicture& page)
    {
        if (page.number(TIFFTAG_COMPRESSION) == COMPRESSION_JPEG)
            TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        const bool isTiled = TIFFIsTiled(tiff) != 0;
        const std::uint32_t pieces = isTiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
        QByteArray piece(isTiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff), '\0');
        for (std::uint32_t i = 0; i < pieces; ++i) {
            QByteArray raw(static_cast<qsizetype>(TIFFGetStrileByteCount(tiff, i)), '\0');
            (isTiled ? TIFFReadRawTile : TIFFReadRawStrip)(tiff, i, raw.data(), raw.size());
            page.encoded += raw;
            const tmsize_t got = (isTiled ? TIFFReadEncodedTile : TIFFReadEncodedStrip)(
                tiff, i, piece.data(), piece.size());
            if (got < 0) {
                page.samples.clear();
                return;
            }
            page.samples += piece.left(got);
        }
    }

} // namespace

int Picture::colorAt(int x, int y, int c) const
{
    if (palette.empty())
        return at(x, y, channels < 3 ? 0 : c);
    return palette.at(static_cast<std::size_t>(at(x, y, 0))).at(static_cast<std::size_t>(c));
}

Picture readPicture(const QString& path)
{
    if (path.endsWith(u".gif"_s))
        return readGif(path);
    std::FILE* file = std::fopen(QFile::encodeName(path).constData(), "rb");
    if (file == nullptr)
        return {};
    const Picture picture = path.endsWith(u".png"_s) ? readPng(file) : readJpeg(file);
    std::fclose(file);
    return picture;
}

QString difference(const Picture& picture, std::array<int, 4> widthHeightChannelsBits,
                   const std::function<double(int, int, int)>& expected, double tolerance, int step)
{
    const std::array shape { picture.width, picture.height, picture.channels, picture.bits };
    if (shape != widthHeightChannelsBits)
        return QString::asprintf("it is %d x %d pixels of %d samples of %d bits", shape[0],
                                 shape[1], shape[2], shape[3]);
    for (int i = 0; i < shape[0] * shape[1]; i += step)
        for (int c = 0; c < shape[2]; ++c) {
            const int x = i % shape[0];
            const int y = i / shape[0];
            const double wanted = expected(x, y, c);
            if (!(std::abs(picture.at(x, y, c) - wanted) <= tolerance))
                return QString::asprintf("x %d, y %d, channel %d: %d instead of %g", x, y, c,
                                         picture.at(x, y, c), wanted);
        }
    return {};
}

QList<TiffPicture> readTiff(const QString& path)
{
    QList<TiffPicture> pages;
    // A handle a page: JPEG pages leave traces behind in libtiff 4.5.
    for (tdir_t i = 0; QFile::exists(path); ++i) {
        const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(
            TIFFOpen(QFile::encodeName(path).constData(), "r"), TIFFClose);
        if (!tiff || TIFFNumberOfDirectories(tiff.get()) <= i
            || TIFFSetDirectory(tiff.get(), i) != 1)
            break;
        pages.append(TiffPicture());
        pages.back().tags = tagsOf(bytesOf(path), TIFFCurrentDirOffset(tiff.get()));
        readPixels(tiff.get(), pages.back());
    }
    return pages;
}

} // namespace pagestack
