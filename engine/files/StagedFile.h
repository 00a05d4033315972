#pragma once

#include "engine/files/ByteFile.h"
#include "engine/files/FileState.h"

#include <QString>

#include <optional>
#include <stdexcept>
#include <vector>

namespace pagestack {

/// A new file that is written beside its target under a temporary name and renamed over it when it
/// is complete: a failure, a crash or a cancel leaves the target as it was.
///
/// A symbolic link is followed, and its target replaced; a link of another user in a folder that
/// others may write to is refused, and so is a write-protected file. A file that replaces another
/// keeps its permissions and access list, and its owner and group where that is allowed; the
/// temporary file is never readable to more users. In a folder that takes no new file, an existing
/// writable file is overwritten in place at `commit`. Leftovers of a killed program: StagedNames.h.
/// One thread at a time; a staged file may be handed from one thread to another.
class StagedFile : public ByteFile
{
public:
    /// The fate of a file that is at the target when the new one is put there.
    enum class Existing {
        Replaced,
        Kept, ///< commit() throws NameTaken, also for a file of a moment ago and for a link
    };

    /// There is a file at the target that was to be kept.
    class NameTaken : public std::runtime_error
    {
    public:
        NameTaken()
            : std::runtime_error("a file of that name has appeared during the run")
        {
        }
    };

    /// The file at the target is not the one that was to be replaced.
    class TargetChanged : public std::runtime_error
    {
    public:
        TargetChanged()
            : std::runtime_error("the file is kept as it is, since it has changed meanwhile")
        {
        }
    };

    /// Whether the file at `path` must not be replaced, as its permissions are; root, who may write
    /// to everything, keeps to what is allowed to the owner. False when nothing is there.
    static bool isWriteProtected(const QByteArray& path);

    /// Creates the temporary file. Throws std::runtime_error with the reason (no such folder, no
    /// permission, the target is no regular file or is write-protected).
    explicit StagedFile(const QString& targetPath);

    /// Removes the file unless it was committed.
    ~StagedFile() override;
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    /// The file that a write to `targetPath` ends in, in the file system's encoding: absolute, with
    /// a link at its end followed also when it dangles. Throws std::runtime_error, also for a link
    /// that must not be followed.
    static QByteArray resolvedTarget(const QString& targetPath);

    /// Appends at the end of the file. Throws std::runtime_error with the reason.
    void write(std::span<const std::uint8_t> bytes);

    void writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override;
    void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) override;
    std::uint64_t size() const override { return m_size; }

    /// Cuts or extends the file to `size` bytes. Throws std::runtime_error with the reason.
    void resize(std::uint64_t size);

    /// Makes room for `bytes` at the end, which is at the returned offset, for `fill`. Throws
    /// std::runtime_error with the reason.
    std::uint64_t reserve(std::uint64_t bytes);

    /// Writes within room that was made and is written to in no other way. Any thread, beside
    /// others that do the same and beside one that goes on with the file behind it; `resize` cuts
    /// off what could not be filled. Throws std::runtime_error with the reason.
    void fill(std::uint64_t offset, std::span<const std::uint8_t> bytes) const;

    /// What the disk still takes, as far as it says so: without that 0.
    std::uint64_t freeBytes() const;

    /// Has `commit` give the file this modification time, in nanoseconds since 1970.
    void setModified(std::int64_t timeNs) { m_modifiedNs = timeNs; }

    /// Hands everything to the file system, as far as `commit` needs it there, and frees the
    /// memory: for a complete file that waits. Throws std::runtime_error with the reason.
    void settle();

    /// Gives the complete file its name already, if nothing has it: `commit` has nothing left to do
    /// then, and without it the file is removed from there, unless another has taken its place.
    /// Throws std::runtime_error when the file cannot be trusted.
    void putAhead();

    /// Whether another has removed what was put ahead, or taken its place.
    bool isGone() const;

    /// A descriptor on all that was written, which the caller closes, before `commit`. Throws
    /// std::runtime_error with the reason.
    int openForReading();

    /// Puts the file in place of the target. If `expected` is given, a file that is replaced must
    /// be in that state up to the moment of its replacement. Throws NameTaken, TargetChanged, or
    /// std::runtime_error with another reason; the target is then as it was.
    void commit(Existing existing = Existing::Replaced,
                const std::optional<FileState>& expected = std::nullopt);

    /// Whether nothing was at the target when the file was begun, not even a link: what `commit`
    /// replaces can then only have come since, and is that name alone.
    bool isNew() const { return !m_replaces && !m_isBehindLink; }

    /// False after a `commit` that could not set the date: who may only write a file may not.
    bool isDateKept() const { return m_isDateKept; }
    static QString dateRemark(); ///< says so

private:
    void lookAtTarget();
    bool createBesideTarget();
    bool takeName();
    void leaveInPlace();
    void remove();
    void putInPlace(Existing existing, const std::optional<FileState>& expected);
    bool swapIn(const FileState& expected);
    void keepPermissions();
    void flush();
    /// Whether these bytes have not been handed to the file system yet.
    bool isPending(std::uint64_t offset, std::size_t count) const;
    std::vector<std::uint8_t>::iterator pendingAt(std::uint64_t offset);

    QByteArray m_target; ///< with symbolic links resolved, in the file system's encoding
    QByteArray m_temporary; ///< empty once it has its name, and for a file without a name
    int m_file = -1;
    std::uint64_t m_size = 0; ///< `m_pending` included
    std::vector<std::uint8_t> m_pending; ///< appended, but not yet handed to the file system
    bool m_replaces = false; ///< a file was at the target at the last look
    bool m_isBehindLink = false; ///< the target is not what was named
    bool m_inPlace = false;
    bool m_isAhead = false; ///< at the target, but not committed
    bool m_isDateKept = true;
    std::optional<std::int64_t> m_modifiedNs; ///< none: as it comes
    unsigned m_permissions = 0; ///< of the file that is replaced, as are the two below
    unsigned m_owner = 0;
    unsigned m_group = 0;
};

} // namespace pagestack
