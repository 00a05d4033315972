#include "engine/image/tiff/TiffDirectoryChain.h"

#include "engine/files/PosixFile.h"
#include "engine/threads/StopScope.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <stdexcept>
#include <sys/stat.h>
#include <utility>

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

    constexpr std::size_t mostPages = 1'048'576; // which is as far as libtiff goes
    constexpr std::size_t firstCheck = 64;

    /// The first of the pages whose directory begins within an earlier one of `smallest` bytes, and
    /// that earlier page, both counted from 0; none when all directories lie apart.
    std::optional<std::pair<std::size_t, std::size_t>>
    firstOverlap(const std::vector<std::uint64_t>& offsets, std::uint64_t smallest)
    {
        std::optional<std::pair<std::size_t, std::size_t>> found;
        std::vector<std::uint32_t> order;
        for (std::size_t count = offsets.size();;) {
            order.resize(count);
            std::iota(order.begin(), order.end(), 0U);
            std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
                return std::pair(offsets[a], a) < std::pair(offsets[b], b);
            });
            std::size_t first = count;
            for (std::size_t i = 1; i < order.size(); ++i) {
                const auto [earlier, later] = std::minmax(order[i - 1], order[i]);
                if (offsets[order[i]] - offsets[order[i - 1]] >= smallest || later >= first)
                    continue;
                first = later;
                found = { later, earlier };
            }
            if (first == count)
                return found;
            count = first; // Neighbours of a later page may have hidden an earlier overlap.
        }
    }

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
            std::size_t nextCheck = firstCheck;
            while (offset != 0) {
                if (m_chain.offsets.size() == nextCheck) {
                    if (cutAtOverlap())
                        return std::move(m_chain);
                    nextCheck *= 2;
                }
                if (isCutShort())
                    break;
                const std::optional<std::uint64_t> next = readDirectory(offset);
                if (!next)
                    break;
                offset = *next;
            }
            cutAtOverlap();
            return std::move(m_chain);
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
            const std::optional<std::uint64_t> next
                = number(linkAt(offset, *entries), m_chain.isBigTiff ? 8 : 4);
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

        /// Ends the chain before the first page that it has been to, or that shares bytes with
        /// another one. A sound file has no such page; another could have one every few bytes.
        bool cutAtOverlap()
        {
            const auto overlap = firstOverlap(m_chain.offsets, m_chain.isBigTiff ? 36 : 18);
            if (!overlap)
                return false;
            const auto [page, earlier] = *overlap;
            const auto begin = m_chain.offsets.begin();
            const auto end = begin + static_cast<std::ptrdiff_t>(page);
            const auto same = std::find(begin, end, *end);
            m_chain.fault = same == end
                ? u"the directory after page %2 overlaps that of page %1"_s.arg(earlier + 1)
                : u"the chain of pages leads back to page %1 after page %2"_s.arg(same - begin + 1);
            m_chain.fault = m_chain.fault.arg(page);
            m_chain.offsets.resize(page);
            m_chain.cutLink = same == end ? linkOfLast() : FileRange {};
            return true;
        }

        bool isCutShort()
        {
            if (m_chain.offsets.size() == mostPages)
                m_chain.fault = u"the file has more than %1 pages"_s.arg(mostPages);
            else if (StopScope::isStopped())
                m_chain.fault = u"the search for pages was stopped after page %1"_s.arg(
                    m_chain.offsets.size());
            if (m_chain.fault.isEmpty())
                return false;
            m_chain.cutLink = linkOfLast();
            return true;
        }

        FileRange linkOfLast() const
        {
            if (m_chain.offsets.empty())
                return {};
            const std::uint64_t offset = m_chain.offsets.back();
            const std::uint64_t entries = number(offset, m_chain.isBigTiff ? 8 : 2).value_or(0);
            const std::uint64_t begin = linkAt(offset, entries);
            return { begin, begin + (m_chain.isBigTiff ? 8 : 4) };
        }

        /// Where the directory at `offset` names the next one.
        std::uint64_t linkAt(std::uint64_t offset, std::uint64_t entries) const
        {
            return offset + (m_chain.isBigTiff ? 8 + entries * 20 : 2 + entries * 12);
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
