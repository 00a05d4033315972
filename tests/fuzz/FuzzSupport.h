#pragma once

#include "engine/image/PageImage.h"
#include "tests/fuzz/FuzzTargets.h"

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>
#include <stdexcept>

namespace pagestack {

/// Something that the program promises does not hold.
class BrokenPromise : public std::logic_error
{
public:
    using std::logic_error::logic_error;
};

/// Throws BrokenPromise with `promise` unless it holds.
inline void require(bool holds, const char* promise)
{
    if (!holds)
        throw BrokenPromise(promise);
}

/// A folder of this process for the files of one input at a time; it is below the folder that
/// TMPDIR names.
class FuzzFolder
{
public:
    /// Empties the folder.
    FuzzFolder();
    ~FuzzFolder();
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    QString path(const QString& name) const;
    /// Writes a file of that name and gives its path.
    QString put(const QString& name, FuzzInput bytes) const;
    /// All names, hidden ones too.
    QStringList names() const;
};

/// What a page looks like: its layout and its pixels, without what fills up the last byte of a row.
/// Nothing when it cannot be decoded.
std::optional<QByteArray> appearance(const PageImage& page);

/// Whether `page` has at most `limitBytes` of stored samples and as many pixels. False when its
/// description cannot be read.
bool isSmall(const PageImage& page, std::uint64_t limitBytes);

} // namespace pagestack
