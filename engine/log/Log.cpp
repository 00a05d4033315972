#include "engine/log/Log.h"

#include "engine/support/AppFolders.h"
#include "engine/support/DateText.h"
#include "engine/support/SystemLog.h"

#include <QIODevice>
#include <QMutexLocker>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <exception>
#include <stdexcept>

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

    void writeFiles(QXmlStreamWriter& xml, const LogFiles& source)
    {
        xml.writeStartElement(u"Files"_s);
        writeAttribute(xml, u"FileName"_s, source.filename);
        writeAttribute(xml, u"SourcePath"_s, source.sourcePath);
        writeAttribute(xml, u"TargetPath"_s, source.targetPath);
        writeAttribute(xml, u"Status"_s, source.status);
        writeAttribute(xml, u"Pages"_s, QString::number(source.pages));
        for (const LogFile& file : source.logFiles)
            writeFile(xml, file);
        xml.writeEndElement();
    }

    bool writeAtomically(const QString& path, const QByteArray& content)
    {
        QSaveFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size()
            && file.commit();
    }

    QString chosenPath(const QDateTime& endTime)
    {
        const QString folder = getAppPath();
        return (folder.isEmpty() ? u"Logs/"_s : folder + u"/Logs/"_s)
            + dateText(endTime, u"ddMMyyHHmmss"_s) + u".log"_s;
    }

} // namespace

bool Log::save()
{
    if (!m_isStored)
        return true;
    try {
        const QByteArray content = document();
        const QString path = chosenPath(endTime);
        {
            const QMutexLocker lock(&m_guard);
            m_logFilePath = path;
        }
        if (!writeAtomically(path, content))
            systemLog(u"Could not write document out..."_s);
        return true;
    } catch (const std::exception& error) {
        systemLog(u"Error in (Log=>save) : "_s + QString::fromUtf8(error.what()));
        return false;
    }
}

QString Log::logFilePath() const
{
    const QMutexLocker lock(&m_guard);
    return m_logFilePath;
}

QByteArray Log::document() const
{
    const QString timeFormat = u"MM/dd/yyyy hh:mm:ss AP"_s;
    QByteArray content;
    QXmlStreamWriter xml(&content);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(u"Log"_s);
    writeAttribute(xml, u"StartTime"_s, dateText(startTime, timeFormat));
    writeAttribute(xml, u"EndTime"_s, dateText(endTime, timeFormat));
    for (const std::shared_ptr<LogFiles>& source : files) {
        if (!source)
            throw std::logic_error("a source of the log is missing");
        writeFiles(xml, *source);
    }
    xml.writeEndDocument();
    return content;
}

} // namespace pagestack
