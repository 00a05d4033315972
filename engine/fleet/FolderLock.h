#pragma once

#include <QString>

namespace pagestack {

/// One program at a time has it: the lock of a folder. On a file system that knows no such locks,
/// everybody does.
class FolderLock
{
public:
    /// Throws std::runtime_error when another program has it.
    explicit FolderLock(const QString& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int m_file;
};

} // namespace pagestack
