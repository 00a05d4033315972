#include "engine/image/tiff/TiffFile.h"

#include "engine/files/PosixFile.h"

#include <QFile>
#include <QFileInfo>

#include <tiffio.h>

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace pagestack {

namespace {

    /// libtiff holds the values of all tags at once. Some profiles and texts have many megabytes.
    constexpr std::uint64_t mostValueBytes = std::uint64_t { 64 } * 1024 * 1024;

    /// Throws std::runtime_error when the values, which may share their bytes, are more than that.
    /// Those that reach out of the file do not count: libtiff leaves them out.
    void checkValues(const TiffDirectory& directory, std::uint64_t fileSizeBytes)
    {
        std::uint64_t sum = 0;
        for (const TiffTagValue& value : directory.values) {
            switch (value.tag) {
            // Lists as long as the page has strips or tiles, and the layers that some programs put
            // beside the page. They are bounded as any single allocation is, and read once.
            case TIFFTAG_STRIPOFFSETS:
            case TIFFTAG_STRIPBYTECOUNTS:
            case TIFFTAG_TILEOFFSETS:
            case TIFFTAG_TILEBYTECOUNTS:
            case TIFFTAG_IMAGESOURCEDATA:
                continue;
            default:
                break;
            }
            if (value.offset > fileSizeBytes || value.bytes > fileSizeBytes - value.offset)
                continue;
            if (value.bytes > mostValueBytes - sum)
                throw std::runtime_error("its tags announce more than "
                                         + std::to_string(mostValueBytes >> 20U)
                                         + " MiB of values");
            sum += value.bytes;
        }
    }

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

    private:
        int m_file;
    };

} // namespace

struct TiffFile::Opened
{
    explicit Opened(const QString& name);

    QString path;
    FileDescriptor file;
    FileState state;
    TiffDirectoryChain chain;
};

TiffFile::Opened::Opened(const QString& name)
    : path(name)
    // Without O_NONBLOCK a named pipe would wait for its writer.
    , file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
{
    struct stat status = {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
        throwFileSystemError("cannot open the file", errno);
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error("it is no regular file");
    if (status.st_size == 0)
        throw std::runtime_error("the file is empty");
    state = FileState(status);
    chain = walkDirectoryChain(file.get());
    if (!chain.isTiff)
        throw std::runtime_error("it is no TIFF file");
    if (chain.offsets.empty())
        throw std::runtime_error(chain.fault.isEmpty() ? "the file has no page"
                                                       : chain.fault.toStdString());
}

TiffFile::TiffFile(const QString& path)
    : TiffFile(std::make_shared<const Opened>(path), false)
{
    openHandle();
}

TiffFile::TiffFile(std::shared_ptr<const Opened> opened, bool isClone)
    : m_opened(std::move(opened))
    , m_messages(QFileInfo(m_opened->path).fileName())
    , m_isClone(isClone)
{
}

TiffFile::~TiffFile() = default;

std::shared_ptr<TiffFile> TiffFile::clone() const
{
    return std::shared_ptr<TiffFile>(new TiffFile(m_opened, true));
}

const QString& TiffFile::path() const { return m_opened->path; }

const TiffDirectoryChain& TiffFile::chain() const { return m_opened->chain; }

std::uint64_t TiffFile::sizeBytes() const
{
    return static_cast<std::uint64_t>(m_opened->state.sizeBytes);
}

const FileState& TiffFile::stateAtOpening() const { return m_opened->state; }

void TiffFile::readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const
{
    readFully(m_opened->file.get(), offset, bytes);
}

TiffDirectory TiffFile::directory(int index) const
{
    return readDirectoryEntries(m_opened->file.get(), chain(),
                                chain().offsets.at(static_cast<std::size_t>(index)));
}

void TiffFile::openHandle()
{
    // libtiff, which walks the chain for itself and keeps what it finds, would hold a hundred
    // megabytes a handle for directories that are none of the file's pages.
    if (!m_handle)
        m_handle = openTiffForReading(m_opened->file.get(), m_messages, chain().cutLink);
}

/// libtiff walks the chain of directories, and says what it finds wrong with it, once for each
/// handle, before it reads another page than the first.
void TiffFile::walkChain(int index)
{
    if (index == 0 || m_hasWalked || chain().fault.isEmpty())
        return;
    m_hasWalked = true;
    openHandle();
    const PageDiagnostics before = m_messages.takeDiagnostics();
    m_messages.adopt(before);
    TIFFNumberOfDirectories(m_handle.get());
    if (m_isClone) {
        m_messages.takeDiagnostics();
        m_messages.adopt(before);
    }
}

void TiffFile::adopt(int index, const PageDiagnostics& found)
{
    walkChain(index);
    m_messages.adopt(found);
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
    checkValues(directory(index), sizeBytes());
    openHandle();
    leavePage();
    m_messages.forget();
    walkChain(index);
    if (TIFFSetSubDirectory(m_handle.get(), chain().offsets.at(static_cast<std::size_t>(index)))
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
