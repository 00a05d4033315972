#pragma once

#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

namespace pagestack {

/// Throws std::logic_error with `promise` unless it holds.
inline void require(bool holds, const char* promise)
{
    if (!holds)
        throw std::logic_error(promise);
}

/// A folder of this process for the files of one input at a time; it is below the folder that
/// TMPDIR names.
class FuzzFolder
{
public:
    FuzzFolder() { empty(); }
    ~FuzzFolder() { empty(); }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    QString path(const QString& name) const { return folder().filePath(name); }
    /// All names, hidden ones too.
    QStringList names() const { return namesIn(folder().path()); }
    /// Writes a file of that name and gives its path.
    QString put(const QString& name, FuzzInput bytes) const
    {
        putBytes(path(name), { reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes) });
        return path(name);
    }

private:
    static const QTemporaryDir& folder()
    {
        static const QTemporaryDir made; // making one for every input would take most of the time
        return made;
    }
    void empty() const
    {
        for (const QString& name : names())
            QFile::remove(path(name));
    }
};

} // namespace pagestack
