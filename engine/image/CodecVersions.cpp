#include "engine/image/CodecVersions.h"

#include "engine/image/PdfDocument.h"

#include <cstdio>
#include <gif_lib.h>
#include <jpeglib.h>
#include <lcms2.h>
#include <libdeflate.h>
#include <png.h>
#include <tiffio.h>

#include <cstddef>
#include <nettle/version.h>

namespace pagestack {

using namespace Qt::StringLiterals;

#define PAGESTACK_TEXT(value) #value
#define PAGESTACK_VALUE_TEXT(macro) PAGESTACK_TEXT(macro)

QStringList codecVersions()
{
    // libtiff: "LIBTIFF, Version 4.5.0" and lines on its authors.
    const QString tiff
        = QString::fromLatin1(TIFFGetVersion()).section(u'\n', 0, 0).section(u' ', -1);
    const int lcms = cmsGetEncodedCMMversion();
    QStringList versions {
        u"libtiff "_s + tiff,
        u"libjpeg-turbo " PAGESTACK_VALUE_TEXT(LIBJPEG_TURBO_VERSION) ""_s,
        u"libpng "_s + QString::fromLatin1(png_get_libpng_ver(nullptr)),
        u"giflib %1.%2.%3"_s.arg(GIFLIB_MAJOR).arg(GIFLIB_MINOR).arg(GIFLIB_RELEASE),
        u"libdeflate " LIBDEFLATE_VERSION_STRING ""_s,
        u"nettle " PAGESTACK_VALUE_TEXT(NETTLE_VERSION_MAJOR) "." PAGESTACK_VALUE_TEXT(
            NETTLE_VERSION_MINOR) ""_s,
        u"lcms2 %1.%2"_s.arg(lcms / 1000).arg(lcms % 1000 / 10),
    };
    if (const QString pdf = pdfLibrary(); !pdf.isEmpty())
        versions.append(pdf);
    return versions;
}

} // namespace pagestack
