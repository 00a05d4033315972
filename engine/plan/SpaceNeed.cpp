#include "engine/plan/SpaceNeed.h"

#include "engine/files/FileState.h"
#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/OpenTiffFile.h"
#include "engine/plan/OutputNames.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"

#include <QFile>
#include <QLocale>
#include <QStorageInfo>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Reads single values of one directory (TIFF 6.0, section 8).
    class PageOutline
    {
    public:
        PageOutline(const OpenTiffFile& file, int page, bool becomesBilevel)
            : m_file(file)
            , m_directory(file.directory(page - 1))
            , m_becomesBilevel(becomesBilevel)
        {
        }

        double bmpBytes() const
        {
            const double bits = bmpBits();
            const double columns = width();
            const double rows = height();
            const double bytes // of the page as it is or turned
                = bmpOverhead
                + std::max(bmpRows(columns, rows, bits), bmpRows(rows, columns, bits));
            return bytes <= std::numeric_limits<std::uint32_t>::max() ? bytes : 0; // is refused
        }

        double tiffBytes() const
        {
            const double columns = wholeTiles(width(), tileWidth);
            const double rows = wholeTiles(height(), tileHeight);
            const double planes = m_becomesBilevel ? 1 : first(samplesPerPixel, 1);
            const double bits = m_becomesBilevel ? 1 : first(bitsPerSample, 1);
            const double pixels = planes * rows * std::ceil(columns * bits / 8);
            // Beside the tables of the source there may be new ones, for small strips.
            constexpr double smallStrip = 8192;
            double bytes = pixels + entryBytes * std::ceil(pixels / smallStrip);
            for (const TiffTagValue& value : m_directory.values)
                bytes
                    += entryBytes + static_cast<double>(std::min(value.bytes, m_file.sizeBytes()));
            return bytes < mostBytes ? bytes : 0; // is refused
        }

    private:
        static constexpr unsigned imageWidth = 256;
        static constexpr unsigned imageLength = 257;
        static constexpr unsigned bitsPerSample = 258;
        static constexpr unsigned photometric = 262;
        static constexpr unsigned samplesPerPixel = 277;
        static constexpr unsigned tileWidth = 322;
        static constexpr unsigned tileHeight = 323;
        static constexpr double bmpOverhead = 54 + 4 * 256;
        static constexpr double entryBytes = 20;
        static constexpr double mostBytes = 1e15;

        double width() const { return static_cast<double>(first(imageWidth, 0)); }
        double height() const { return static_cast<double>(first(imageLength, 0)); }

        double wholeTiles(double pixels, unsigned tag) const
        {
            const double side = first(tag, 1);
            return side > 0 ? std::ceil(pixels / side) * side : pixels;
        }

        static double bmpRows(double columns, double rows, double bits)
        {
            return rows * 4 * std::ceil(columns * bits / 32);
        }

        double bmpBits() const
        {
            if (m_becomesBilevel)
                return 1;
            constexpr double palette = 3;
            const double bits = first(bitsPerSample, 1);
            const double kind = first(photometric, 1);
            const bool isGray = kind <= 1;
            if (first(samplesPerPixel, 1) != 1 || (!isGray && (kind != palette || bits > 8)))
                return 24;
            return bits == 1 ? 1 : 8;
        }

        double first(unsigned tag, double otherwise) const
        {
            static constexpr std::array<std::size_t, 17> bytesOfType { 0, 1, 0, 2, 4, 0, 0, 0, 0,
                                                                       0, 0, 0, 0, 0, 0, 0, 8 };
            const TiffTagValue* value = m_directory.find(tag);
            if (value == nullptr || value->count == 0 || value->type >= bytesOfType.size()
                || bytesOfType.at(value->type) == 0)
                return otherwise;
            std::array<std::uint8_t, 8> bytes = {};
            const auto number = std::span(bytes).first(bytesOfType.at(value->type));
            m_file.readAt(value->offset, number);
            return static_cast<double>(numberIn(number, m_file.isBigEndian()));
        }

        const OpenTiffFile& m_file;
        const TiffDirectory m_directory;
        const bool m_becomesBilevel;
    };

    /// What outputs take on one file system. The file that one replaces goes when it is complete.
    struct Need
    {
        QString folder;
        double taken = 0;
        double most = 0;
        double all = 0;

        void add(double bytes, std::optional<FileState> replaced)
        {
            all += bytes;
            most = std::max(most, taken + bytes);
            taken += bytes - (replaced ? static_cast<double>(replaced->sizeBytes) : 0);
        }
    };

    bool isKnownFor(const Settings& settings, const RunOptions& options)
    {
        const auto type = static_cast<OutputType>(settings.outputType());
        return type == OutputType::Bmp
            || (type == OutputType::Tiff
                && settings.tiffCompressionIndex() == static_cast<int>(TiffCompression::None)
                && !options.treatment.keepsCompression);
    }

    QString nearestFolder(QString folder)
    {
        while (!fileIdentity(QFile::encodeName(folder)) && folder != u"/" && !folder.isEmpty())
            folder = folderPart(folder);
        return folder;
    }

    using Needs = std::map<std::uint64_t, Need>; // by device

    /// Where `isKnownFor` the settings. None when `goesOn` is false.
    Needs needsOf(const QList<OutputFile>& outputs, const Settings& settings,
                  const RunOptions& options,
                  const std::function<bool(const QString& path)>& isWanted,
                  const std::function<bool()>& goesOn)
    {
        const OutputNames names(settings, options);
        const bool isBilevel = options.treatment.bilevel != Bilevel::None;
        const bool isBmp = settings.outputType() == static_cast<int>(OutputType::Bmp);
        Needs needs;
        for (const OutputFile& output : outputs) {
            if (!goesOn())
                return {};
            const QString folder = nearestFolder(names.folder(output));
            const auto identity = fileIdentity(QFile::encodeName(folder));
            if (!identity || output.pages.isEmpty())
                continue;
            Need& need = needs.try_emplace(identity->device, Need { folder }).first->second;
            const auto add = [&](int page, double bytes) {
                const QString path = names.path(output, page);
                const auto replaced = fileState(QFile::encodeName(path));
                if (!replaced || !isWanted || isWanted(path))
                    need.add(bytes, replaced);
            };
            try {
                const OpenTiffFile file(output.filename);
                double together = 0;
                for (const int page : output.pages) {
                    if (!goesOn() || page > file.pageCount())
                        break;
                    const PageOutline outline(file, page, isBilevel);
                    const double bytes = isBmp ? outline.bmpBytes() : outline.tiffBytes();
                    if (isKeptTogether(settings))
                        together += bytes;
                    else
                        add(page, bytes);
                }
                if (isKeptTogether(settings))
                    add(0, together);
            } catch (const std::runtime_error&) {
                // It is told when it is its turn.
            }
        }
        return needs;
    }

    QString sizeText(quint64 bytes)
    {
        return QLocale::c().formattedDataSize(static_cast<qint64>(bytes), 1,
                                              QLocale::DataSizeSIFormat);
    }

} // namespace

QString shortageText(const SpaceShortage& shortage)
{
    return u"the outputs can take %1 there, %2 are free"_s.arg(sizeText(shortage.neededBytes),
                                                               sizeText(shortage.freeBytes));
}

std::vector<SpaceShortage> spaceShortages(const QList<OutputFile>& outputs,
                                          const Settings& settings, const RunOptions& options,
                                          const std::function<bool(const QString& path)>& isWanted,
                                          const std::function<bool()>& goesOn)
{
    if (!isKnownFor(settings, options))
        return {};
    const Needs needs = needsOf(outputs, settings, options, isWanted, goesOn);
    std::vector<SpaceShortage> found;
    for (const auto& [device, need] : needs) {
        const qint64 available = QStorageInfo(need.folder).bytesAvailable();
        if (available >= 0 && need.most > static_cast<double>(available))
            found.push_back(
                { need.folder, static_cast<quint64>(need.most), static_cast<quint64>(available) });
    }
    return found;
}

std::optional<quint64> outputBytes(const QList<OutputFile>& outputs, const Settings& settings,
                                   const RunOptions& options,
                                   const std::function<bool(const QString& path)>& isWanted,
                                   const std::function<bool()>& goesOn)
{
    if (!isKnownFor(settings, options))
        return std::nullopt;
    double bytes = 0;
    for (const auto& [device, need] : needsOf(outputs, settings, options, isWanted, goesOn))
        bytes += need.all;
    return goesOn() ? std::optional(static_cast<quint64>(bytes)) : std::nullopt;
}

} // namespace pagestack
