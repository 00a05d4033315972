#include "filelist/ShownDates.h"

#include "engine/preview/PageFacts.h"

#include <QLocale>

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr qint64 pauseOfDatesMs = 1000;
    constexpr qint64 pauseOfPixelsMs = 10000;

    QString dpiText(const PageExtent& extent)
    {
        constexpr double cmAnInch = 2.54;
        const Resolution& resolution = extent.resolution;
        if (resolution.x <= 0 || resolution.y <= 0 || resolution.unit == ResolutionUnit::None)
            return {};
        const double scale = resolution.unit == ResolutionUnit::Centimeter ? cmAnInch : 1;
        const int dpiX = qRound(resolution.x * scale);
        const int dpiY = qRound(resolution.y * scale);
        return dpiX == dpiY ? ShownPixels::tr(", %1 dpi").arg(dpiX)
                            : ShownPixels::tr(", %1 x %2 dpi").arg(dpiX).arg(dpiY);
    }

    QString pixelsText(const FileItem& item)
    try {
        const QLocale locale;
        const PageExtent extent = extentOf(item.localFile());
        return ShownPixels::tr("%1 x %2").arg(locale.toString(extent.sizePx.width()),
                                              locale.toString(extent.sizePx.height()))
            + dpiText(extent);
    } catch (const std::exception&) {
        return {}; // what is wrong with the file is told by its status
    }

} // namespace

ShownDates::ShownDates(ReadDates read)
    : m_looks(std::move(read), pauseOfDatesMs, [this] { emit changed(); })
{
}

ShownPixels::ShownPixels()
    : m_looks(&pixelsText, pauseOfPixelsMs, [this] { emit changed(); })
{
}

} // namespace pagestack
