#include "engine/image/TiffFile.h"

#include "engine/image/FileBytes.h"

#include <QFile>
#include <QFileInfo>

#include <tiffio.h>

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace pagestack {

namespace {

    class FileDescriptor
    {
    public:
        explicit FileDescriptor(int file)
            : m_file(file)
        {
        }
        ~FileDescriptor()
        {
            if (m_file >= 0)
                ::close(m_file);
        }
        FileDescriptor(const FileDescriptor&) = delete;
        FileDescriptor& operator=(const FileDescriptor&) = delete;

        int get() const { return m_file; }
        int release() { return std::exchange(m_file, -1); }

    private:
        int m_file;
    };

} // namespace

TiffFile::TiffFile(const QString& path)
    : m_path(path)
    , m_messages(QFileInfo(path).fileName())
{
    // Without O_NONBLOCK a named pipe would wait for its writer.
    FileDescriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
        throwFileSystemError("cannot open the file", errno);
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error("it is no regular file");
    if (status.st_size == 0)
        throw std::runtime_error("the file is empty");
    m_sizeBytes = static_cast<std::uint64_t>(status.st_size);
    m_chain = walkDirectoryChain(file.get());
    if (!m_chain.isTiff)
        throw std::runtime_error("it is no TIFF file");
    if (m_chain.offsets.empty())
        throw std::runtime_error(m_chain.fault.isEmpty() ? "the file has no page"
                                                         : m_chain.fault.toStdString());
    m_handle = openTiffForReading(file.release(), m_messages);
}

void TiffFile::readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const
{
    readFully(TIFFFileno(m_handle.get()), offset, bytes);
}

/// libtiff 4.5 keeps the note that a JPEG page is decoded to full-size RGB when it goes on to
/// another directory, and then mistakes the strip sizes of a sub-sampled page there.
void TiffFile::leavePage()
{
    std::uint16_t compression = 0;
    if (m_isLoaded && TIFFGetField(m_handle.get(), TIFFTAG_COMPRESSION, &compression) == 1
        && compression == COMPRESSION_JPEG)
        TIFFSetField(m_handle.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RAW);
    m_isLoaded = false;
    m_current = -1;
}

tiff* TiffFile::describe(int index)
{
    if (index == m_current)
        return m_handle.get();
    leavePage();
    m_messages.forget();
    if (TIFFSetSubDirectory(m_handle.get(), m_chain.offsets.at(static_cast<std::size_t>(index)))
        == 0)
        m_messages.fail("the directory of the page cannot be read");
    m_current = index;
    m_isLoaded = true;
    m_isPristine = true;
    return m_handle.get();
}

tiff* TiffFile::select(int index)
{
    if (!m_isPristine)
        m_current = -1; // libtiff starts a decoder anew only with the directory
    describe(index);
    m_isPristine = false;
    // Complaints about single tags of a directory that could be read are in the log; what counts
    // from here on is whether the pixels can be decoded.
    m_messages.forget();
    return m_handle.get();
}

} // namespace pagestack
