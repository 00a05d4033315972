#include "engine/log/Log.h"

#include "engine/files/StagedDevice.h"
#include "engine/files/StagedFile.h"
#include "engine/files/StagedNames.h"
#include "engine/log/RecordsAside.h"
#include "engine/support/AppFolders.h"
#include "engine/support/DateText.h"
#include "engine/support/SystemLog.h"

#include <QFileInfo>
#include <QMutexLocker>
#include <QXmlStreamWriter>

#include <exception>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr char16_t replacement = 0xfffd;

    // XML 1.0, 2.2: Char. Pairs of surrogates are handled by the caller.
    bool canBeInXml(char16_t unit)
    {
        if (unit < 0x20)
            return unit == u'\t' || unit == u'\n' || unit == u'\r';
        return !QChar::isSurrogate(unit) && unit != 0xfffe && unit != 0xffff;
    }

    // QXmlStreamWriter 6.4 stops at a character it cannot write, and the document would be cut off.
    QString xmlText(const QString& text)
    {
        QString result = text;
        for (qsizetype i = 0; i < result.size(); ++i) {
            const bool isPair = result.at(i).isHighSurrogate() && i + 1 < result.size()
                && result.at(i + 1).isLowSurrogate();
            if (isPair)
                ++i;
            else if (!canBeInXml(result.at(i).unicode()))
                result[i] = replacement;
        }
        return result;
    }

    void writeAttribute(QXmlStreamWriter& xml, const QString& name, const QString& value)
    {
        xml.writeAttribute(name, xmlText(value));
    }

    void writeFile(QXmlStreamWriter& xml, const LogFile& file)
    {
        xml.writeStartElement(u"File"_s);
        writeAttribute(xml, u"NewFileName"_s, file.targetFile);
        writeAttribute(xml, u"SourcePageNo"_s, QString::number(file.sourcePageNo));
        writeAttribute(xml, u"Status"_s, file.status);
        xml.writeEndElement();
    }

    void startSource(QXmlStreamWriter& xml, const LogFiles& source)
    {
        xml.writeStartElement(u"Files"_s);
        writeAttribute(xml, u"FileName"_s, source.filename);
        writeAttribute(xml, u"SourcePath"_s, source.sourcePath);
        writeAttribute(xml, u"TargetPath"_s, source.targetPath);
        writeAttribute(xml, u"Status"_s, source.status);
        writeAttribute(xml, u"Pages"_s, QString::number(source.pages));
    }

    void writePagesAside(QXmlStreamWriter& xml, RecordsAside& aside, int pages)
    {
        LogFile page;
        for (int i = 0; i < pages; ++i) {
            aside.nextPage(page);
            writeFile(xml, page);
        }
    }

    QString chosenPath(const QDateTime& endTime)
    {
        const QString folder = getAppPath();
        return (folder.isEmpty() ? u"Logs/"_s : folder + u"/Logs/"_s)
            + dateText(endTime, u"ddMMyyHHmmss"_s) + u".log"_s;
    }

} // namespace

Log::Log() = default;

Log::~Log() = default;

void Log::putAside()
{
    std::size_t records = files.size();
    for (const std::shared_ptr<LogFiles>& source : files)
        records += source->logFiles.size();
    if (records <= m_mostRecords)
        return;
    if (!m_aside)
        m_aside = std::make_unique<RecordsAside>();
    if (!m_aside->takeFrom(files))
        m_mostRecords = 2 * records; // to try it again for each page would take longer and longer
}

bool Log::save()
{
    if (!m_isStored)
        return true;
    try {
        const QString path = chosenPath(endTime);
        {
            const QMutexLocker lock(&m_guard);
            m_logFilePath = path;
        }
        removeLeftStagedFiles(QFileInfo(path).path());
        m_saveFault = saveTo(path);
        if (!m_saveFault.isNull())
            systemLog(u"Could not write document out..."_s);
        return true;
    } catch (const std::exception& error) {
        m_saveFault = QString::fromUtf8(error.what());
        systemLog(u"Error in (Log=>save) : "_s + m_saveFault);
        return false;
    }
}

QString Log::saveTo(const QString& path) const
{
    std::unique_ptr<StagedFile> file;
    try {
        file = std::make_unique<StagedFile>(path);
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
    StagedDevice device(*file);
    if (!writeTo(device))
        return device.errorString();
    try {
        file->commit();
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

QString Log::logFilePath() const
{
    const QMutexLocker lock(&m_guard);
    return m_logFilePath;
}

bool Log::writeTo(QIODevice& to) const
{
    const QString timeFormat = u"MM/dd/yyyy hh:mm:ss AP"_s;
    QXmlStreamWriter xml(&to);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(u"Log"_s);
    writeAttribute(xml, u"StartTime"_s, dateText(startTime, timeFormat));
    writeAttribute(xml, u"EndTime"_s, dateText(endTime, timeFormat));
    int pagesAside = m_aside ? writeAside(xml) : 0;
    for (const std::shared_ptr<LogFiles>& source : files) {
        if (!source)
            throw std::logic_error("a source of the log is missing");
        startSource(xml, *source);
        if (m_aside)
            writePagesAside(xml, *m_aside, std::exchange(pagesAside, 0));
        for (const LogFile& page : source->logFiles)
            writeFile(xml, page);
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return !xml.hasError();
}

/// The sources that were put aside. Gives back how many pages of the first that was not were.
int Log::writeAside(QXmlStreamWriter& xml) const
{
    m_aside->rewind();
    LogFiles source;
    int pages = 0;
    while (m_aside->nextSource(source, pages)) {
        startSource(xml, source);
        writePagesAside(xml, *m_aside, pages);
        xml.writeEndElement();
    }
    return m_aside->pagesOfLast();
}

} // namespace pagestack
