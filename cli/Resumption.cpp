#include "cli/Resumption.h"

#include "engine/fleet/PlanFile.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    bool isThere(const QString& path)
    {
        const QFileInfo info(path);
        return info.exists() || info.isSymLink();
    }

} // namespace

Resumption Resumption::of(const OutputFile& output, const QList<int>& wanted, const RunState& state,
                          const OutputNames& names, bool isTogether)
{
    Resumption found { .isDone = false, .pages = wanted };
    const RunState::Known* known = state.known(output.filename);
    if (!known)
        return found;
    const bool isSameSource = known->digest && digestOfFile(output.filename) == known->digest;
    const auto noted = [&](int page) {
        if (page > 0)
            return known->written.contains(page) ? std::optional(known->written.value(page))
                                                 : std::nullopt;
        return known->isDone && known->pages == pageRangesText(wanted) ? known->gathered
                                                                       : std::nullopt;
    };
    // Whether the output is what was noted; else it is to be written.
    const auto look = [&](int page) {
        const QString path = names.path(output, page);
        const std::optional<FileDigest> digest = noted(page);
        // A source that its own output has replaced is another file now.
        const bool isSound = isSameSource || path == output.filename;
        if (isSound && digest && digestOfFile(path) == digest) {
            found.proven.emplace_back(path, *digest);
            return true;
        }
        if (!isThere(path) || !known->made.contains(path))
            return false;
        found.own.insert(path);
        if (digest && isSameSource)
            found.remarks.append(path + u": it is not as it was written; it is written anew"_s);
        return false;
    };
    if (isTogether) {
        found.isDone = !wanted.isEmpty() && look(0);
        if (found.isDone)
            found.pages.clear();
    } else {
        found.pages.removeIf(look);
        // What is wrong with the source as a whole is only told again by a run.
        found.isDone = found.pages.isEmpty() && known->isDone;
        if (found.pages.isEmpty() && !found.isDone && !wanted.isEmpty()) {
            found.pages.append(wanted.constLast());
            found.own.insert(names.path(output, wanted.constLast()));
            found.proven.pop_back();
        }
    }
    if (!isSameSource && known->digest && !found.isDone)
        found.remarks.append(
            output.filename
            + u": it has changed since a former run read it; all of it is converted anew"_s);
    found.provenPages = static_cast<int>(wanted.size() - found.pages.size());
    return found;
}

} // namespace pagestack
