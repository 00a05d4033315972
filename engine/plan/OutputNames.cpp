#include "engine/plan/OutputNames.h"

#include "engine/plan/OutputFile.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString withoutTrailingSlashes(QString path)
    {
        while (path.size() > 1 && path.endsWith(u'/'))
            path.chop(1);
        return path;
    }

    QString numberText(int number) { return number > 0 ? u"-%1"_s.arg(number) : QString(); }

    /// A name that starts with its only dot is a hidden file without extension, not a bare
    /// extension.
    QString withoutLastExtension(const QString& name)
    {
        const qsizetype dot = name.lastIndexOf(u'.');
        return dot > 0 ? name.left(dot) : name;
    }

} // namespace

QString lastPathComponent(const QString& path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    return trimmed == u"/" ? trimmed : trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
}

QString folderPart(const QString& path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    const qsizetype slash = trimmed.lastIndexOf(u'/');
    if (slash < 0)
        return u""_s;
    return slash == 0 ? u"/"_s : withoutTrailingSlashes(trimmed.left(slash));
}

QString joinedPath(const QString& folder, const QString& name)
{
    if (folder.isEmpty())
        return name;
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

QString outputFolder(const QString& sourcePath, const Settings& settings)
{
    const QString chosen = settings.outputFolderPath();
    return chosen.isEmpty() ? folderPart(sourcePath) : chosen;
}

QString pageOutputName(const QString& sourcePath, const Settings& settings, int page, int number)
{
    QString prefix = withoutLastExtension(lastPathComponent(sourcePath)) + settings.separator();
    prefix.replace(u':', u'-');
    const QString extension = fileExtension(settings.outputType());
    return extension.isEmpty() ? prefix
                               : prefix + QString::number(page) + numberText(number) + extension;
}

QString keptTogetherOutputName(const QString& sourcePath, int number)
{
    return withoutLastExtension(lastPathComponent(sourcePath)) + numberText(number) + u".tiff"_s;
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
