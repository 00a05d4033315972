#include "engine/plan/ProfileLoss.h"

#include "engine/image/TiffDocument.h"
#include "engine/image/decode/ColorTransform.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"

#include <exception>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    bool losesProfile(const PageImage& image)
    {
        const QByteArray& profile = image.source().properties().iccProfile;
        const TiffPage* page = image.source().tiffPage();
        if (profile.isEmpty() || (page != nullptr && page->tags().isOneBitDeep()))
            return false;
        const bool isGray = profile.mid(16, 4) == "GRAY"; // ICC.1, header
        return profileKind(profile, isGray ? ColorModel::Gray : ColorModel::Rgb)
            == ProfileKind::Other;
    }

} // namespace

QStringList sourcesLosingProfile(const QList<OutputFile>& outputs, const Settings& settings,
                                 const RunOptions& options, const std::function<bool()>& goesOn)
{
    QStringList found;
    const auto type = static_cast<OutputType>(settings.outputType());
    if ((type != OutputType::Bmp && type != OutputType::Gif) || options.treatment.convertsToSrgb
        || options.treatment.bilevel != Bilevel::None)
        return found;
    for (const OutputFile& output : outputs) {
        if (!goesOn())
            break;
        if (output.pages.isEmpty())
            continue;
        try {
            const TiffDocument document(output.filename);
            if (losesProfile(document.page(output.pages.first() - 1)))
                found.append(output.filename);
        } catch (const std::exception&) {
            // It is told when it is its turn.
        }
    }
    return found;
}

QString profileLossText(const QStringList& sources, const Settings& settings)
{
    constexpr qsizetype mostNames = 3;
    QStringList names;
    for (const QString& source : sources.first(std::min(mostNames, sources.size())))
        names.append(lastPathComponent(source));
    if (sources.size() > mostNames)
        names.append(u"..."_s);
    return u"%1 %2 a colour profile other than sRGB, which %3 files cannot hold: %4; --srgb "
           "converts the colours"_s.arg(QString::number(sources.size()),
                                        sources.size() == 1 ? u"source has"_s : u"sources have"_s,
                                        fileExtension(settings.outputType()).mid(1).toUpper(),
                                        names.join(u", "_s));
}

} // namespace pagestack
