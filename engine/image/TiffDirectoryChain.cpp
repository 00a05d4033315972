#include "engine/image/TiffDirectoryChain.h"

#include "engine/files/FileBytes.h"

#include <array>
#include <limits>
#include <optional>
#include <span>
#include <stdexcept>
#include <sys/stat.h>
#include <unordered_map>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    std::uint64_t numberIn(std::span<const std::uint8_t> bytes, bool isBigEndian)
    {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i)
            value = value << 8U | bytes[isBigEndian ? i : bytes.size() - 1 - i];
        return value;
    }

    /// Bytes of a value of each type. TIFF 6.0, section 2; those of BigTIFF from 16 on.
    constexpr std::array<std::uint64_t, 19> typeBytes { 0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                                        8, 4, 8, 4, 0, 0, 8, 8, 8 };

    class DirectoryWalker
    {
    public:
        explicit DirectoryWalker(int file)
            : m_file(file)
        {
            struct stat status = {};
            if (::fstat(file, &status) == 0 && status.st_size > 0)
                m_fileSize = static_cast<std::uint64_t>(status.st_size);
        }

        TiffDirectoryChain walk()
        {
            std::uint64_t offset = readHeader();
            if (!m_chain.isTiff)
                return m_chain;
            std::unordered_map<std::uint64_t, std::size_t> pageAtOffset;
            while (offset != 0) {
                const auto [seen, isNew] = pageAtOffset.emplace(offset, m_chain.offsets.size() + 1);
                if (!isNew) {
                    m_chain.fault = u"the chain of pages leads back to page %1 after page %2"_s
                                        .arg(seen->second)
                                        .arg(m_chain.offsets.size());
                    break;
                }
                const std::optional<std::uint64_t> next = readDirectory(offset);
                if (!next)
                    break;
                offset = *next;
            }
            return m_chain;
        }

    private:
        /// Fills `bytes` from `offset` on; false at the end of the file or when it cannot be read.
        bool read(std::uint64_t offset, std::span<std::uint8_t> bytes) const
        {
            if (offset > m_fileSize || bytes.size() > m_fileSize - offset)
                return false;
            try {
                readFully(m_file, offset, bytes);
                return true;
            } catch (const std::runtime_error&) {
                return false; // the chain ends here; its fault says so
            }
        }

        /// The unsigned number of `count` bytes at `offset`, none past the end of the file.
        std::optional<std::uint64_t> number(std::uint64_t offset, std::size_t count) const
        {
            std::array<std::uint8_t, 8> bytes = {};
            if (!read(offset, std::span(bytes).first(count)))
                return std::nullopt;
            return numberIn(std::span(bytes).first(count), m_chain.isBigEndian);
        }

        /// The offset of the first directory; 0 when there is none.
        std::uint64_t readHeader()
        {
            std::array<std::uint8_t, 4> start = {};
            if (!read(0, start))
                return 0;
            const bool little = start[0] == 'I' && start[1] == 'I';
            const bool big = start[0] == 'M' && start[1] == 'M';
            if (!little && !big)
                return 0;
            m_chain.isBigEndian = big;
            const std::uint64_t version = number(2, 2).value_or(0);
            if (version != 42 && version != 43)
                return 0;
            m_chain.isTiff = true;
            m_chain.isBigTiff = version == 43;
            const std::optional<std::uint64_t> first
                = m_chain.isBigTiff ? number(8, 8) : number(4, 4);
            if (!first)
                m_chain.fault = u"the file ends within its header"_s;
            return first.value_or(0);
        }

        /// Adds the directory at `offset`; the offset of the next one, none when the chain is cut.
        std::optional<std::uint64_t> readDirectory(std::uint64_t offset)
        {
            const std::size_t countBytes = m_chain.isBigTiff ? 8 : 2;
            const std::uint64_t entryBytes = m_chain.isBigTiff ? 20 : 12;
            const std::optional<std::uint64_t> entries = number(offset, countBytes);
            if (!entries || *entries == 0 || *entries > m_fileSize / entryBytes) {
                m_chain.fault = faultAt(!entries);
                return std::nullopt;
            }
            m_chain.offsets.push_back(offset);
            const std::uint64_t nextAt = offset + countBytes + *entries * entryBytes;
            const std::optional<std::uint64_t> next = number(nextAt, m_chain.isBigTiff ? 8 : 4);
            if (!next)
                m_chain.fault = u"the file ends within the directory of page %1"_s.arg(
                    m_chain.offsets.size());
            return next;
        }

        /// Why the directory that comes next cannot be read.
        QString faultAt(bool isOutOfFile) const
        {
            if (m_chain.offsets.empty())
                return isOutOfFile ? u"the first directory lies beyond the end of the file"_s
                                   : u"the first directory is damaged"_s;
            const QString fault = isOutOfFile
                ? u"the chain of pages leads out of the file after page %1"_s
                : u"the directory after page %1 is damaged"_s;
            return fault.arg(m_chain.offsets.size());
        }

        int m_file;
        std::uint64_t m_fileSize = 0;
        TiffDirectoryChain m_chain;
    };

} // namespace

TiffDirectoryChain walkDirectoryChain(int fileDescriptor)
{
    return DirectoryWalker(fileDescriptor).walk();
}

TiffDirectory readDirectoryEntries(int fileDescriptor, const TiffDirectoryChain& chain,
                                   std::uint64_t offset)
{
    const std::size_t countBytes = chain.isBigTiff ? 8 : 2;
    const std::size_t entryBytes = chain.isBigTiff ? 20 : 12;
    const std::size_t offsetBytes = chain.isBigTiff ? 8 : 4;
    std::vector<std::uint8_t> bytes(countBytes);
    readFully(fileDescriptor, offset, bytes);
    const std::uint64_t entries = numberIn(bytes, chain.isBigEndian);
    if (entries > std::numeric_limits<std::uint16_t>::max())
        throw std::runtime_error("the directory of the page is damaged");
    bytes.resize(entries * entryBytes);
    readFully(fileDescriptor, offset + countBytes, bytes);

    TiffDirectory directory;
    directory.range = { offset, offset + countBytes + bytes.size() + offsetBytes };
    for (std::size_t at = 0; at < bytes.size(); at += entryBytes) {
        const auto field = [&](std::size_t from, std::size_t count) {
            return numberIn(std::span(bytes).subspan(at + from, count), chain.isBigEndian);
        };
        const std::uint64_t type = field(2, 2);
        const std::uint64_t size = type < typeBytes.size() ? typeBytes.at(type) : 0;
        const std::uint64_t count = field(4, offsetBytes);
        TiffTagValue value;
        value.tag = static_cast<unsigned>(field(0, 2));
        value.count = count;
        constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
        value.bytes = size != 0 && count > most / size ? most : count * size;
        value.offset = value.bytes <= offsetBytes ? offset + countBytes + at + 4 + offsetBytes
                                                  : field(4 + offsetBytes, offsetBytes);
        directory.values.push_back(value);
    }
    return directory;
}

} // namespace pagestack
