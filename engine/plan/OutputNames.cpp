#include "engine/plan/OutputNames.h"

#include "engine/plan/OutputFile.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString numberText(int number) { return number > 0 ? u"-%1"_s.arg(number) : QString(); }

} // namespace

QString outputFolder(const QString& sourcePath, const Settings& settings)
{
    const QString chosen = settings.outputFolderPath();
    return chosen.isEmpty() ? folderPart(sourcePath) : chosen;
}

QString pageOutputName(const QString& sourcePath, const Settings& settings, int page, int number)
{
    QString prefix = baseName(sourcePath) + settings.separator();
    prefix.replace(u':', u'-');
    const QString extension = fileExtension(settings.outputType());
    return extension.isEmpty() ? prefix
                               : prefix + QString::number(page) + numberText(number) + extension;
}

QString keptTogetherOutputName(const QString& sourcePath, int number)
{
    return baseName(sourcePath) + numberText(number) + u".tiff"_s;
}

QString outputName(const OutputFile& output, const Settings& settings, int page)
{
    return page == 0 ? keptTogetherOutputName(output.filename, output.number)
                     : pageOutputName(output.filename, settings, page, output.number);
}

bool isKeptTogether(const Settings& settings)
{
    return settings.outputType() == static_cast<int>(OutputType::Tiff)
        && !settings.isSplitTIFFIntoSinglePages();
}

} // namespace pagestack
