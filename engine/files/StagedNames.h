#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

namespace pagestack {

/// Names and owners of staged files, `.pagestack-PROCESS-NUMBER.part`.
///
/// A program owns a staged file while it holds an advisory lock (flock) on it. The lock ends with
/// the program, however that ends, and other machines see it where the file system is shared; a
/// number of a process says neither. Where a file system has no locks, what was left behind stays.

/// A name that no other staged file of this or another running program has, short enough for every
/// file system, hidden, and plain about what it is.
QByteArray stagedName();

/// A staged name with a letter that has two spellings in Unicode, of which this is the composed
/// one.
QByteArray stagedProbeName();

/// Makes this program the owner of the new, open file. False when it was taken for a leftover in
/// the moment before.
bool ownStagedFile(int file);

/// Whether a staged file could have this name.
bool isStagedName(const QByteArray& name);

/// Removes the staged files in `folder` that no running program owns, except for those with a name
/// of `kept`. What cannot be removed, or looked at, stays. Any thread.
void removeLeftStagedFiles(const QString& folder, const QSet<QByteArray>& kept = {});

} // namespace pagestack
