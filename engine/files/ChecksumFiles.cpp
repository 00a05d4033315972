#include "engine/files/ChecksumFiles.h"

#include "engine/files/FileState.h"
#include "engine/files/StagedFile.h"
#include "engine/support/Paths.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <nettle/sha2.h>
#include <stdexcept>
#include <string>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qsizetype hexDigits = 64;
    constexpr qsizetype longestLine = 65536;
    constexpr std::uint64_t headBytes = 16;

    std::span<const std::uint8_t> spanOf(const QByteArray& bytes)
    {
        return { reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                 static_cast<std::size_t>(bytes.size()) };
    }

    void putHead(std::span<std::uint8_t> to, std::uint64_t before, std::uint64_t size)
    {
        for (std::size_t i = 0; i < 8; ++i) {
            to[i] = static_cast<std::uint8_t>(before >> 8 * i);
            to[8 + i] = static_cast<std::uint8_t>(size >> 8 * i);
        }
    }

    bool isHex(char sign)
    {
        return (sign >= '0' && sign <= '9') || (sign >= 'a' && sign <= 'f')
            || (sign >= 'A' && sign <= 'F');
    }

    /// The name of a line, as it stands there; null when the line is none that sha256sum writes.
    QByteArray nameIn(const QByteArray& line)
    {
        const qsizetype start = line.startsWith('\\') ? 1 : 0;
        const qsizetype nameAt = start + hexDigits + 2;
        const bool isLong = line.size() > nameAt;
        if (!isLong || !std::all_of(line.begin() + start, line.begin() + start + hexDigits, isHex)
            || line.at(nameAt - 2) != ' '
            || (line.at(nameAt - 1) != ' ' && line.at(nameAt - 1) != '*'))
            return {};
        return line.left(start) + line.mid(nameAt);
    }

    /// Stands for a name: many names take less room so.
    using NameKey = std::array<std::uint8_t, 16>;

    NameKey keyOf(QByteArray name)
    {
        if (const qsizetype start = name.startsWith('\\') ? 1 : 0; name.mid(start, 2) == "./")
            name.remove(start, 2);
        sha256_ctx context {};
        sha256_init(&context);
        sha256_update(&context, static_cast<std::size_t>(name.size()), spanOf(name).data());
        NameKey key {};
        sha256_digest(&context, key.size(), key.data());
        return key;
    }

    /// Copies the lines of `from` to `to` but those of the names that `replaced`, which is sorted,
    /// has. Throws std::runtime_error for a line that is not understood.
    void copyOtherLines(QFile& from, StagedFile& to, const std::vector<NameKey>& replaced)
    {
        for (int number = 1; !from.atEnd(); ++number) {
            QByteArray line = from.readLine(longestLine);
            if (line.endsWith('\n'))
                line.chop(1);
            else if (!from.atEnd() || line.isEmpty())
                line.clear(); // too long, or it cannot be read
            const QByteArray name = nameIn(line);
            if (name.isNull() && !line.startsWith('#'))
                throw std::runtime_error("the file is kept as it is, since its line "
                                         + std::to_string(number) + " is none of sha256sum");
            if (name.isNull() || !std::ranges::binary_search(replaced, keyOf(name)))
                to.write(spanOf(line + '\n'));
        }
        if (from.error() != QFileDevice::NoError)
            throw std::runtime_error("the file that is there cannot be read: "
                                     + from.errorString().toStdString());
    }

} // namespace

QByteArray ChecksumFiles::escaped(const QByteArray& name, bool& isEscaped)
{
    QByteArray text;
    for (const char sign : name) {
        if (sign == '\\')
            text += "\\\\";
        else if (sign == '\n')
            text += "\\n";
        else if (sign == '\r')
            text += "\\r";
        else
            text += sign;
    }
    isEscaped = text.size() != name.size();
    return text;
}

void ChecksumFiles::add(const QString& path, const FileDigest& digest)
{
    bool isEscaped = false;
    const QByteArray name = escaped(QFile::encodeName(lastPathComponent(path)), isEscaped);
    const QByteArray line = (isEscaped ? "\\" : "") + digest.hex().toLatin1() + "  " + name + '\n';
    const QString folder = folderPart(path);
    std::vector<std::uint8_t> entry(headBytes);
    putHead(entry, m_lastEntries.value(folder), static_cast<std::uint64_t>(line.size()));
    entry.insert(entry.end(), line.begin(), line.end());
    const std::uint64_t offset = std::max<std::uint64_t>(m_entries.size(), 1); // 0 is no entry
    m_entries.writeAt(offset, entry);
    m_lastEntries.insert(folder, offset); // not before: without an entry there is nothing to write
}

/// The line, and where that of the output before it lies; 0: there is none.
QByteArray ChecksumFiles::entryAt(std::uint64_t offset, std::uint64_t& before)
{
    std::array<std::uint8_t, headBytes> head {};
    m_entries.readAt(offset, head);
    const auto number = [&](std::size_t at) {
        std::uint64_t value = 0;
        for (std::size_t i = 8; i-- > 0;)
            value = value << 8U | head.at(at + i);
        return value;
    };
    before = number(0);
    std::vector<std::uint8_t> line(number(8));
    m_entries.readAt(offset + headBytes, line);
    return { reinterpret_cast<const char*>(line.data()), static_cast<qsizetype>(line.size()) };
}

std::vector<ChecksumFiles::Trouble> ChecksumFiles::write()
{
    std::vector<Trouble> troubles;
    QStringList folders = m_lastEntries.keys();
    folders.sort();
    for (const QString& folder : folders) {
        const QString path = joinedPath(folder, u"SHA256SUMS"_s);
        try {
            writeOne(path, m_lastEntries.value(folder));
        } catch (const std::runtime_error& error) {
            troubles.push_back({ path, QString::fromUtf8(error.what()) });
        }
    }
    return troubles;
}

void ChecksumFiles::writeOne(const QString& path, std::uint64_t lastEntry)
{
    std::vector<std::uint64_t> entries;
    for (std::uint64_t at = lastEntry; at != 0;) {
        entries.push_back(at);
        entryAt(at, at);
    }
    std::ranges::reverse(entries);
    std::uint64_t before = 0;
    StagedFile file(path);
    const std::optional<FileState> state = fileState(QFile::encodeName(path));
    if (state) {
        std::vector<NameKey> replaced;
        replaced.reserve(entries.size());
        for (const std::uint64_t at : entries)
            replaced.push_back(keyOf(nameIn(entryAt(at, before).chopped(1))));
        std::ranges::sort(replaced);
        QFile old(path);
        if (!old.open(QIODevice::ReadOnly))
            throw std::runtime_error("the file that is there cannot be read: "
                                     + old.errorString().toStdString());
        copyOtherLines(old, file, replaced);
    }
    for (const std::uint64_t at : entries)
        file.write(spanOf(entryAt(at, before)));
    file.commit(state ? StagedFile::Existing::Replaced : StagedFile::Existing::Kept, state);
}

} // namespace pagestack
