#include "engine/log/LogSpill.h"

#include "engine/files/PosixFile.h"

#include <QDataStream>

#include <stdexcept>

namespace pagestack {

namespace {

    void put(QDataStream& to, const LogFile& page)
    {
        to << page.targetFile << page.sourcePageNo << page.targetPageNo << page.status
           << page.reason;
    }

    void put(QDataStream& to, const LogFiles& source, int pages)
    {
        to << source.filename << source.sourcePath << source.targetPath << source.status
           << source.pages << source.reason << source.gathered << pages;
    }

    void check(const QDataStream& from)
    {
        if (from.status() != QDataStream::Ok)
            throw std::runtime_error("the older records cannot be read: "
                                     + from.device()->errorString().toStdString());
    }

    void append(QFile& file, qint64& end, const QByteArray& bytes)
    {
        const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.constData());
        writeFully(file.handle(), static_cast<std::uint64_t>(end),
                   { data, static_cast<std::size_t>(bytes.size()) });
        end += bytes.size();
    }

} // namespace

void LogSpill::open()
{
    for (QFile* file : { &m_sources, &m_pages })
        if (!file->isOpen()
            && !file->open(openUnnamedFile(), QIODevice::ReadWrite, QFileDevice::AutoCloseHandle))
            throw std::runtime_error(file->errorString().toStdString());
}

bool LogSpill::takeFrom(Sources& records)
{
    if (records.empty())
        return true;
    QByteArray sourceBytes;
    QByteArray pageBytes;
    QDataStream sources(&sourceBytes, QIODevice::WriteOnly);
    QDataStream pages(&pageBytes, QIODevice::WriteOnly);
    int pagesOfLast = m_pagesOfLast;
    for (const std::shared_ptr<LogFiles>& source : records) {
        for (const LogFile& page : source->logFiles)
            put(pages, page);
        pagesOfLast += static_cast<int>(source->logFiles.size());
        if (source == records.back())
            break;
        put(sources, *source, pagesOfLast);
        pagesOfLast = 0;
    }
    try {
        open();
        qint64 pagesEnd = m_pagesEnd;
        append(m_pages, pagesEnd, pageBytes);
        append(m_sources, m_sourcesEnd, sourceBytes);
        m_pagesEnd = pagesEnd;
    } catch (const std::runtime_error&) {
        return false;
    }
    m_pagesOfLast = pagesOfLast;
    records.back()->logFiles.clear();
    records.erase(records.begin(), records.end() - 1);
    return true;
}

void LogSpill::rewind()
{
    for (QFile* file : { &m_sources, &m_pages })
        if (!file->seek(0))
            throw std::runtime_error("the older records cannot be read: "
                                     + file->errorString().toStdString());
}

bool LogSpill::nextSource(LogFiles& source, int& pages)
{
    if (m_sources.pos() >= m_sourcesEnd)
        return false;
    QDataStream from(&m_sources);
    from >> source.filename >> source.sourcePath >> source.targetPath >> source.status
        >> source.pages >> source.reason >> source.gathered >> pages;
    check(from);
    return true;
}

void LogSpill::nextPage(LogFile& page)
{
    QDataStream from(&m_pages);
    from >> page.targetFile >> page.sourcePageNo >> page.targetPageNo >> page.status >> page.reason;
    check(from);
}

} // namespace pagestack
