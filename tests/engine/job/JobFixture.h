#pragma once

#include "engine/job/Process.h"
#include "engine/options/ConversionOptions.h"
#include "engine/plan/OutputNames.h"
#include "engine/support/Application.h"
#include "engine/support/Paths.h"
#include "engine/support/Workspace.h"
#include "tests/support/TestFolder.h"

#include <QFile>
#include <QRegularExpression>
#include <QUrl>

#include <functional>
#include <mutex>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

/// One job that makes PNG files, with a folder "in" for its sources and one "out" for its outputs,
/// and a record of all that it announces, in order: "message Process cancelled!", "page in/a.tif 1
/// out/a1.png Written". It is the job's workspace as well, which opens nothing.
class JobFixture : public Workspace
{
public:
    /// Makes `sources` ("a.tif:WW b.tif:W", see TestFolder::make) and plans their outputs, then
    /// carries out `changes`, words of which "in/a.tif:W" changes a file after its pages were
    /// counted, "outputType=2" a field of the settings or of the job, "jobs=8" the number of jobs,
    /// "mirror=true" an option of the run, "stopAt=processed~1" stops the run at an event,
    /// "filter=a2.png" leaves targets of that name alone, "filter=*" those that exist.
    explicit JobFixture(const QString& sources = {}, const QString& changes = {})
    {
        createApplicationUsersFolder(u"Logs"_s, nullptr);
        folder.make(u"in/ out/"_s);
        settings.setOutputType(1);
        settings.setOutputFolderPath(folder.path(u"out"_s));
        settings.setIsOpenFolderAfterConversion(false);
        job.setSettings(&settings);
        job.setIsCombining(true);
        plan(sources);
        for (const QString& word : changes.split(u' ', Qt::SkipEmptyParts)) {
            if (word.contains(u'='))
                change(word.section(u'=', 0, 0), word.section(u'=', 1).replace(u'~', u' '));
            else
                folder.make(word);
        }
        listen(u"isCombining"_s, &Process::isCombiningChanged);
        listen(u"isCompleted"_s, &Process::isCompletedChanged);
        listen(u"processed"_s, &Process::totalFileProcessedChanged);
        listen(u"created"_s, &Process::totalFileCreatedChanged);
        listen(u"file"_s, &Process::fileInProcessChanged);
        listen(u"output"_s, &Process::outputFileInProcessChanged);
        listen(u"timeTaken"_s, &Process::timeTakenChanged);
        listen(u"message"_s, &Process::messageChanged);
        const auto take = [this](const Diagnostic& told) {
            const bool isWarning = told.severity == Diagnostic::Severity::Warning;
            note(u"%1 %2 %3 %4"_s.arg(isWarning ? u"remark"_s : u"trouble"_s, told.sourcePath)
                     .arg(told.page)
                     .arg(told.reason));
        };
        QObject::connect(&job, &Process::diagnosed, &job, take, Qt::DirectConnection);
        listen(u"log trouble"_s, &Process::logTroubleMet);
        listen(u"page"_s, &Process::pageDone);
        listen(u"written"_s, &Process::fileWritten);
        listen(u"skipped"_s, &Process::fileSkipped);
    }

    void openURL(const QUrl& url) override { opened.append(url.toLocalFile()); }
    void activateFileViewerSelectingURLs(const QList<QUrl>&) override { }
    void showInformation(const QList<QUrl>&) override { }

    void run()
    {
        folder.remember();
        job.start();
    }

    /// What the run has left: a line for each source in the log, for each trouble and for what was
    /// opened, then "processed/created files message".
    QString summary() const
    {
        QStringList lines;
        for (const std::shared_ptr<LogFiles>& source : job.log()->files) {
            QStringList pages;
            for (const LogFile& page : source->logFiles)
                pages << u"%1 %2 %3"_s.arg(page.targetFile).arg(page.sourcePageNo).arg(page.status);
            const QString path = shortened(joinedPath(source->sourcePath, source->filename));
            lines.append(u"%1 to %2, %3 pages [%4] "_s.arg(path, shortened(source->targetPath))
                             .arg(source->pages)
                             .arg(source->status)
                         + pages.join(u", "_s));
        }
        lines += events.filter(u"trouble "_s);
        for (const QString& path : opened)
            lines.append(u"opened "_s + shortened(path));
        lines.append(u"%1/%2 "_s.arg(job.totalFileProcessed()).arg(job.totalFileCreated()));
        lines.last() += (folder.changes() + u' ' + job.message()).trimmed();
        return lines.replaceInStrings(QRegularExpression(u" +$"_s), {}).join(u'\n');
    }

    /// Whether the end of the run was announced, once and last, and its log is there.
    bool hasEnded() const
    {
        return events.last() == u"isCompleted true" && events.count(events.last()) == 1
            && job.isCompleted() && QFile::exists(job.log()->logFilePath());
    }

    TestFolder folder;
    Settings settings { nullptr };
    QStringList opened;
    QStringList events;
    /// Called after each event; may throw.
    std::function<void(const QString& event)> onEvent = [](const QString&) {};
    Process job { this, [this](const QString& text) { note(u"time line "_s + text); } };

    /// Takes an event of any thread.
    void record(const QString& event)
    {
        const std::scoped_lock lock(m_mutex);
        events.append(shortened(event).trimmed());
    }

    /// `text` with paths below the folder of the test only.
    QString shortened(QString text) const { return text.remove(folder.path({}) + u'/'); }

private:
    void note(const QString& event)
    {
        record(event);
        onEvent(shortened(event).trimmed());
    }

    void plan(const QString& sources)
    {
        QList<OutputFile> planned;
        for (const QString& source : sources.split(u' ', Qt::SkipEmptyParts)) {
            folder.make(u"in/"_s + source);
            const qsizetype end = source.indexOf(QRegularExpression(u"[:>&]|$"_s));
            const QString path = folder.path(u"in/"_s + source.left(end).replace(u'~', u' '));
            planned.append({ path, { FileItem::initWithURL(QUrl::fromLocalFile(path)) } });
        }
        job.setOutputFiles(planned);
    }

    void change(const QString& name, const QString& value)
    {
        const QByteArray field = name.toLatin1();
        if (name == u"stopAt")
            onEvent = [=, this](const QString& event) { event == value ? job.stop() : void(); };
        else if (name == u"jobs")
            job.setJobs(value.toInt());
        else if (name == u"filter" && value == u"*")
            job.setTargetFilter([](const QString& to) { return !QFile::exists(to); });
        else if (name == u"filter")
            job.setTargetFilter([=](const QString& to) { return lastPathComponent(to) != value; });
        else if (name == u"outputFolderPath" && !value.isEmpty())
            settings.setOutputFolderPath(folder.path(value));
        else if (!settings.setProperty(field, value) && !job.setProperty(field, value)
                 && !choose(name, value))
            throw std::runtime_error("no field " + field.toStdString());
    }

    bool choose(const QString& name, const QString& value)
    {
        const ConversionOptionRow* const row = conversionOption(name);
        ConversionOptions options { .separator = {}, .run = job.runOptions() };
        if (row != nullptr)
            row->set(options, *row, value);
        job.setRunOptions(options.run);
        return row != nullptr;
    }

    template <typename... Values>
    void listen(const QString& name, void (Process::*signal)(Values...))
    {
        const auto take = [this, name](Values... values) {
            note((QStringList(name) << ... << QVariant::fromValue(values).toString()).join(u' '));
        };
        QObject::connect(&job, signal, &job, take, Qt::DirectConnection);
    }

    std::mutex m_mutex; ///< guards `events` during the run
};

} // namespace pagestack
