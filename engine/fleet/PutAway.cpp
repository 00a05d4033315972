#include "engine/fleet/PutAway.h"

#include "engine/files/StagedFile.h"
#include "engine/fleet/SourceMover.h"
#include "engine/fleet/WatchJournal.h"
#include "engine/support/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    void makeFolders(const QString& folder)
    {
        if (!QFileInfo(folder).isDir() && !QDir().mkpath(folder))
            throw std::runtime_error(u"the folder %1 cannot be made"_s.arg(folder).toStdString());
    }

    void writeNote(const QString& path, const QString& text)
    {
        const QByteArray bytes = text.toUtf8();
        StagedFile note(path);
        note.write(std::vector<std::uint8_t>(bytes.cbegin(), bytes.cend()));
        try {
            note.commit(StagedFile::Existing::Kept);
        } catch (const StagedFile::NameTaken&) {
            return; // by this, before the program was ended
        }
    }

} // namespace

void PutAway::put(const QString& path, const FileState& state, const QString& reason)
{
    const QString folder = joinedPath(reason.isEmpty() ? m_folders.done : m_folders.failed,
                                      pathBelow(folderPart(path), m_folders.watched));
    makeFolders(folder);
    m_journal.noteMoving(path, state, freePath(folder, lastPathComponent(path), !reason.isEmpty()),
                         reason);
    finish(path);
}

void PutAway::finish(const QString& path)
{
    const WatchJournal::Known known = *m_journal.known(path);
    if (known.state)
        settleAside(path, known.movedTo, *known.state);
    const auto state = fileState(QFile::encodeName(path));
    if (state && known.state && isSameFile(*state, *known.state)) {
        if (areSameFiles(path, known.movedTo))
            removeMoved(path, *state);
        else if (moveFile(path, known.movedTo, *state) == MoveEnd::NameTaken)
            return put(path, *state, known.reason);
    }
    if (!known.reason.isEmpty() && QFileInfo::exists(known.movedTo))
        writeNote(notePath(known.movedTo), known.reason);
    m_journal.noteMoved(path);
}

} // namespace pagestack
