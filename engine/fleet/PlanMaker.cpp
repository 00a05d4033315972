#include "engine/fleet/PlanMaker.h"

#include "engine/files/FileState.h"
#include "engine/files/NameFolding.h"
#include "engine/plan/ChosenPages.h"
#include "engine/plan/OutputNames.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"
#include "filelist/FileItem.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qint64 mostClashes = 10; // that are told
    constexpr qint64 progressStep = 256;

    QJsonObject membersOf(const QByteArray& line) { return QJsonDocument::fromJson(line).object(); }

    QByteArray lineOf(const Source& source)
    {
        return jsonLine({ { u"path"_s, source.path },
                          { u"shown"_s, source.shown },
                          { u"foundIn"_s, source.foundIn },
                          { u"pages"_s, source.pageChoice } });
    }

    Source sourceOf(const QByteArray& line)
    {
        const QJsonObject members = membersOf(line);
        return { .path = members.value(u"path").toString(),
                 .shown = members.value(u"shown").toString(),
                 .foundIn = members.value(u"foundIn").toString(),
                 .pageChoice = members.value(u"pages").toString() };
    }

} // namespace

PlanMaker::PlanMaker(const PlanHead& head, Told told)
    : m_head(head)
    , m_told(std::move(told))
{
}

PlanMaker::Key PlanMaker::keyOf(const QString& path, std::uint64_t place, std::int64_t target)
{
    Key key { .place = place, .target = target };
    const QByteArray digest = QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha256);
    std::memcpy(key.digest.data(), digest.constData(), sizeof key.digest);
    return key;
}

/// What a folder is told from others by, links followed. Sources of a folder follow each other.
QString PlanMaker::realFolder(const QString& folder)
{
    if (folder != m_lastFolder || m_lastRealFolder.isNull()) {
        m_lastFolder = folder;
        const QString real = QFileInfo(folder).canonicalFilePath();
        m_lastRealFolder = real.isEmpty() ? folder : real;
    }
    return m_lastRealFolder;
}

void PlanMaker::checkWanted() const
{
    if (!m_told.isWanted())
        throw StopReceived();
}

void PlanMaker::add(const Source& source)
{
    checkWanted();
    const QString base = source.foundIn.isEmpty() ? folderPart(source.path) : source.foundIn;
    m_root = m_root.isNull() ? base : commonFolder(m_root, base);
    const QString real
        = joinedPath(realFolder(folderPart(source.path)), lastPathComponent(source.path));
    m_sources.add(keyOf(real, m_given.append(lineOf(source)),
                        static_cast<std::int64_t>(qHash(source.pageChoice, 1) >> 1)));
    if (++m_count % progressStep == 0)
        m_told.progress(0, m_count);
}

qint64 PlanMaker::write(const PlanWriter::Put& put)
{
    findDuplicates();
    readSources();
    const qint64 clashes = findClashes();
    if (clashes > 0)
        return clashes;
    PlanWriter writer(m_head, put);
    std::uint64_t place = 0;
    while (const auto line = m_read.lineAt(place)) {
        checkWanted();
        writer.add(PlanSource::fromJson(membersOf(*line)));
        place += static_cast<std::uint64_t>(line->size());
    }
    writer.finish();
    return 0;
}

/// The first of equal keys is the one that was given first.
void PlanMaker::findDuplicates()
{
    Key before {};
    m_sources.forEach([&](const Key& key) {
        if (key.digest == before.digest)
            (key.target == before.target ? m_duplicates : m_twice).push_back(key.place);
        else
            before = key;
    });
    std::ranges::sort(m_duplicates);
    std::ranges::sort(m_twice);
}

void PlanMaker::readSources()
{
    Settings settings(nullptr);
    applyTo(settings, m_head.options);
    settings.setOutputFolderPath(m_head.outputFolder);
    RunOptions options = m_head.options.run;
    const bool isMirrored = options.mirrorsFolders && !m_head.outputFolder.isEmpty();
    options.mirrorsFolders = false; // done here, where the folder of all is known
    const OutputNames names(settings, options);
    const bool isTogether = isKeptTogether(settings);
    qint64 done = 0;
    PlanSource planned { .line = 0, .running = 1 };
    std::uint64_t next = 0;
    while (const auto line = m_given.lineAt(next)) {
        const std::uint64_t place = next;
        next += static_cast<std::uint64_t>(line->size());
        checkWanted();
        if (++done % progressStep == 0)
            m_told.progress(done, m_count);
        const Source source = sourceOf(*line);
        if (std::ranges::binary_search(m_twice, place)) {
            m_told.trouble(source.shown + u": "_s + namedTwice.toString());
            continue;
        }
        if (std::ranges::binary_search(m_duplicates, place)) {
            m_told.remark(source.shown + u": named twice, planned once"_s);
            continue;
        }
        OutputFile output { .filename = source.path, .fileItems = {} };
        const auto item = FileItem::initWithURL(QUrl::fromLocalFile(source.path));
        item->setPageChoice(source.pageChoice);
        output.fileItems.append(item);
        output.pages = chosenPages(*item, options);
        output.firstRunning = planned.running;
        planned.path = source.path;
        planned.shown = source.shown;
        planned.foundIn = source.foundIn;
        const auto state = fileState(QFile::encodeName(source.path));
        planned.sizeBytes = state ? state->sizeBytes : 0;
        planned.modifiedNs = state ? state->modifiedNs : 0;
        planned.pages = pageRangesText(output.pages);
        planned.pageCount = static_cast<int>(output.pages.size());
        planned.pagesCounted = item->pages();
        planned.fault = item->fault();
        if (const QString missing = missingPages(*item, options); !missing.isEmpty())
            planned.fault = missing;
        planned.subfolder = isMirrored ? pathBelow(folderPart(source.path), m_root) : QString();
        planned.targets.clear();
        if (isTogether && !output.pages.isEmpty())
            planned.targets.append(names.name(output, 0));
        for (const int page : output.pages)
            if (!isTogether)
                planned.targets.append(names.name(output, page));
        if (!planned.fault.isEmpty())
            m_told.trouble(source.shown + u": "_s + planned.fault);
        const std::uint64_t written = m_read.append(jsonLine(planned.toJson(QString())));
        m_targets.add(keyOf(NameFolding {}.folded(joinedPath(realFolder(folderPart(planned.path)),
                                                             lastPathComponent(planned.path))),
                            written, -1));
        for (qsizetype i = 0; i < planned.targets.size(); ++i) {
            const QString path = targetPath(planned, i);
            m_targets.add(keyOf(NameFolding {}.folded(joinedPath(realFolder(folderPart(path)),
                                                                 lastPathComponent(path))),
                                written, i));
        }
        planned.running += static_cast<int>(planned.targets.size());
        ++planned.line;
    }
}

/// Of the source itself for -1.
QString PlanMaker::targetPath(const PlanSource& source, std::int64_t target) const
{
    if (target < 0)
        return source.path;
    const QString folder = m_head.outputFolder.isEmpty()
        ? folderPart(source.path)
        : joinedPath(m_head.outputFolder, source.subfolder);
    return joinedPath(folder, source.targets.at(target));
}

qint64 PlanMaker::findClashes()
{
    qint64 count = 0;
    std::optional<Key> first; // of those with a digest
    std::vector<Claim> claims; // of these, names that are different files
    m_targets.forEach([&](const Key& key) {
        if (!first || first->digest != key.digest) {
            first = key;
            claims.clear();
            return;
        }
        if (claims.empty())
            claims.push_back(claimOf(*first));
        if (count > mostClashes)
            ++count; // nobody reads them
        else
            compare(claims, claimOf(key), count);
    });
    if (count > mostClashes)
        m_told.trouble(u"and %1 more"_s.arg(count - mostClashes));
    return count;
}

PlanMaker::Claim PlanMaker::claimOf(const Key& key)
{
    const PlanSource source = PlanSource::fromJson(membersOf(*m_read.lineAt(key.place)));
    return { targetPath(source, key.target), source.shown, key.target < 0 };
}

/// The names differ in case or normalization at most, which not every file system tells apart.
void PlanMaker::compare(std::vector<Claim>& claims, const Claim& claim, qint64& count)
{
    std::optional<NameFolding> folding;
    const auto isSame = [&](const Claim& other) {
        if (lastPathComponent(other.path) == lastPathComponent(claim.path))
            return true;
        if (!folding)
            folding = nameFolding(folderPart(claim.path));
        return folding->folded(other.path) == folding->folded(claim.path);
    };
    const auto other = std::ranges::find_if(claims, isSame);
    if (other == claims.end()) {
        claims.push_back(claim);
        return;
    }
    if (other->isSource && claim.isSource)
        return;
    if (++count > mostClashes)
        return;
    m_told.trouble(
        other->isSource || claim.isSource
            ? u"%1 is a source, which output of %2 would replace"_s.arg(
                claim.path, other->isSource ? claim.shown : other->shown)
            : u"%1 is wanted by %2 and by %3"_s.arg(claim.path, other->shown, claim.shown));
    if (claim.isSource)
        *other = claim;
}

} // namespace pagestack
