#pragma once

#include "engine/image/verify/TiffProof.h"
#include "engine/job/Process.h"

#include <span>

namespace pagestack {

class MultiPageTiffWriter;
class PageImage;
class PageSupply;
class SourceFindings;
struct PrefetchedPage;

/// The way of a run to keep the pages of a source together, in one TIFF file. On the job's thread.
class GatheredTiff
{
public:
    /// All are borrowed; `found` is of the source in hand.
    GatheredTiff(Process& job, const RunSetup& options, PageSupply& supply, SourceFindings& found)
        : m_job(job)
        , m_options(options)
        , m_supply(supply)
        , m_found(found)
    {
    }

    /// As Process::saveAsTiff.
    bool save(const QString& path, const QList<int>& range, const TiffDocument& document,
              LogFiles& logFiles);

private:
    void skipGathered(const TiffDocument& document, const QString& path, LogFiles& logFiles);
    void gatherPages(MultiPageTiffWriter& file, const QString& path, const QList<int>& range,
                     const TiffDocument& document, LogFiles& logFiles);
    std::size_t copyPages(MultiPageTiffWriter& file, std::span<const int> range,
                          const TiffDocument& document) const;
    Process::PageOutcome tellOfCopy(const TiffDocument& document, LogFile& record);
    Process::PageOutcome gatherPage(MultiPageTiffWriter& file, const TiffDocument& document,
                                    LogFile& record);
    void appendPage(MultiPageTiffWriter& file, const PageImage& image, PrefetchedPage& prepared);
    void append(MultiPageTiffWriter& file, const PageImage& image, PrefetchedPage prepared);
    void look(StagedFile& file);

    Process& m_job;
    const RunSetup& m_options;
    PageSupply& m_supply;
    SourceFindings& m_found;
    std::optional<FileDigest> m_digest; ///< of the complete file, where it is wanted
    TiffProof m_proof; ///< of the pages gathered here, where they are verified
};

} // namespace pagestack
