#pragma once

#include "engine/files/FileState.h"
#include "engine/files/StagedFile.h"
#include "engine/job/PageSupply.h"
#include "engine/job/Process.h"
#include "engine/job/SourceFindings.h"
#include "engine/plan/OutputNames.h"

#include <functional>
#include <memory>
#include <optional>

namespace pagestack {

class PageImage;
struct PlanPlace;

/// One run of a Process: walks its outputs, writes the pages, fills the records of the log and
/// announces all of it with the signals of the job. Lives on the thread of the run.
class ConversionRun
{
public:
    /// `job`, which has its settings, outlives the run.
    ConversionRun(Process& job, RunSetup options);
    ~ConversionRun();
    ConversionRun(const ConversionRun&) = delete;
    ConversionRun& operator=(const ConversionRun&) = delete;

    /// Converts all outputs, until the job is no longer combining. A source or page that fails does
    /// not end it; what an observer throws does.
    void convertOutputs();

    /// As Process::saveAsTiff.
    bool saveAsTiff(const QString& path, const QList<int>& range, const TiffDocument& document,
                    LogFiles& logFiles);

    /// True when an exception ended the conversion of a source.
    bool hasFailed() const { return m_hasFailed; }

private:
    using PageOutcome = Process::PageOutcome;

    /// The item in hand.
    struct Source
    {
        const OutputFile& output;
        const TiffDocument& document;
        LogFiles& record;
        std::optional<FileIdentity> identity; ///< of the file that `document` reads
    };

    void tellForesights(const QList<OutputFile>& plan);
    void convertOutput(const OutputFile& output, qsizetype index);
    void convertItem(const OutputFile& output, PlanPlace place, LogFiles& record);
    void convertDocument(const Source& source, const FileItem& item);
    void reportChain(const TiffDocument& document, const FileItem& item);

    void reportChoice(const FileItem& item, const QList<int>& range);

    void keepPagesTogether(const Source& source, const QList<int>& range);
    void skipTogether(const Source& source, const QList<int>& range, const QString& path);

    void writePages(const Source& source, const QList<int>& range);
    void writePage(const Source& source, int page);
    void savePage(const Source& source, PageImage& image, LogFile& record);
    QString saveImage(const Source& source, PageImage& image, int page, const QString& path);

    bool isWanted(const QString& outputPath) const;

    Process& m_job;
    const Settings& m_settings;
    const RunSetup m_options;
    const OutputNames m_names;
    PageSupply m_supply;
    std::optional<SourceFindings> m_found; ///< of the source in hand
    bool m_hasFailed = false;
};

} // namespace pagestack
