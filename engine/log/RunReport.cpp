#include "engine/log/RunReport.h"

#include "engine/log/Log.h"
#include "engine/log/ShownReason.h"
#include "engine/support/Info.h"
#include "engine/support/Paths.h"

#include <QCoreApplication>
#include <QUrl>
#include <QXmlStreamReader>

#include <span>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr QByteArrayView style = R"(
:root { color-scheme: light dark; --text: #1d1d1f; --back: #fff; --line: #d0d0d5; --head: #f2f2f4;
  --bad: #b00020; --odd: #7a5200; --link: #0a58ca; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e8e8ea; --back: #1b1b1d; --line: #48484c; --head: #2a2a2d; --bad: #ff8a80;
    --odd: #f0c060; --link: #8ab4f8; }
}
body { font: 15px/1.45 system-ui, sans-serif; color: var(--text); background: var(--back);
  margin: 2em auto; max-width: 62em; padding: 0 1.2em; overflow-wrap: anywhere; }
h1 { font-size: 1.5em; margin-bottom: .2em; }
h2 { font-size: 1.15em; margin-top: 2em; }
h3 { font-size: 1em; margin: 1.6em 0 .2em; }
p { margin: .2em 0; }
table { border-collapse: collapse; width: 100%; margin: .5em 0; }
th, td { text-align: start; vertical-align: top; padding: .2em .7em .2em 0;
  border-bottom: 1px solid var(--line); }
th { background: var(--head); }
.number { width: 4em; }
.totals { width: auto; }
.totals th { font-weight: normal; background: none; }
.bad { color: var(--bad); }
.odd { color: var(--odd); }
a { color: var(--link); }
@media print {
  :root { --text: #000; --back: #fff; --line: #999; --head: #eee; --bad: #900; --odd: #640; --link: #000; }
  body { margin: 0; max-width: none; font-size: 10pt; }
  thead { display: table-header-group; }
  tr, h3 { break-inside: avoid; }
  h2, h3 { break-after: avoid; }
}
)";

    /// The words of the page itself.
    class Words
    {
        Q_DECLARE_TR_FUNCTIONS(pagestack::RunReport)
    };

    using LogAttributes = QXmlStreamAttributes;

    enum class Fate { Written, Changed, Skipped, NotWritten, Failed };

    /// Told of the elements of a log, one after the other.
    class LogReader
    {
    public:
        LogReader() = default;
        virtual ~LogReader() = default;
        LogReader(const LogReader&) = delete;
        LogReader& operator=(const LogReader&) = delete;

        void read(const Log& log)
        {
            m_log = &log;
            m_sources = 0;
            QXmlStreamReader xml;
            log.writeTo([&](const QByteArray& text) {
                xml.addData(text);
                while (xml.readNext() != QXmlStreamReader::Invalid && !xml.atEnd())
                    take(xml);
                // At the end of what is there so far it waits for more.
                if (xml.hasError() && xml.error() != QXmlStreamReader::PrematureEndOfDocumentError)
                    throw std::runtime_error("the log cannot be read back: "
                                             + xml.errorString().toStdString());
            });
        }

    protected:
        virtual void beginRun(const LogAttributes& /*run*/) { }
        virtual void beginSource(const LogAttributes& /*source*/) { }
        virtual void addPage(const LogAttributes& /*page*/) { }
        virtual void endSource() { }

        /// How bad the `problem` of the source in hand is. Where its text does not say it, the
        /// record does.
        Fate fateOfSource(const LogAttributes& source) const
        {
            const bool isRead = source.value("Status"_L1).isEmpty();
            const bool isWritten = !source.hasAttribute("Written"_L1);
            return isRead && isWritten && !m_log->hasErrors(m_sources - 1) ? Fate::Changed
                                                                           : Fate::Failed;
        }

    private:
        void take(const QXmlStreamReader& xml)
        {
            const bool isSource = xml.name() == u"Files";
            if (xml.isEndElement() && isSource)
                endSource();
            if (!xml.isStartElement())
                return;
            if (isSource) {
                ++m_sources;
                beginSource(xml.attributes());
            } else if (xml.name() == u"File")
                addPage(xml.attributes());
            else
                beginRun(xml.attributes());
        }

        const Log* m_log = nullptr;
        std::size_t m_sources = 0; ///< that have begun
    };

    QString valueOf(const LogAttributes& attributes, QLatin1StringView name)
    {
        return attributes.value(name).toString();
    }

    Fate fateOf(const LogAttributes& page)
    {
        const QStringView status = page.value("Status"_L1);
        if (status == u"Skipped")
            return Fate::Skipped;
        if (status != u"Completed")
            return Fate::Failed;
        if (page.hasAttribute("Written"_L1))
            return Fate::NotWritten;
        return page.hasAttribute("Reason"_L1) ? Fate::Changed : Fate::Written;
    }

    QByteArray shown(const QString& text) { return text.toHtmlEscaped().toUtf8(); }

    QByteArray link(const QString& path, const QString& text)
    {
        const QUrl url = QUrl::fromLocalFile(path);
        return "<a href=\"" + url.toString(QUrl::FullyEncoded).toHtmlEscaped().toUtf8() + "\">"
            + shown(text) + "</a>";
    }

    QString fateText(Fate fate, const LogAttributes& page)
    {
        const QString reason = shownReason(valueOf(page, "Reason"_L1));
        const QString behind = reason.isEmpty() ? QString() : u": "_s + reason;
        switch (fate) {
        case Fate::Written:
            return Words::tr("written");
        case Fate::Changed:
            return Words::tr("written with a loss") + behind;
        case Fate::Skipped:
            return Words::tr("skipped, a file was there");
        case Fate::NotWritten:
            return Words::tr("not written, since its file is not in place") + behind;
        case Fate::Failed:
            break;
        }
        return behind.isEmpty() ? Words::tr("failed: the page is not there any more")
                                : Words::tr("failed") + behind;
    }

    /// Why the file of many pages is not in place is said of the source, once.
    bool isProblem(Fate fate, const LogAttributes& page)
    {
        return fate == Fate::Changed || fate == Fate::Failed
            || (fate == Fate::NotWritten && page.hasAttribute("Reason"_L1));
    }

    QByteArray classOf(Fate fate)
    {
        if (fate == Fate::Failed || fate == Fate::NotWritten)
            return " class=\"bad\"";
        return fate == Fate::Changed ? " class=\"odd\"" : "";
    }

    QString sourceProblem(const LogAttributes& source)
    {
        const QString reason = valueOf(source, "Reason"_L1);
        return shownReason(reason.isEmpty() ? valueOf(source, "Status"_L1) : reason);
    }

    /// Counts what the page begins with.
    class Totals : public LogReader
    {
    public:
        qint64 sources = 0;
        qint64 files = 0;
        qint64 written = 0;
        qint64 changed = 0;
        qint64 warned = 0; ///< sources
        qint64 skipped = 0;
        qint64 failed = 0;
        qint64 problems = 0;
        QString runReason;
        bool isCancelled = false;
        QString start;
        QString end;

    protected:
        void beginRun(const LogAttributes& run) override
        {
            runReason = valueOf(run, "Reason"_L1);
            isCancelled = run.hasAttribute("Cancelled"_L1);
            start = valueOf(run, "Start"_L1);
            end = valueOf(run, "End"_L1);
        }
        void beginSource(const LogAttributes& source) override
        {
            ++sources;
            if (!sourceProblem(source).isEmpty()) {
                ++problems;
                warned += fateOfSource(source) == Fate::Changed ? 1 : 0;
            }
            m_lastFile.clear();
        }
        void addPage(const LogAttributes& page) override
        {
            const Fate fate = fateOf(page);
            const bool isWritten = fate == Fate::Written || fate == Fate::Changed;
            written += isWritten ? 1 : 0;
            changed += fate == Fate::Changed ? 1 : 0;
            skipped += fate == Fate::Skipped ? 1 : 0;
            failed += fate == Fate::Failed || fate == Fate::NotWritten ? 1 : 0;
            problems += isProblem(fate, page) ? 1 : 0;
            // Pages that are kept together have one file.
            if (const QString file = valueOf(page, "NewFileName"_L1);
                isWritten && std::exchange(m_lastFile, file) != file)
                ++files;
        }

    private:
        QString m_lastFile;
    };

    using Output = std::function<void(const QByteArray& text)>;

    /// A row for each problem.
    class Problems : public LogReader
    {
    public:
        explicit Problems(const Output& output)
            : m_output(output)
        {
        }

    protected:
        void beginSource(const LogAttributes& source) override
        {
            m_file = joinedPath(valueOf(source, "SourcePath"_L1), valueOf(source, "FileName"_L1));
            if (const QString problem = sourceProblem(source); !problem.isEmpty())
                addRow({}, problem, fateOfSource(source));
        }
        void addPage(const LogAttributes& page) override
        {
            const Fate fate = fateOf(page);
            if (isProblem(fate, page))
                addRow(valueOf(page, "SourcePageNo"_L1), fateText(fate, page), fate);
        }

    private:
        void addRow(const QString& page, const QString& problem, Fate fate)
        {
            m_output("<tr><td>" + link(m_file, lastPathComponent(m_file)) + "</td><td>"
                     + shown(page) + "</td><td" + classOf(fate) + ">" + shown(problem)
                     + "</td></tr>\n");
        }

        const Output& m_output;
        QString m_file;
    };

    /// A heading and a table for each source.
    class Sources : public LogReader
    {
    public:
        explicit Sources(const Output& output)
            : m_output(output)
        {
        }

    protected:
        void beginSource(const LogAttributes& source) override
        {
            const QString folder = valueOf(source, "SourcePath"_L1);
            const QString name = valueOf(source, "FileName"_L1);
            m_target = valueOf(source, "TargetPath"_L1);
            m_hasPages = false;
            m_output("<h3>" + link(joinedPath(folder, name), name) + "</h3>\n<p>" + shown(folder)
                     + (m_target == folder ? QByteArray() : " \u2192 " + link(m_target, m_target))
                     + "</p>\n");
            if (const QString problem = sourceProblem(source); !problem.isEmpty())
                m_output("<p" + classOf(fateOfSource(source)) + ">" + shown(problem) + "</p>\n");
            if (const QString left = valueOf(source, "LeftBehind"_L1); !left.isEmpty())
                m_output("<p>"
                         + shown(Words::tr("Left behind, since the format has no place for it: %1")
                                     .arg(shownReason(left)))
                         + "</p>\n");
        }
        void addPage(const LogAttributes& page) override
        {
            if (!std::exchange(m_hasPages, true))
                m_output("<table><thead><tr><th class=\"number\">" + shown(Words::tr("Page"))
                         + "</th><th>" + shown(Words::tr("Image")) + "</th><th>"
                         + shown(Words::tr("What happened")) + "</th></tr></thead><tbody>\n");
            const Fate fate = fateOf(page);
            const QString file = valueOf(page, "NewFileName"_L1);
            const bool isThere
                = fate == Fate::Written || fate == Fate::Changed || fate == Fate::Skipped;
            m_output("<tr><td>" + shown(valueOf(page, "SourcePageNo"_L1)) + "</td><td>"
                     + (isThere ? link(joinedPath(m_target, file), file) : shown(file)) + "</td><td"
                     + classOf(fate) + ">" + shown(fateText(fate, page)) + "</td></tr>\n");
        }
        void endSource() override
        {
            if (m_hasPages)
                m_output("</tbody></table>\n");
        }

    private:
        const Output& m_output;
        QString m_target;
        bool m_hasPages = false;
    };

    /// "path: reason", or a reason alone, which may have a ": " of its own.
    QString troubleText(const QString& trouble)
    {
        const auto first = [](const QString& reasons) { return reasons.section(u"; "_s, 0, 0); };
        QString whole = shownReason(trouble);
        if (first(whole) != first(trouble))
            return whole;
        const QString before = trouble.section(u": "_s, 0, 0, QString::SectionIncludeTrailingSep);
        return before.endsWith(u": ") ? before + shownReason(trouble.sliced(before.size())) : whole;
    }

    /// Rows for what is of no source.
    void addTroubles(const QStringList& troubles, Fate fate, const Output& output)
    {
        for (const QString& trouble : troubles)
            output("<tr><td></td><td></td><td" + classOf(fate) + ">" + shown(troubleText(trouble))
                   + "</td></tr>\n");
    }

    QByteArray head(const Totals& totals, qsizetype sources)
    {
        const bool isEarly = !totals.runReason.isEmpty();
        const QByteArray title
            = shown(isEarly                   ? Words::tr("Ended early")
                        : totals.isCancelled  ? Words::tr("Cancelled")
                        : totals.problems > 0 ? Words::tr("Finished with problems")
                                              : Words::tr("Finished"));
        const QByteArray end = shown(QString(totals.end).replace(u'T', u' '));
        QByteArray text = "<!DOCTYPE html>\n<html lang=\""
            + shown(Words::tr("en", "code of the language that this is translated to"))
            + "\">\n<head>\n<meta charset=\"utf-8\" />\n"
              "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src "
              "'none'; style-src 'unsafe-inline'\" />\n"
              "<meta name=\"viewport\" content=\"width=device-width\" />\n<title>"
            + shown(displayName.toString()) + ": " + title + ", " + end + "</title>\n<style>"
            + style.toByteArray() + "</style>\n</head>\n<body>\n<h1>" + title + "</h1>\n";
        if (isEarly)
            text += "<p class=\"bad\">" + shown(shownReason(totals.runReason)) + "</p>\n";
        text += "<p>" + shown(QString(totals.start).replace(u'T', u' ')) + " \u2013 " + end
            + "</p>\n<table class=\"totals\"><tbody>\n";
        const auto add = [&text](const QString& what, qint64 count, const char* kind = "") {
            text += "<tr><th scope=\"row\">" + shown(what) + "</th><td" + kind + ">"
                + QByteArray::number(count) + "</td></tr>\n";
        };
        add(Words::tr("Images written"), totals.files);
        add(Words::tr("Pages written"), totals.written);
        if (totals.changed > 0)
            add(Words::tr("of these with a loss"), totals.changed, " class=\"odd\"");
        if (totals.failed > 0)
            add(Words::tr("Pages failed"), totals.failed, " class=\"bad\"");
        if (totals.skipped > 0)
            add(Words::tr("Pages skipped"), totals.skipped);
        add(Words::tr("Source files"), sources);
        if (totals.warned > 0)
            add(Words::tr("of these with a warning"), totals.warned, " class=\"odd\"");
        if (totals.sources < sources)
            add(Words::tr("of these not reached"), sources - totals.sources, " class=\"bad\"");
        return text + "</tbody></table>\n";
    }

} // namespace

void writeReport(const Log& log, qsizetype sources, const RunTroubles& troubles,
                 const Output& output)
{
    constexpr qsizetype mostWaiting = 65536;
    QByteArray waiting;
    const Output add = [&](const QByteArray& text) {
        waiting += text;
        if (waiting.size() >= mostWaiting)
            output(std::exchange(waiting, {}));
    };
    Totals totals;
    totals.read(log);
    totals.problems += troubles.reasons.size() + troubles.warnings.size();
    add(head(totals, sources));
    if (totals.problems > 0) {
        add("<h2>" + shown(Words::tr("Problems")) + "</h2>\n<table><thead><tr><th>"
            + shown(Words::tr("File")) + "</th><th class=\"number\">" + shown(Words::tr("Page"))
            + "</th><th>" + shown(Words::tr("What happened")) + "</th></tr></thead><tbody>\n");
        addTroubles(troubles.reasons, Fate::Failed, add);
        addTroubles(troubles.warnings, Fate::Changed, add);
        Problems(add).read(log);
        add("</tbody></table>\n");
    }
    add("<h2>" + shown(Words::tr("Files")) + "</h2>\n");
    Sources(add).read(log);
    add("</body>\n</html>\n");
    output(waiting);
}

QString saveReport(const Log& log, qsizetype sources, const RunTroubles& troubles,
                   const QString& path, StagedFile::Existing existing)
try {
    StagedFile file(path);
    writeReport(log, sources, troubles, [&](const QByteArray& text) {
        file.write({ reinterpret_cast<const std::uint8_t*>(text.constData()),
                     static_cast<std::size_t>(text.size()) });
    });
    file.commit(existing);
    return {};
} catch (const StagedFile::NameTaken&) {
    throw;
} catch (const std::exception& error) {
    return QString::fromUtf8(error.what());
}

QString reportPathBeside(const QString& logPath)
{
    return logPath.isEmpty() ? QString() : logPath.chopped(4) + u".html"_s;
}

} // namespace pagestack
