#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

namespace pagestack {

/// Names and owners of staged files, `.pagestack-PROCESS-NUMBER.part`.
///
/// A program owns a staged file while it holds an advisory lock (flock) on it. The lock ends with
/// the program, however that ends, and other machines see it on a shared file system; a process
/// number offers neither. On a file system without locks, leftovers stay.

/// A hidden name that no other staged file of this or another running program has, short enough for
/// every file system.
QByteArray stagedName();

/// A staged name with a letter that has two spellings in Unicode; this is the composed one.
QByteArray stagedProbeName();

/// Makes this program the owner of the new, open file. False if another program has removed it as a
/// leftover in the moment before.
bool ownStagedFile(int file);

/// Whether a staged file could have this name.
bool isStagedName(const QByteArray& name);

/// Removes the staged files in `folder` that no running program owns, except for the names in
/// `kept`. A file that cannot be opened or removed stays. Any thread.
void removeLeftStagedFiles(const QString& folder, const QSet<QByteArray>& kept = {});

} // namespace pagestack
