#include "engine/plan/RunPlan.h"

#include "engine/files/FileState.h"
#include "engine/files/StagedFile.h"
#include "engine/plan/ChosenPages.h"
#include "engine/plan/FolderTargets.h"
#include "engine/plan/MirroredFolders.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString asText(const FileIdentity& identity)
    {
        return u"%1 %2"_s.arg(identity.device).arg(identity.inode);
    }

} // namespace

class Planner
{
public:
    /// `isWanted` is borrowed.
    Planner(RunPlan& plan, RunPlan::Numbering numbering, const std::function<bool()>& isWanted)
        : m_plan(plan)
        , m_numbering(numbering)
        , m_isWanted(isWanted)
    {
    }

    void carryOut(const QStringList& others);

private:
    /// Where a target is, links followed.
    struct Spot
    {
        PlannedTarget target;
        FolderTargets* folder;
        QString name;
        bool isThere = false; ///< something, be it a link that leads nowhere
        bool isLink = false;
        bool isProtected = false; ///< the file there must not be replaced
        std::optional<FileIdentity> file {}; ///< what is there
    };

    std::vector<PlannedTarget> targetsOf(qsizetype output) const;
    std::vector<Spot> spotsOf(qsizetype output);
    Spot spotOf(const PlannedTarget& target, const QString& folder, const QString& name);
    FolderTargets& folderAt(const QString& path);
    QString folderKey(const QString& path);
    std::optional<qsizetype> replacedSource(const Spot& spot);
    bool makesSource(const FileItem& item);
    void shareFolders(qsizetype output);
    bool clash(const std::vector<Spot>& spots);
    bool isFree(const Spot& spot) { return !spot.isThere && !spot.folder->writer(spot.name); }
    void take(const std::vector<Spot>& spots);
    void number(qsizetype output);

    RunPlan& m_plan;
    const RunPlan::Numbering m_numbering;
    const std::function<bool()>& m_isWanted;
    QHash<QString, std::shared_ptr<FolderTargets>> m_folders; ///< by key
    QHash<QString, FolderTargets*> m_known; ///< by path
    std::map<QString, FolderTargets> m_missing; ///< folders to be made, by key of that above
    qsizetype m_missingFolders = 0; ///< numbered in place of writers
    std::optional<QHash<QString, qsizetype>> m_sources; ///< by file; looked up when there is need
    QHash<QString, int> m_nextNumbers; ///< by the names that were numbered
};

void Planner::carryOut(const QStringList& others)
{
    for (qsizetype i = 0; i < others.size(); ++i)
        folderAt(folderPart(others.at(i)))
            .add(lastPathComponent(others.at(i)), RunPlan::otherFile - i);
    std::vector<qsizetype> later;
    for (qsizetype output = 0; output < m_plan.m_outputs.size() && m_isWanted(); ++output) {
        const std::vector<Spot> spots = spotsOf(output);
        if (m_numbering != RunPlan::Numbering::None && clash(spots))
            later.push_back(output);
        else
            take(spots);
    }
    // Last, so that nobody has to give way to a number.
    for (const qsizetype output : later)
        if (m_isWanted())
            number(output);
    for (qsizetype output = 0; output < m_plan.m_outputs.size() && m_isWanted(); ++output)
        shareFolders(output);
    for (const OutputFile& output : m_plan.m_outputs)
        for (const std::shared_ptr<FileItem>& item : output.fileItems)
            m_plan.m_makesSource = m_plan.m_makesSource || (m_isWanted() && makesSource(*item));
}

std::vector<PlannedTarget> Planner::targetsOf(qsizetype output) const
{
    std::vector<PlannedTarget> targets;
    if (fileExtension(m_plan.m_settings.outputType()).isEmpty())
        return targets; // nothing can be written
    for (const std::shared_ptr<FileItem>& item : m_plan.m_outputs.at(output).fileItems) {
        const QList<int> pages = chosenPages(*item, m_plan.m_options);
        if (isKeptTogether(m_plan.m_settings) && !pages.isEmpty())
            targets.push_back({ output, 0 });
        else if (!isKeptTogether(m_plan.m_settings))
            for (const int page : pages)
                targets.push_back({ output, page });
    }
    return targets;
}

/// Each one is looked for on the disk, which may be slow to answer: those that are left when the
/// plan is not wanted any more are missing.
std::vector<Planner::Spot> Planner::spotsOf(qsizetype output)
{
    const QString folder = m_plan.m_names.folder(m_plan.m_outputs.at(output));
    std::vector<Spot> spots;
    for (const PlannedTarget& target : targetsOf(output)) {
        if (!m_isWanted())
            break;
        spots.push_back(spotOf(target, folder, m_plan.name(target)));
    }
    return spots;
}

Planner::Spot Planner::spotOf(const PlannedTarget& target, const QString& folder,
                              const QString& name)
{
    Spot spot { target, &folderAt(folder), name };
    if (spot.folder->isEmpty())
        return spot;
    const QString path = joinedPath(folder, spot.name);
    const QByteArray bytes = QFile::encodeName(path);
    struct stat status = {};
    if (::lstat(bytes.constData(), &status) != 0)
        return spot;
    spot.isThere = true;
    spot.isProtected = StagedFile::isWriteProtected(bytes);
    if (!S_ISLNK(status.st_mode)) {
        spot.file = FileState(status).identity;
        return spot;
    }
    spot.isLink = true;
    try {
        const QString end = QFile::decodeName(StagedFile::resolvedTarget(path));
        spot.folder = &folderAt(folderPart(end));
        spot.name = lastPathComponent(end);
        spot.file = fileIdentity(bytes);
    } catch (const std::runtime_error&) {
        // Links that lead in a circle: the writer will say so, and nothing is replaced.
    }
    return spot;
}

FolderTargets& Planner::folderAt(const QString& path)
{
    FolderTargets*& known = m_known[path];
    if (known == nullptr) {
        std::shared_ptr<FolderTargets>& folder = m_folders[folderKey(path)];
        if (!folder)
            folder = std::make_shared<FolderTargets>(path);
        known = folder.get();
    }
    return *known;
}

/// The same for every path that leads to the folder; of one that is still to be made, by the folder
/// above, in which its name leads to the same one as that of another such folder may.
QString Planner::folderKey(const QString& path)
{
    if (const auto identity = fileIdentity(QFile::encodeName(path)))
        return asText(*identity);
    const QString above = folderPart(path);
    if (above.isEmpty() || above == path)
        return path;
    const QString keyAbove = folderKey(above);
    FolderTargets& missing = m_missing.try_emplace(keyAbove, above).first->second;
    const QString name = lastPathComponent(path);
    std::optional<qsizetype> number = missing.writer(name);
    if (!number) {
        number = m_missingFolders++;
        missing.add(name, *number);
    }
    return joinedPath(keyAbove, QString::number(*number));
}

std::optional<qsizetype> Planner::replacedSource(const Spot& spot)
{
    if (!spot.file)
        return std::nullopt;
    if (!m_sources) {
        m_sources.emplace();
        for (qsizetype output = 0; output < m_plan.m_outputs.size() && m_isWanted(); ++output)
            for (const std::shared_ptr<FileItem>& item : m_plan.m_outputs.at(output).fileItems)
                if (const auto identity = fileIdentity(QFile::encodeName(item->localFile())))
                    m_sources->insert(asText(*identity), output);
    }
    const auto source = m_sources->constFind(asText(*spot.file));
    if (source == m_sources->cend() || *source == spot.target.output)
        return std::nullopt;
    return *source;
}

/// Whether the source is not there, but will be by an output.
bool Planner::makesSource(const FileItem& item)
{
    const QString path = item.localFile();
    if (item.pages() == 0 || fileIdentity(QFile::encodeName(path)))
        return false;
    const Spot spot = spotOf({}, folderPart(path), lastPathComponent(path));
    return spot.folder->writer(spot.name).has_value();
}

bool Planner::clash(const std::vector<Spot>& spots)
{
    // Two pages of one source have different names, but a link may lead from one to the other.
    const auto hasTwin = [&](const Spot& spot) {
        return spot.isLink && std::any_of(spots.begin(), spots.end(), [&](const Spot& other) {
                   return &other != &spot && other.folder == spot.folder && other.name == spot.name;
               });
    };
    return std::any_of(spots.begin(), spots.end(), [&](const Spot& spot) {
        return spot.folder->writer(spot.name) || replacedSource(spot) || hasTwin(spot)
            || (spot.isThere && m_numbering == RunPlan::Numbering::Taken);
    });
}

void Planner::take(const std::vector<Spot>& spots)
{
    for (const Spot& spot : spots) {
        if (const auto first = spot.folder->writer(spot.name))
            m_plan.m_shared.push_back({ spot.target, *first });
        else
            spot.folder->add(spot.name, spot.target.output);
        if (spot.isThere)
            m_plan.m_existing.push_back(spot.target);
        if (spot.isProtected)
            m_plan.m_protected.push_back(spot.target);
        if (const auto source = replacedSource(spot))
            m_plan.m_replaced.push_back({ spot.target, *source });
    }
}

/// A folder that is to be made cannot have the name of an output.
void Planner::shareFolders(qsizetype output)
{
    const OutputFile& made = m_plan.m_outputs.at(output);
    const std::vector<PlannedTarget> targets = targetsOf(output);
    QString above = m_plan.m_settings.outputFolderPath();
    if (targets.empty() || made.subfolder.isEmpty())
        return;
    for (const QString& part : made.subfolder.split(u'/')) {
        if (const auto first = folderAt(above).writer(part))
            m_plan.m_shared.push_back({ targets.front(), *first });
        above = joinedPath(above, part);
    }
}

void Planner::number(qsizetype output)
{
    OutputFile& numbered = m_plan.m_outputs[output];
    const std::vector<PlannedTarget> targets = targetsOf(output);
    // What was taken for as many pages with the same names stays so.
    const QString names = m_plan.m_names.path(numbered, targets.front().page) + u'/'
        + QString::number(targets.size());
    int& next = m_nextNumbers[names];
    numbered.number = std::max(next, 2);
    std::vector<Spot> spots = spotsOf(output);
    const auto free = [this](const Spot& spot) { return isFree(spot); };
    for (; !std::all_of(spots.begin(), spots.end(), free); spots = spotsOf(output))
        ++numbered.number;
    next = numbered.number + 1;
    take(spots);
}

RunPlan::RunPlan(const QList<OutputFile>& outputs, const Settings& settings,
                 const RunOptions& options, Numbering numbering, const QStringList& others,
                 const std::function<bool()>& isWanted)
    : m_settings(settings)
    , m_options(options)
    , m_names(settings, options)
    , m_outputs(m_names.completed(outputs))
{
    Planner(*this, numbering, isWanted).carryOut(others);
}

QString RunPlan::name(const PlannedTarget& target) const
{
    return m_names.name(m_outputs.at(target.output), target.page);
}

bool RunPlan::hasHazards() const
{
    return !m_shared.empty() || !m_replaced.empty() || m_makesSource;
}

QStringList RunPlan::remarks() const
{
    QStringList found;
    const int type = m_settings.outputType();
    if (m_options.mirrorsFolders && !m_outputs.isEmpty()) {
        const OutputFile& first = m_outputs.first();
        QString root = folderPart(first.filename);
        if (!first.subfolder.isEmpty())
            root.chop(first.subfolder.size());
        found.append(u"folders are repeated from this one on: %1"_s.arg(root));
    }
    if (type == static_cast<int>(OutputType::Bmp) || type == static_cast<int>(OutputType::Gif))
        found.append(
            u"%1 files hold no texts, dates, XMP, Exif, GPS or IPTC data: what pages have of these "
            "stays behind"_s.arg(fileExtension(type).mid(1).toUpper()));
    return found;
}

QStringList RunPlan::folderFaults() const
{
    const QString top = m_settings.outputFolderPath();
    QStringList found;
    QSet<QString> checked;
    for (const OutputFile& output : m_outputs) {
        const QString folder = m_names.folder(output);
        if (output.pages.isEmpty() || checked.contains(folder))
            continue;
        checked.insert(folder);
        QString fault;
        if (!top.isEmpty())
            fault = MirroredFolders::fault(folder, top);
        else if (!QFileInfo(folder).isWritable())
            fault = u"folder %1 is not writable"_s.arg(folder);
        if (!fault.isNull() && !found.contains(fault))
            found.append(fault);
    }
    return found;
}

} // namespace pagestack
