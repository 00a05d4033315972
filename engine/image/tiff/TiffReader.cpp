#include "engine/image/tiff/TiffReader.h"

#include <tiffio.h>

namespace pagestack {

TiffReader::TiffReader(std::shared_ptr<const OpenTiffFile> document)
    : m_document(std::move(document))
    , m_messages(m_document->fileName())
{
}

TiffReader::TiffReader(const QString& path)
    : TiffReader(std::make_shared<const OpenTiffFile>(path))
{
    m_speaksOfChain = true;
    openHandle(); // libtiff refuses some headers
}

void TiffReader::openHandle()
{
    if (!m_handle) // not mapped: a file that another program cuts short would end this program
        m_handle = openTiff(*this, "r", m_messages);
}

/// libtiff reads numbers one by one, also those of all other directories.
std::size_t TiffReader::read(std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    constexpr std::size_t numberBytes = 8;
    if (m_handle && bytes.size() <= numberBytes && !m_window.holds(offset, bytes.size())
        && !m_elsewhere.holds(offset, bytes.size()))
        m_elsewhere = m_document->windowAt(offset);
    return m_document->readShown(offset, bytes,
                                 m_elsewhere.holds(offset, bytes.size()) ? m_elsewhere : m_window);
}

/// libtiff walks the chain of directories, and says what it finds wrong with it, once for each
/// handle, before it reads another page than the first.
void TiffReader::walkChain(int index)
{
    if (index == 0 || m_hasWalked || m_document->chainFault().isEmpty())
        return;
    m_hasWalked = true;
    const PageDiagnostics before = m_messages.takeDiagnostics();
    m_messages.adopt(before);
    TIFFNumberOfDirectories(m_handle.get());
    if (!m_speaksOfChain) {
        m_messages.takeDiagnostics();
        m_messages.adopt(before);
    }
}

void TiffReader::adopt(int index, const PageDiagnostics& found)
{
    walkChain(index);
    m_messages.adopt(found);
}

/// libtiff 4.5 keeps the note that a JPEG page is decoded to full-size RGB when it goes on to
/// another directory, and then mistakes the strip sizes of a sub-sampled page there.
void TiffReader::leavePage()
{
    std::uint16_t compression = 0;
    if (m_isLoaded && TIFFGetField(m_handle.get(), TIFFTAG_COMPRESSION, &compression) == 1
        && compression == COMPRESSION_JPEG)
        TIFFSetField(m_handle.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RAW);
    m_isLoaded = false;
    if (m_elsewhere.offset != m_document->chain().offsets.front()) // which is asked for again
        m_elsewhere = {};
}

void TiffReader::loadAnew(int index)
{
    openHandle();
    leavePage();
    if (index != m_current) {
        m_window = m_document->windowAtPage(index);
        m_directory = m_document->directory(index, m_window);
        m_current = index;
    }
    m_messages.forget();
    walkChain(index);
    if (TIFFSetSubDirectory(m_handle.get(), m_directory.range.begin) == 0)
        m_messages.fail("the directory of the page cannot be read");
    m_isLoaded = true;
    m_isPristine = true;
}

tiff* TiffReader::load(int index)
{
    if (index != m_current || !m_isLoaded)
        loadAnew(index);
    return m_handle.get();
}

const TiffDirectory& TiffReader::directory(int index)
{
    load(index);
    return m_directory;
}

tiff* TiffReader::restart(int index)
{
    // libtiff starts a decoder anew only with the directory.
    if (index != m_current || !m_isLoaded || !m_isPristine)
        loadAnew(index);
    m_isPristine = false;
    // What libtiff said of single tags of a directory that could be read is in the log; what counts
    // from here on is whether the pixels can be decoded.
    m_messages.forget();
    return m_handle.get();
}

} // namespace pagestack
