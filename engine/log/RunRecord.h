#pragma once

#include "engine/files/ByteSpool.h"
#include "engine/files/StagedFile.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace pagestack {

/// The JSON document of a run (docs/record.schema.json), written down while the run goes on: it
/// takes no more memory for more pages. One thread at a time.
///
/// What goes wrong on the way is told by saveTo().
class RunRecord
{
public:
    /// Begins the document, its sources to follow. Once, before the rest.
    void begin(const QJsonObject& members);

    /// Begins a source, its pages to follow.
    void beginSource(const QJsonObject& members);
    void addPage(const QJsonObject& page);
    /// With what is known of it only now.
    void endSource(const QJsonObject& members);

    /// Ends the document. It is whole also when sources and pages were left out.
    void end(const QJsonObject& members);

    /// Writes the document that was ended as the file at `path`. Null, or the reason why it cannot
    /// be written. Throws StagedFile::NameTaken.
    QString saveTo(const QString& path, StagedFile::Existing existing);

private:
    void put(const QByteArray& text);
    void flush();

    ByteSpool m_text;
    QByteArray m_waiting;
    QString m_fault;
    bool m_hasSources = false;
    bool m_hasPages = false; ///< of the source in hand
};

} // namespace pagestack
