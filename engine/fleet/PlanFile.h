#pragma once

#include "engine/fleet/JsonLines.h"
#include "engine/options/ConversionOptions.h"

#include <QCryptographicHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace pagestack {

// A plan is a file of JSON objects, one a line (docs/plan.schema.json): its head, a line a source,
// its end. Who runs a part of it needs nothing else.

/// What is the same for all sources of a plan.
struct PlanHead
{
    ConversionOptions options;
    QString outputFolder; ///< absolute; empty: beside each source
    QString existingFiles; ///< "error", "overwrite" or "skip"

    /// SHA-256 of the above, as hexadecimal digits.
    QString digest() const;
    QJsonObject toJson() const;
    /// Throws std::runtime_error.
    static PlanHead fromJson(const QJsonObject& members);
};

/// A source and all that it becomes.
struct PlanSource
{
    qint64 line = 0; ///< counts sources from 0
    QString path {}; ///< absolute
    QString shown {}; ///< as the user wrote it
    QString foundIn {}; ///< the folder by which it was found; empty: it was named itself
    qint64 sizeBytes = 0;
    qint64 modifiedNs = 0; ///< since 1970
    QString pages {}; ///< those that are converted, as PageChoice reads it; empty: none
    int pageCount = 0; ///< how many these are
    int pagesCounted = 0; ///< of the file
    int running = 1; ///< running number of the first of the outputs
    QString subfolder {}; ///< below the output folder
    QStringList targets {}; ///< names, one a page, or one where the pages are kept together
    QString fault {}; ///< why there are no pages, or may be more; empty: all is well

    QJsonObject toJson(const QString& optionsDigest) const;
    /// Throws std::runtime_error.
    static PlanSource fromJson(const QJsonObject& members);
};

/// "1-3,7" for ascending numbers.
QString pageRangesText(const QList<int>& pages);

/// What stands in the last line.
struct PlanEnd
{
    qint64 sources = 0;
    qint64 pages = 0;
    qint64 targets = 0;
    qint64 unreadable = 0; ///< sources
    QString identity; ///< SHA-256 of all lines before, as hexadecimal digits
    /// Every so many sources: the offset of the line in bytes, and the pages of the sources before.
    std::vector<std::pair<qint64, qint64>> index {};
    static constexpr qint64 indexStep = 1024;
};

/// Hands a plan on, line by line.
class PlanWriter
{
public:
    using Put = std::function<void(const QByteArray& line)>;

    PlanWriter(const PlanHead& head, Put put);
    void add(const PlanSource& source); ///< whose `line` is the next one
    void finish();
    const PlanEnd& end() const { return m_end; }

private:
    void put(const QJsonObject& members);

    const QString m_digest;
    Put m_put;
    PlanEnd m_end;
    qint64 m_offset = 0;
    QCryptographicHash m_hash { QCryptographicHash::Sha256 };
};

/// Reads a plan, source by source, in bounded memory. One thread.
class PlanReader
{
public:
    /// Throws std::runtime_error when the file cannot be read, is no plan or has no end.
    explicit PlanReader(const QString& path);

    const PlanHead& head() const { return m_head; }
    const PlanEnd& end() const { return m_end; }

    /// None behind the last one. Throws std::runtime_error for a line that is no source, or not the
    /// next one.
    std::optional<PlanSource> next();

    /// The pages of the sources before the one that next() will give.
    qint64 pagesBefore() const { return m_pagesBefore; }

    /// next() goes on with the last source of the index whose `pagesBefore` is not above `pages`,
    /// or with the first.
    void skipTo(qint64 pages);

private:
    QString m_path;
    PlanEnd m_end;
    JsonLines m_lines;
    PlanHead m_head;
    qint64 m_next = 0; ///< number of the next source
    qint64 m_pagesBefore = 0;
};

} // namespace pagestack
