#include "engine/fleet/FolderEvents.h"

namespace pagestack {

FolderEvents::FolderEvents() = default;
FolderEvents::~FolderEvents() = default;

bool FolderEvents::add(const QString&) { return false; }

QSet<QString> FolderEvents::takeMovedIn() { return {}; }

bool isBeingWritten(int) { return false; }

} // namespace pagestack
