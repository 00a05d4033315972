#include "cli/Preflight.h"

#include "cli/LogCopy.h"
#include "cli/Options.h"
#include "engine/files/StagedFile.h"
#include "engine/support/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qsizetype shownFindings = 10;

} // namespace

QList<ReportFile> reportFiles(const Options& options)
{
    QList<ReportFile> files;
    const auto add = [&](const QString& what, const QString& name) {
        if (name.isEmpty() || LogCopy::isStandardOutput(name))
            return;
        try {
            files.append({ what, name, QFile::decodeName(StagedFile::resolvedTarget(name)) });
        } catch (const std::runtime_error&) {
            // Links in a circle: the writer will say so.
            files.append({ what, name, absolutePath(name) });
        }
    };
    add(u"log"_s, options.logFile);
    add(u"report"_s, options.reportFile);
    add(u"record"_s, options.recordFile);
    add(u"state"_s, options.stateFile);
    add(u"list of failures"_s, options.failedFile);
    return files;
}

QString checkedOutputFolder(const QString& folder)
{
    QString path = absolutePath(folder);
    const QFileInfo info(path);
    if (info.exists() && !info.isDir())
        throw OutputRefused(u"output folder %1 is no folder"_s.arg(folder));
    if (info.exists() && !info.isWritable())
        throw OutputRefused(u"output folder %1 is not writable"_s.arg(folder));
    const QFileInfo parent(folderPart(path));
    if (!info.exists() && !parent.isDir())
        throw OutputRefused(u"output folder %1 and its parent are missing"_s.arg(folder));
    if (!info.exists() && !parent.isWritable())
        throw OutputRefused(u"output folder %1 cannot be made"_s.arg(folder));
    return path;
}

void makeOutputFolder(const QString& path)
{
    // Another part of the run may make it meanwhile.
    if (!QFileInfo(path).isDir() && !QDir().mkdir(path) && !QFileInfo(path).isDir())
        throw OutputRefused(u"output folder %1 cannot be made"_s.arg(path));
}

void Findings::add(const QString& text)
{
    if (m_count++ < shownFindings)
        m_first.append(text);
}

QStringList Findings::lines() const
{
    if (m_count <= shownFindings)
        return m_first;
    return m_first + QStringList { u"and %1 more"_s.arg(m_count - shownFindings) };
}

TargetFindings findingsOf(const RunPlan& plan, const QList<Source>& sources, const Options& options,
                          const QSet<QString>& own)
{
    const auto shown = [&](const PlannedTarget& target) {
        return shownTarget(sources.at(target.output), plan.outputs().at(target.output),
                           plan.name(target), options);
    };
    TargetFindings found;
    const QList<ReportFile> reports = reportFiles(options);
    if (options.outputFolder.isEmpty() || options.conversion.run.mirrorsFolders)
        for (const QString& fault : plan.folderFaults())
            found.refusals.add(fault);
    for (const RunPlan::Shared& shared : plan.shared()) {
        const QString second = sources.at(shared.target.output).shown;
        if (shared.first == shared.target.output && !options.conversion.run.namePattern.isEmpty())
            found.refusals.add(
                u"%1 is wanted by several pages of %2; a --name with {page} or {n} tells them apart"_s
                    .arg(shown(shared.target), second));
        else
            found.refusals.add(u"%1 is wanted by %2 and by %3"_s.arg(
                shown(shared.target),
                shared.first < 0 ? u"the "_s + reports.at(RunPlan::otherFile - shared.first).what
                                 : sources.at(shared.first).shown,
                second));
    }
    if (options.onExists == OnExists::Error)
        for (const PlannedTarget& target : plan.existing())
            if (!own.contains(plan.names().path(plan.outputs().at(target.output), target.page)))
                found.refusals.add(u"%1 exists already"_s.arg(shown(target)));
    if (options.onExists == OnExists::Overwrite)
        for (const PlannedTarget& target : plan.writeProtected())
            found.warnings.add(u"%1 is write-protected and is kept as it is"_s.arg(shown(target)));
    if (options.onExists == OnExists::Overwrite)
        for (const RunPlan::Replaced& replaced : plan.replacedSources())
            found.warnings.add(u"%1 is a source and is replaced by output of %2"_s.arg(
                sources.at(replaced.source).shown, sources.at(replaced.target.output).shown));
    return found;
}

QString shownTarget(const Source& source, const OutputFile& output, const QString& name,
                    const Options& options)
{
    if (options.outputFolder.isEmpty())
        return joinedPath(folderPart(source.shown), name);
    return joinedPath(options.outputFolder, joinedPath(output.subfolder, name));
}

} // namespace pagestack
