#include "engine/image/tiff/TiffDirectoryChain.h"

#include "engine/files/PosixFile.h"
#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/threads/StopScope.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <sys/stat.h>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

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
            for (std::uint64_t offset = readHeader(); offset != 0 && !isCutShort();)
                offset = readDirectory(offset).value_or(0);
            if (m_chain.fault.isEmpty())
                m_chain.cutLink = m_firstLink;
            return std::move(m_chain);
        }

    private:
        /// Fills `bytes` from `offset` on; false at the end of the file or when it cannot be read.
        /// What is asked for lies close together: a stretch of the file is read at once.
        bool read(std::uint64_t offset, std::span<std::uint8_t> bytes)
        {
            if (offset > m_fileSize || bytes.size() > m_fileSize - offset)
                return false;
            if (offset < m_windowAt || offset + bytes.size() > m_windowAt + m_windowBytes) {
                m_windowAt = offset;
                m_windowBytes = 0;
                const std::uint64_t size
                    = std::min<std::uint64_t>(m_window.size(), m_fileSize - offset);
                try {
                    readFully(m_file, offset, std::span(m_window).first(size));
                } catch (const std::runtime_error&) {
                    return false; // the chain ends here; its fault says so
                }
                m_windowBytes = size;
            }
            std::copy_n(m_window.begin() + static_cast<std::ptrdiff_t>(offset - m_windowAt),
                        bytes.size(), bytes.begin());
            return true;
        }

        /// The unsigned number of `count` bytes at `offset`, none past the end of the file.
        std::optional<std::uint64_t> number(std::uint64_t offset, std::size_t count)
        {
            std::array<std::uint8_t, 8> bytes = {};
            if (!read(offset, std::span(bytes).first(count)))
                return std::nullopt;
            return numberIn(std::span(bytes).first(count), m_format.isBigEndian);
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
            m_format.isBigEndian = big;
            const std::uint64_t version = number(2, 2).value_or(0);
            if (version != 42 && version != 43)
                return 0;
            m_chain.isTiff = true;
            m_format.isBigTiff = version == 43;
            const std::optional<std::uint64_t> first
                = number(m_format.firstLinkAt(), m_format.offsetBytes());
            if (!first)
                m_chain.fault = u"the file ends within its header"_s;
            return first.value_or(0);
        }

        struct Head
        {
            std::uint64_t entries = 0;
            bool isReduced = false;
        };

        /// The start of a directory; none past the end of the file.
        std::optional<Head> head(std::uint64_t offset)
        {
            constexpr std::size_t entriesLookedAt = 4;
            std::array<std::uint8_t, 8 + entriesLookedAt* 20> bytes = {};
            const std::size_t count = m_format.countBytes();
            const std::size_t size = count + entriesLookedAt * m_format.entryBytes();
            const std::uint64_t left = offset < m_fileSize ? m_fileSize - offset : 0;
            const auto start = std::span(bytes).first(
                std::max<std::uint64_t>(count, std::min<std::uint64_t>(size, left)));
            if (!read(offset, start))
                return std::nullopt;
            Head found { numberIn(start.first(count), m_format.isBigEndian) };
            for (std::uint64_t entry = 0; entry < std::min<std::uint64_t>(found.entries, 4);
                 ++entry) {
                const std::size_t at = count + entry * m_format.entryBytes();
                if (at + m_format.entryBytes() <= start.size())
                    found.isReduced
                        = found.isReduced || isReduced(start.subspan(at, m_format.entryBytes()));
            }
            return found;
        }

        /// Whether the entry says that its page is a thumbnail or a mask.
        bool isReduced(std::span<const std::uint8_t> entry) const
        {
            constexpr unsigned newSubfileType = 254;
            constexpr unsigned subfileType = 255;
            constexpr unsigned shortType = 3;
            const std::uint64_t tag = numberIn(entry.first(2), m_format.isBigEndian);
            const std::uint64_t type = numberIn(entry.subspan(2, 2), m_format.isBigEndian);
            const std::uint64_t value = numberIn(
                entry.subspan(entry.size() - m_format.offsetBytes(), type == shortType ? 2 : 4),
                m_format.isBigEndian);
            constexpr std::uint64_t reducedOrMask = 1U | 4U;
            return (tag == newSubfileType && (value & reducedOrMask) != 0)
                || (tag == subfileType && value == 2);
        }

        /// Adds the directory at `offset`; the offset of the next one, none when it cannot be read.
        std::optional<std::uint64_t> readDirectory(std::uint64_t offset)
        {
            const std::optional<Head> start = head(offset);
            if (!start || start->entries == 0
                || start->entries > m_fileSize / m_format.entryBytes()) {
                m_chain.fault = faultAt(!start);
                return std::nullopt;
            }
            if (isOverlapping(offset))
                return std::nullopt;
            m_pages.emplace(offset, m_chain.offsets.size() + 1);
            m_chain.offsets.push_back(offset);
            if (start->isReduced)
                m_chain.reduced.push_back(static_cast<int>(m_chain.offsets.size()));
            m_link.begin = m_format.linkAt(offset, start->entries);
            m_link.end = m_link.begin + m_format.offsetBytes();
            if (m_chain.offsets.size() == 1)
                m_firstLink = m_link;
            const std::optional<std::uint64_t> next = number(m_link.begin, m_format.offsetBytes());
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

        /// Whether the chain has been to the directory, or it shares bytes with another one: a
        /// sound file has none, another could have one every few bytes.
        bool isOverlapping(std::uint64_t offset)
        {
            const auto after = m_pages.lower_bound(offset);
            const std::size_t last = m_chain.offsets.size();
            if (after != m_pages.end() && after->first == offset) {
                m_chain.fault
                    = u"the chain of pages leads back to page %1 after page %2"_s.arg(after->second)
                          .arg(last);
                return true;
            }
            const std::uint64_t smallest = m_format.linkAt(0, 1) + m_format.offsetBytes();
            const auto before = after == m_pages.begin() ? m_pages.end() : std::prev(after);
            const bool reachesIn = before != m_pages.end() && offset - before->first < smallest;
            if (!reachesIn && (after == m_pages.end() || after->first - offset >= smallest))
                return false;
            m_chain.fault = u"the directory after page %1 overlaps that of page %2"_s.arg(last).arg(
                (reachesIn ? before : after)->second);
            m_chain.cutLink = m_link;
            return true;
        }

        bool isCutShort()
        {
            if (m_chain.offsets.size() == mostPages)
                m_chain.fault = u"the file has more than %1 pages"_s.arg(mostPages);
            else if (!m_chain.offsets.empty() && StopScope::isStopped()) // a stop is no fault of it
                m_chain.fault = u"the search for pages was stopped after page %1"_s.arg(
                    m_chain.offsets.size());
            else
                return false;
            m_chain.cutLink = m_link;
            return true;
        }

        int m_file;
        std::uint64_t m_fileSize = 0;
        TiffDirectoryChain m_chain;
        TiffFormat& m_format = m_chain.format;
        std::map<std::uint64_t, std::size_t> m_pages; ///< number, from 1, by offset
        FileRange m_link; ///< of the last directory
        FileRange m_firstLink;
        std::array<std::uint8_t, 512> m_window = {}; ///< of the file, from `m_windowAt` on
        std::uint64_t m_windowAt = 0;
        std::uint64_t m_windowBytes = 0;
    };

} // namespace

TiffDirectoryChain walkDirectoryChain(int fileDescriptor)
{
    return DirectoryWalker(fileDescriptor).walk();
}

} // namespace pagestack
