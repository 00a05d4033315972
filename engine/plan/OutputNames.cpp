#include "engine/plan/OutputNames.h"

#include "engine/plan/ChosenPages.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    int pagesOf(const OutputFile& output)
    {
        int pages = 0;
        for (const std::shared_ptr<FileItem>& item : output.fileItems)
            pages += item->pages();
        return pages;
    }

    QString folderName(const QString& folder)
    {
        return folder == u"/" ? u"root"_s : lastPathComponent(folder);
    }

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
    , m_pattern(m_options.namePattern.isEmpty() ? NamePattern::usual() : m_options.namePattern)
    , m_namesFolders(m_pattern.has(u"folder") || m_pattern.has(u"parent"))
{
}

QList<OutputFile> OutputNames::completed(QList<OutputFile> outputs) const
{
    if (!outputs.isEmpty() && outputs.constFirst().isNamed)
        return outputs; // as all of a run are
    if (m_options.mirrorsFolders && !m_settings.outputFolderPath().isEmpty())
        mirrorFolders(outputs);
    int running = 1;
    for (OutputFile& output : outputs) {
        output.pages.clear();
        for (const std::shared_ptr<FileItem>& item : std::as_const(output.fileItems))
            output.pages += chosenPages(*item, m_options);
        output.firstRunning = running;
        const auto pages = static_cast<int>(output.pages.size());
        running += isKeptTogether(m_settings) ? std::min(pages, 1) : pages;
    }
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
    const QString extension = page == 0 ? u".tiff"_s : fileExtension(m_settings.outputType());
    if (extension.isEmpty())
        return QString(baseName(output.filename) + m_settings.separator()).replace(u':', u'-');
    const auto place = std::ranges::lower_bound(output.pages, page) - output.pages.begin();
    const int running = output.firstRunning + static_cast<int>(place);
    return stem(output.filename, page, pagesOf(output), running) + numberText(output.number)
        + extension;
}

QString OutputNames::stem(const QString& source, int page, int pages, int running) const
{
    if (page == 0 && m_options.namePattern.isEmpty())
        return baseName(source); // with every ":"
    const QString folder = m_namesFolders ? folderPart(source) : QString();
    const auto widest = static_cast<int>(QString::number(pages).size());
    return m_pattern.filled({ .stem = baseName(source),
                              .separator = m_settings.separator(),
                              .folder = m_namesFolders ? folderName(folder) : QString(),
                              .parent = m_namesFolders ? folderName(folderPart(folder)) : QString(),
                              .page = page,
                              .pages = pages,
                              .running = running,
                              .digits = m_options.digits > 0 ? m_options.digits : widest });
}

QString OutputNames::path(const OutputFile& output, int page) const
{
    return joinedPath(folder(output), name(output, page));
}

QString exampleName(const ConversionOptions& options)
{
    Settings settings(nullptr);
    applyTo(settings, options);
    const OutputNames names(settings, options.run);
    const bool isTogether = isKeptTogether(settings);
    const QString stem = names.stem(u"/archive/box/scan.tif"_s, isTogether ? 0 : 1, 12, 1);
    if (stem.isEmpty() || stem == u"." || stem == u"..")
        throw OptionError(
            u"name '%1' would be empty, '.' or '..'; {stem} or {n} make it a name"_s.arg(
                options.run.namePattern));
    return stem + fileExtension(settings.outputType());
}

bool isKeptTogether(const Settings& settings)
{
    return settings.outputType() == static_cast<int>(OutputType::Tiff)
        && !settings.isSplitTIFFIntoSinglePages();
}

} // namespace pagestack
