#include "engine/log/Log.h"

#include "engine/files/ByteSpool.h"
#include "engine/files/StagedNames.h"
#include "engine/support/Application.h"
#include "engine/support/SystemLog.h"

#include <QFileInfo>
#include <QLocale>
#include <QMutexLocker>

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <span>
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

    // A document with other characters is none.
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

    /// As it stands between quotation marks. Most values need nothing, and a run of many small
    /// pages waits for this.
    QByteArray attributeText(const QString& value)
    {
        const bool isPlain = std::ranges::all_of(value, [](QChar unit) {
            return unit >= u' ' && unit <= u'~' && unit != u'<' && unit != u'>' && unit != u'&'
                && unit != u'"';
        });
        if (isPlain)
            return value.toLatin1();
        return xmlText(value)
            .toHtmlEscaped()
            .replace(u'\t', u"&#9;"_s)
            .replace(u'\n', u"&#10;"_s)
            .replace(u'\r', u"&#13;"_s)
            .toUtf8();
    }

    using Attributes = std::initializer_list<std::pair<QString, QString>>;

    /// An element without content, on a line of its own. The `optional` attributes are left out
    /// when their value is null.
    QByteArray element(int depth, const QString& name, const Attributes& attributes,
                       const Attributes& optional)
    {
        QByteArray text(4 * qsizetype { depth }, ' ');
        text += '<' + name.toUtf8();
        const auto append = [&text](const QString& key, const QString& value) {
            text += ' ' + key.toUtf8() + "=\"" + attributeText(value) + '"';
        };
        for (const auto& [key, value] : attributes)
            append(key, value);
        for (const auto& [key, value] : optional)
            if (!value.isNull())
                append(key, value);
        return text + "/>\n";
    }

    /// The start of an element that `element` has made.
    QByteArray opened(QByteArray element) { return element.replace(element.size() - 3, 2, ">"); }

    QString sizeText(const std::optional<FileDigest>& digest)
    {
        return digest ? QString::number(digest->sizeBytes) : QString();
    }

    QString hexText(const std::optional<FileDigest>& digest)
    {
        return digest ? digest->hex() : QString();
    }

    QByteArray pageElement(const LogFile& page)
    {
        return element(2, u"File"_s,
                       { { u"NewFileName"_s, page.targetFile },
                         { u"SourcePageNo"_s, QString::number(page.sourcePageNo) },
                         { u"Status"_s, page.status } },
                       { { u"Reason"_s, page.reason },
                         { u"TakenOver"_s, page.isTakenOver ? u"yes"_s : QString() },
                         { u"Size"_s, sizeText(page.digest) },
                         { u"SHA256"_s, hexText(page.digest) } });
    }

    QByteArray sourceElement(const LogFiles& source)
    {
        const bool isMissing = source.gathered == GatheredFile::NotWritten;
        return element(1, u"Files"_s,
                       { { u"FileName"_s, source.filename },
                         { u"SourcePath"_s, source.sourcePath },
                         { u"TargetPath"_s, source.targetPath },
                         { u"Status"_s, source.status },
                         { u"Pages"_s, QString::number(source.pages) } },
                       { { u"Written"_s, isMissing ? u"no"_s : QString() },
                         { u"Reason"_s, source.reason },
                         { u"LeftBehind"_s, source.leftBehind },
                         { u"SourceSize"_s, sizeText(source.sourceDigest) },
                         { u"SourceSHA256"_s, hexText(source.sourceDigest) },
                         { u"TargetSize"_s, sizeText(source.targetDigest) },
                         { u"TargetSHA256"_s, hexText(source.targetDigest) } });
    }

    /// The elements of pages, with what became of their file, which is known after them. A value
    /// has no quotation mark of its own.
    QByteArray withFate(QByteArray pages, GatheredFile gathered)
    {
        if (gathered == GatheredFile::NotWritten)
            pages.replace(R"( Status="Completed")", R"( Status="Completed" Written="no")");
        else if (gathered == GatheredFile::Skipped)
            pages.replace(R"( Status="Completed")", R"( Status="Skipped")");
        return pages;
    }

    std::span<const std::uint8_t> bytesOf(const QByteArray& text)
    {
        return { reinterpret_cast<const std::uint8_t*>(text.constData()),
                 static_cast<std::size_t>(text.size()) };
    }

    /// Hands on the first bytes of `spool`, whole lines at a time.
    void readLines(ByteSpool& spool, std::uint64_t bytes,
                   const std::function<void(const QByteArray& lines)>& take)
    {
        constexpr std::uint64_t most = 65536;
        QByteArray text;
        for (std::uint64_t done = 0; done < bytes;) {
            std::vector<std::uint8_t> part(std::min(most, bytes - done));
            spool.readAt(done, part);
            done += part.size();
            text.append(reinterpret_cast<const char*>(part.data()),
                        static_cast<qsizetype>(part.size()));
            const qsizetype end = text.lastIndexOf('\n') + 1;
            take(text.first(end));
            text.remove(0, end);
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
    try {
        if (!m_isTextDropped)
            spill();
        forgetSpilled();
    } catch (const std::runtime_error&) {
        m_mostRecords = 2 * records; // to try it again for each page would take longer and longer
    }
}

/// Throws std::runtime_error, with nothing moved, when there is no room.
void Log::spill()
{
    const LogFiles& last = *files.back();
    const bool hasFinished = files.size() > 1;
    const auto pages = hasFinished || !m_pages ? std::make_shared<ByteSpool>(0) : m_pages;
    QByteArray text;
    for (const LogFile& page : last.logFiles)
        text += pageElement(page);
    pages->writeAt(pages->size(), bytesOf(text));
    if (hasFinished) {
        if (!m_finished)
            m_finished = std::make_unique<ByteSpool>(0);
        std::uint64_t end = m_finishedBytes;
        writeSources(files.size() - 1, [&](const QByteArray& element) {
            m_finished->writeAt(end, bytesOf(element));
            end += static_cast<std::uint64_t>(element.size());
        });
        m_finishedBytes = end;
    }
    m_pages = pages;
}

/// Ends the memory of what spill() has put aside.
void Log::forgetSpilled()
{
    files.back()->logFiles.clear();
    for (std::size_t i = 0; i + 1 < files.size(); ++i)
        m_finishedErrors.push_back(files.at(i)->hasErrors);
    files.erase(files.begin(), files.end() - 1);
}

bool Log::hasErrors(std::size_t number) const
{
    const std::size_t finished = m_finishedErrors.size();
    return number < finished ? m_finishedErrors.at(number) : files.at(number - finished)->hasErrors;
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
try {
    StagedFile file(path);
    writeTo([&](const QByteArray& text) { file.write(bytesOf(text)); });
    file.commit(existing);
    return {};
} catch (const StagedFile::NameTaken&) {
    throw;
} catch (const std::runtime_error& error) {
    return QString::fromUtf8(error.what());
}

QString Log::logFilePath() const
{
    const QMutexLocker lock(&m_guard);
    return m_logFilePath;
}

void Log::writeTo(const Output& output) const
{
    constexpr qsizetype mostWaiting = 65536;
    QByteArray waiting;
    const Output add = [&](const QByteArray& text) {
        waiting += text;
        if (waiting.size() >= mostWaiting)
            output(std::exchange(waiting, {}));
    };
    const QString timeFormat = u"MM/dd/yyyy hh:mm:ss AP"_s;
    const QByteArray head = element(
        0, u"Log"_s,
        { { u"StartTime"_s, localText(startTime, timeFormat) },
          { u"EndTime"_s, localText(endTime, timeFormat) },
          { u"Start"_s, textWithZone(startTime) },
          { u"End"_s, textWithZone(endTime) } },
        { { u"Cancelled"_s, isCancelled ? u"yes"_s : QString() }, { u"Reason"_s, reason } });
    const bool isEmpty = files.empty() && !m_finished;
    add("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + (isEmpty ? head : opened(head)));
    if (m_finished)
        readLines(*m_finished, m_finishedBytes, add);
    writeSources(files.size(), add);
    if (!isEmpty)
        add("</Log>\n");
    output(waiting);
}

/// The elements of the first `number` of `files`.
void Log::writeSources(std::size_t number, const Output& output) const
{
    for (std::size_t i = 0; i < number; ++i) {
        if (!files.at(i))
            throw std::logic_error("a source of the log is missing");
        const LogFiles& source = *files.at(i);
        const bool hasPagesAside = i == 0 && m_pages && m_pages->size() > 0;
        if (!hasPagesAside && source.logFiles.empty()) {
            output(sourceElement(source));
            continue;
        }
        output(opened(sourceElement(source)));
        if (hasPagesAside)
            readLines(*m_pages, m_pages->size(),
                      [&](const QByteArray& pages) { output(withFate(pages, source.gathered)); });
        for (const LogFile& page : source.logFiles)
            output(withFate(pageElement(page), source.gathered));
        output("    </Files>\n");
    }
}

} // namespace pagestack
