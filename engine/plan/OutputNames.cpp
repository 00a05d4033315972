#include "engine/plan/OutputNames.h"

#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString numberText(int number) { return number > 0 ? u"-%1"_s.arg(number) : QString(); }

    /// The folder that is told apart from others by what is below it: that by which the source was
    /// found, else its own.
    QString baseFolder(const OutputFile& output)
    {
        const bool isFound
            = !output.fileItems.isEmpty() && !output.fileItems.constFirst()->foundIn().isEmpty();
        return isFound ? output.fileItems.constFirst()->foundIn() : folderPart(output.filename);
    }

    /// Two sources of different folders never get the same one, and ".." none at all.
    void mirrorFolders(QList<OutputFile>& outputs)
    {
        QString root;
        for (const OutputFile& output : std::as_const(outputs))
            root = root.isNull() ? baseFolder(output) : commonFolder(root, baseFolder(output));
        for (OutputFile& output : outputs) {
            output.subfolder = pathBelow(folderPart(output.filename), root);
            if (output.subfolder.split(u'/').contains(u".."_s))
                output.subfolder.clear(); // no such file is there
        }
    }

} // namespace

OutputNames::OutputNames(const Settings& settings, RunOptions options)
    : m_settings(settings)
    , m_options(std::move(options))
{
}

QList<OutputFile> OutputNames::completed(QList<OutputFile> outputs) const
{
    if (m_options.mirrorsFolders && !m_settings.outputFolderPath().isEmpty())
        mirrorFolders(outputs);
    return outputs;
}

QString OutputNames::folder(const OutputFile& output) const
{
    const QString chosen = m_settings.outputFolderPath();
    if (chosen.isEmpty())
        return folderPart(output.filename);
    return output.subfolder.isEmpty() ? chosen : joinedPath(chosen, output.subfolder);
}

QString OutputNames::name(const OutputFile& output, int page) const
{
    return page == 0 ? baseName(output.filename) + numberText(output.number) + u".tiff"_s
                     : pageName(output, page);
}

QString OutputNames::pageName(const OutputFile& output, int page) const
{
    QString prefix = baseName(output.filename) + m_settings.separator();
    prefix.replace(u':', u'-');
    const QString extension = fileExtension(m_settings.outputType());
    return extension.isEmpty()
        ? prefix
        : prefix + QString::number(page) + numberText(output.number) + extension;
}

QString OutputNames::path(const OutputFile& output, int page) const
{
    return joinedPath(folder(output), name(output, page));
}

bool isKeptTogether(const Settings& settings)
{
    return settings.outputType() == static_cast<int>(OutputType::Tiff)
        && !settings.isSplitTIFFIntoSinglePages();
}

} // namespace pagestack
