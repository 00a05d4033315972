#include "engine/log/Log.h"

#include "engine/files/StagedDevice.h"
#include "engine/files/StagedNames.h"
#include "engine/log/LogSpill.h"
#include "engine/support/AppFolders.h"
#include "engine/support/SystemLog.h"

#include <QFileInfo>
#include <QLocale>
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

    void writeReason(QXmlStreamWriter& xml, const QString& reason)
    {
        if (!reason.isNull())
            writeAttribute(xml, u"Reason"_s, reason);
    }

    /// A record may have been put aside before it was known what became of its file.
    void writeFile(QXmlStreamWriter& xml, const LogFile& file, GatheredFile gathered)
    {
        const bool isCompleted = file.status == u"Completed";
        const bool isSkipped = isCompleted && gathered == GatheredFile::Skipped;
        xml.writeStartElement(u"File"_s);
        writeAttribute(xml, u"NewFileName"_s, file.targetFile);
        writeAttribute(xml, u"SourcePageNo"_s, QString::number(file.sourcePageNo));
        writeAttribute(xml, u"Status"_s, isSkipped ? u"Skipped"_s : file.status);
        if (isCompleted && gathered == GatheredFile::NotWritten)
            writeAttribute(xml, u"Written"_s, u"no"_s);
        writeReason(xml, file.reason);
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
        if (source.gathered == GatheredFile::NotWritten)
            writeAttribute(xml, u"Written"_s, u"no"_s);
        writeReason(xml, source.reason);
    }

    void writePagesAside(QXmlStreamWriter& xml, LogSpill& aside, int pages, GatheredFile gathered)
    {
        LogFile page;
        for (int i = 0; i < pages; ++i) {
            aside.nextPage(page);
            writeFile(xml, page, gathered);
        }
    }

    /// Whatever the language of the user: other programs read it.
    QString localText(const QDateTime& date, const QString& format)
    {
        return date.isValid() ? QLocale::c().toString(date.toLocalTime(), format) : QString();
    }

    QString textWithZone(const QDateTime& date)
    {
        const QDateTime local = date.toLocalTime();
        return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate);
    }

    /// The `number`th choice, from 1 on.
    QString chosenPath(const QDateTime& endTime, int number)
    {
        const QString folder = getAppPath();
        return (folder.isEmpty() ? u"Logs/"_s : folder + u"/Logs/"_s)
            + localText(endTime, u"ddMMyyHHmmss"_s)
            + (number > 1 ? u"-%1.log"_s.arg(number) : u".log"_s);
    }

    bool isTaken(const QString& path)
    {
        const QFileInfo info(path);
        return info.exists() || info.isSymLink();
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
        m_aside = std::make_unique<LogSpill>();
    if (!m_aside->takeFrom(files))
        m_mostRecords = 2 * records; // to try it again for each page would take longer and longer
}

bool Log::save()
{
    if (!m_isStored)
        return true;
    try {
        removeLeftStagedFiles(QFileInfo(chosenPath(endTime, 1)).path());
        for (int number = 1;; ++number) {
            const QString path = chosenPath(endTime, number);
            if (isTaken(path))
                continue;
            {
                const QMutexLocker lock(&m_guard);
                m_logFilePath = path;
            }
            try {
                m_saveFault = write(path, StagedFile::Existing::Kept);
                break;
            } catch (const StagedFile::NameTaken&) {
                continue; // by another program, a moment ago
            }
        }
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
    return write(path, StagedFile::Existing::Replaced);
}

/// As saveTo(); what is to be kept and is there makes it throw StagedFile::NameTaken.
QString Log::write(const QString& path, StagedFile::Existing existing) const
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
        file->commit(existing);
    } catch (const StagedFile::NameTaken&) {
        throw;
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
    writeAttribute(xml, u"StartTime"_s, localText(startTime, timeFormat));
    writeAttribute(xml, u"EndTime"_s, localText(endTime, timeFormat));
    writeAttribute(xml, u"Start"_s, textWithZone(startTime));
    writeAttribute(xml, u"End"_s, textWithZone(endTime));
    if (isCancelled)
        writeAttribute(xml, u"Cancelled"_s, u"yes"_s);
    writeReason(xml, reason);
    int pagesAside = m_aside ? writeAside(xml) : 0;
    for (const std::shared_ptr<LogFiles>& source : files) {
        if (!source)
            throw std::logic_error("a source of the log is missing");
        startSource(xml, *source);
        if (m_aside)
            writePagesAside(xml, *m_aside, std::exchange(pagesAside, 0), source->gathered);
        for (const LogFile& page : source->logFiles)
            writeFile(xml, page, source->gathered);
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
        writePagesAside(xml, *m_aside, pages, source.gathered);
        xml.writeEndElement();
    }
    return m_aside->pagesOfLast();
}

} // namespace pagestack
