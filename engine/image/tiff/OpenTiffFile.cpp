#include "engine/image/tiff/OpenTiffFile.h"

#include "engine/files/PosixFile.h"
#include "engine/files/StagedFile.h"
#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/TiffLimits.h"

#include <QFile>
#include <QFileInfo>

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace pagestack {

bool TiffWindow::copyTo(std::uint64_t at, std::span<std::uint8_t> to) const
{
    if (!holds(at, to.size()))
        return false;
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at - offset), to.size(), to.begin());
    return true;
}

OpenTiffFile::OpenTiffFile(QString path, int file)
    : m_path(std::move(path))
    , m_file(file)
{
}

OpenTiffFile::OpenTiffFile(const QString& path)
    // Without O_NONBLOCK a named pipe would wait for its writer.
    : OpenTiffFile(path,
                   ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
{
    begin();
}

OpenTiffFile::OpenTiffFile(const QString& name, StagedFile& file)
    : OpenTiffFile(name, file.openForReading())
{
    begin();
}

void OpenTiffFile::begin()
{
    struct stat status = {};
    if (m_file < 0 || ::fstat(m_file, &status) != 0)
        throwFileSystemError("cannot open the file", errno);
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error("it is no regular file");
    if (status.st_size == 0)
        throw std::runtime_error("the file is empty");
    m_state = FileState(status);
    m_chain = walkDirectoryChain(m_file);
    if (!m_chain.isTiff)
        throw std::runtime_error("it is no TIFF file");
    if (m_chain.offsets.empty())
        throw std::runtime_error(m_chain.fault.isEmpty() ? "the file has no page"
                                                         : m_chain.fault.toStdString());
}

OpenTiffFile::~OpenTiffFile()
{
    if (m_file >= 0)
        ::close(m_file);
}

QString OpenTiffFile::fileName() const { return QFileInfo(m_path).fileName(); }

void OpenTiffFile::readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const
{
    readFully(m_file, offset, bytes);
}

std::optional<std::uint64_t> OpenTiffFile::number(const TiffTagValue* value) const
{
    constexpr std::array types { TIFF_SHORT, TIFF_LONG, TIFF_LONG8 };
    if (value == nullptr || value->count != 1
        || std::ranges::find(types, value->type) == types.end() || value->offset > sizeBytes()
        || value->bytes > sizeBytes() - value->offset)
        return std::nullopt;
    std::array<std::uint8_t, 8> bytes = {};
    const auto held = std::span(bytes).first(value->bytes);
    readAt(value->offset, held);
    return numberIn(held, isBigEndian());
}

TiffWindow OpenTiffFile::windowAtPage(int index) const
{
    return windowAt(m_chain.offsets.at(static_cast<std::size_t>(index)));
}

TiffWindow OpenTiffFile::windowAt(std::uint64_t offset) const
{
    constexpr std::size_t windowBytes = 1024;
    TiffWindow window { offset, std::vector<std::uint8_t>(windowBytes) };
    window.bytes.resize(readUpTo(m_file, window.offset, window.bytes));
    return window;
}

TiffDirectory OpenTiffFile::directory(int index, const TiffWindow& window) const
{
    const std::uint64_t offset = m_chain.offsets.at(static_cast<std::size_t>(index));
    const auto read = [&](std::uint64_t at, std::span<std::uint8_t> bytes) {
        if (!window.copyTo(at, bytes))
            readAt(at, bytes);
    };
    TiffDirectory directory = readDirectory(read, m_chain.format, offset);
    checkTagValues(directory, sizeBytes());
    return directory;
}

TiffDirectory OpenTiffFile::subDirectory(std::uint64_t offset) const
{
    const auto read
        = [this](std::uint64_t at, std::span<std::uint8_t> bytes) { readAt(at, bytes); };
    return readDirectory(read, m_chain.format, offset);
}

std::uint64_t OpenTiffFile::sizeNow() const
{
    struct stat status = {};
    const bool isKnown = ::fstat(m_file, &status) == 0;
    return isKnown ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool OpenTiffFile::hasChanged() const
{
    struct stat status = {};
    if (::fstat(m_file, &status) != 0)
        return true;
    const FileState now(status);
    return now.sizeBytes != m_state.sizeBytes || now.modifiedNs != m_state.modifiedNs;
}

std::size_t OpenTiffFile::readShown(std::uint64_t offset, std::span<std::uint8_t> bytes,
                                    const TiffWindow& window) const
{
    if (!window.copyTo(offset, bytes))
        bytes = bytes.first(readUpTo(m_file, offset, bytes));
    const std::uint64_t begin = std::max(m_chain.cutLink.begin, offset);
    const std::uint64_t end = std::min(m_chain.cutLink.end, offset + bytes.size());
    // Of a sound chain, only the link itself, which libtiff reads by itself: pixels may lie there.
    const bool isLink = offset == m_chain.cutLink.begin && end == offset + bytes.size()
        && end == m_chain.cutLink.end;
    if (begin < end && (isLink || !m_chain.fault.isEmpty()))
        std::ranges::fill(bytes.subspan(begin - offset, end - begin), std::uint8_t { 0 });
    return bytes.size();
}

} // namespace pagestack
