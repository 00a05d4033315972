#include "engine/fleet/OutputCheck.h"

#include "engine/files/FileState.h"
#include "engine/fleet/RunState.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <optional>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Null, or what the file at `path` has against it: a word.
    QString faultOf(const QString& path, const FileDigest& digest)
    {
        const std::optional<FileState> state = fileState(QFile::encodeName(path));
        if (!state)
            return errno == ENOENT || errno == ENOTDIR ? u"missing"_s : u"unreadable"_s;
        if (!QFileInfo(path).isFile())
            return u"unreadable"_s;
        if (static_cast<std::uint64_t>(state->sizeBytes) != digest.sizeBytes)
            return u"size"_s;
        const std::optional<FileDigest> found = digestOfFile(path);
        if (!found)
            return u"unreadable"_s;
        return *found == digest ? QString() : u"digest"_s;
    }

    QString faultText(const QString& fault)
    {
        return fault == u"missing" ? u"is missing"_s
            : fault == u"size"     ? u"has another size than when it was converted"_s
            : fault == u"digest"   ? u"has other bytes than when it was converted"_s
                                   : u"cannot be read"_s;
    }

} // namespace

void OutputCheck::check(const MergedSource& source)
{
    bool isReplaced = false; // the source, by an output of its own
    for (std::size_t i = 0; i < source.pages.size(); ++i)
        if (const MergedPage& page = source.pages.at(i); page.digest) {
            compare(source.targetPath(i), *page.digest, false);
            isReplaced |= source.targetPath(i) == source.plan.path;
        }
    if (source.gathered) {
        compare(source.targetPath(0), *source.gathered, false);
        isReplaced |= source.targetPath(0) == source.plan.path;
    }
    if (source.digest && !isReplaced)
        compare(source.plan.path, *source.digest, true);
}

void OutputCheck::compare(const QString& path, const FileDigest& digest, bool isSource)
{
    const QString fault = faultOf(path, digest);
    if (isSource && fault == u"missing") // which may be, once it is converted
        return;
    ++(isSource ? m_sources : m_outputs);
    if (!fault.isNull())
        m_faults.add({ { u"path"_s, path }, { u"fault"_s, fault }, { u"isSource"_s, isSource } },
                     (isSource ? u"source "_s : QString()) + path + u' ' + faultText(fault));
}

QJsonObject OutputCheck::toJson() const
{
    QJsonObject members = m_faults.toJson();
    members[u"outputs"_s] = m_outputs;
    members[u"sources"_s] = m_sources;
    return members;
}

} // namespace pagestack
