#include "mainwindow/preview/PageFactsText.h"

#include "engine/preview/PageFacts.h"

#include <QLocale>
#include <QStringList>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr double cmAnInch = 2.54;

    /// What stands in the facts in words.
    [[maybe_unused]] constexpr const char* words[]
        = { QT_TRANSLATE_NOOP("PageFactsText", "black and white"),
            QT_TRANSLATE_NOOP("PageFactsText", "gray"),
            QT_TRANSLATE_NOOP("PageFactsText", "gray, 0 is white"),
            QT_TRANSLATE_NOOP("PageFactsText", "palette"),
            QT_TRANSLATE_NOOP("PageFactsText", "mask") };

} // namespace

/// "21.0 x 29.7 cm (8.3 x 11.7 inches), 300 dpi"; empty where the resolution is not known.
QString PageFactsText::extent(const PageFacts& facts)
{
    const Resolution& resolution = facts.resolution;
    if (resolution.x <= 0 || resolution.y <= 0 || resolution.unit == ResolutionUnit::None)
        return {};
    const double scale = resolution.unit == ResolutionUnit::Centimeter ? cmAnInch : 1;
    const double dpiX = resolution.x * scale;
    const double dpiY = resolution.y * scale;
    const double wide = facts.sizePx.width() / dpiX;
    const double high = facts.sizePx.height() / dpiY;
    const QLocale locale;
    const auto number = [&](double value) { return locale.toString(value, 'f', 1); };
    const auto dpi = [&](double value) { return locale.toString(value, 'g', 6); };
    const QString size
        = tr("%1 x %2 cm (%3 x %4 inches)")
              .arg(number(wide * cmAnInch), number(high * cmAnInch), number(wide), number(high));
    const QString density = dpi(dpiX) == dpi(dpiY) ? tr("%1 dpi").arg(dpi(dpiX))
                                                   : tr("%1 x %2 dpi").arg(dpi(dpiX), dpi(dpiY));
    return size + u", "_s + density;
}

QString PageFactsText::depth(const PageFacts& facts)
{
    if (facts.bitsPerSample == 1 && facts.samplesPerPixel == 1)
        return tr("1 bit a pixel");
    return facts.samplesPerPixel == 1
        ? tr("%1 bits a pixel").arg(facts.bitsPerSample)
        : tr("%1 samples of %2 bits").arg(facts.samplesPerPixel).arg(facts.bitsPerSample);
}

QString PageFactsText::of(const PageFacts& facts)
{
    const QLocale locale;
    QStringList lines { tr("%1 x %2 pixels")
                            .arg(locale.toString(facts.sizePx.width()),
                                 locale.toString(facts.sizePx.height())) };
    if (const QString size = extent(facts); !size.isEmpty())
        lines.append(size);
    lines.append(tr(facts.color.toUtf8().constData()) + u", "_s + depth(facts));
    lines.append(facts.compression.isEmpty() ? tr("Not compressed")
                                             : tr("Compression: %1").arg(facts.compression));
    if (!facts.profile.isEmpty())
        lines.append(tr("Profile: %1").arg(facts.profile));
    for (const auto& [name, value] : facts.texts)
        lines.append(name + u": "_s + value);
    if (!facts.others.isEmpty())
        lines.append(tr("Also: %1").arg(facts.others.join(u", "_s)));
    return lines.join(u'\n');
}

} // namespace pagestack
