#pragma once

#include "engine/files/ByteFile.h"
#include "engine/preview/PagePicture.h"

#include <memory>

namespace pagestack {

class StagedFile;
enum class OutputType : int;

/// The file that a page has become. It has no name any more and lasts as long as this object, which
/// holds none of its bytes. Any thread.
class ResultFile
{
public:
    /// `made` is complete, for a file at `name`. Throws std::runtime_error.
    ResultFile(OutputType type, const QString& name, StagedFile& made);

    /// As `pictureOf`: of the only page, but decoded from its first row on. Throws
    /// std::runtime_error, also where the file does not show `size` pixels or is not as the format
    /// asks.
    PagePicture picture(const QSize& size, const QRect& region, const QSize& most,
                        const IsStopped& isStopped) const;

    /// Null for TIFF.
    ByteFile* bytes() const { return m_bytes.get(); }
    /// Null for the other formats.
    const std::shared_ptr<const OpenTiffFile>& tiff() const { return m_tiff; }

private:
    OutputType m_type;
    std::unique_ptr<ByteFile> m_bytes;
    std::shared_ptr<const OpenTiffFile> m_tiff;
};

} // namespace pagestack
