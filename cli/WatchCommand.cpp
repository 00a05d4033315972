#include "cli/WatchCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"
#include "cli/PlannedRun.h"
#include "cli/Preflight.h"
#include "cli/WatchBatch.h"
#include "engine/files/PosixFile.h"
#include "engine/fleet/FolderLock.h"
#include "engine/fleet/FolderWatcher.h"
#include "engine/fleet/PutAway.h"
#include "engine/fleet/Retries.h"
#include "engine/fleet/RunState.h"
#include "engine/fleet/WatchJournal.h"
#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"
#include "engine/support/Signals.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qsizetype mostSources = 32; ///< of a batch, so that they are put away soon
    constexpr qint64 mostBytes = qint64 { 256 } << 20;

    bool isFileOf(const QString& path, const FileDigest& digest)
    {
        return digestOfFile(path) == std::optional(digest);
    }

    class Watch
    {
    public:
        Watch(const Options& options, Console& console)
            : m_options(options)
            , m_console(console)
            , m_settings(nullptr)
            , m_folder(absolutePath(options.sources.constFirst()))
        {
        }

        int carryOut();

    private:
        QString folderOf(const QString& given, const QString& name) const;
        FolderWatcher::Rules rules() const;
        void prepare();
        void watch();
        void tellBeginning();
        bool dealWith(const QList<CompleteFile>& files);
        void dropParts(const QString& path, const WatchJournal::Known& known);
        bool settle(const CompleteFile& file, QList<WatchedSource>& begun,
                    QList<WatchedSource>& fresh);
        bool convert(const QList<WatchedSource>& items);
        void takeResult(const WatchedSource& item, const WatchedResult& result);
        void putAway(const QString& path, const FileState& state, const QString& reason);
        void guarded(const QString& path, const std::function<void()>& step);
        void tell(const QString& path, const QString& reason);
        QString reasonText(const WatchedSource& item, const WatchedResult& result) const;
        QString shown(const QString& path) const;
        bool isWatched(const QString& path) const { return !pathBelow(path, m_folder).isEmpty(); }
        void waitFor(qint64 ms);

        const Options& m_options;
        Console& m_console;
        Settings m_settings;
        const QString m_folder;
        Signals m_signals;
        std::optional<FolderLock> m_lock;
        std::optional<WatchJournal> m_journal;
        std::optional<PutAway> m_putAway;
        std::optional<FolderWatcher> m_watcher;
        Retries m_retries;
        int m_done = 0; ///< sources
        int m_failed = 0;
        bool m_isLeft = false; ///< something is to be tried again
    };

    QString Watch::folderOf(const QString& given, const QString& name) const
    {
        return given.isEmpty() ? joinedPath(m_folder, name) : absolutePath(given);
    }

    QString Watch::shown(const QString& path) const
    {
        const QString below = pathBelow(path, m_folder);
        return below.isEmpty() ? path : joinedPath(m_options.sources.constFirst(), below);
    }

    FolderWatcher::Rules Watch::rules() const
    {
        return { .folder = m_folder,
                 .isRecursive = m_options.isRecursive,
                 .leftOut = { folderOf(m_options.watch.doneFolder, u"done"_s),
                              folderOf(m_options.watch.failedFolder, u"failed"_s),
                              m_settings.outputFolderPath() },
                 .settleMs = m_options.watch.settleMs,
                 .pollMs = m_options.watch.pollMs };
    }

    /// Throws OutputRefused.
    void Watch::prepare()
    {
        applyTo(m_settings, m_options.conversion);
        m_settings.setIsOpenFolderAfterConversion(false);
        const QString output = checkedOutputFolder(m_options.outputFolder);
        m_settings.setOutputFolderPath(output);
        try {
            m_lock.emplace(m_folder);
        } catch (const std::runtime_error& error) {
            throw OutputRefused(QString::fromUtf8(error.what()));
        }
        makeOutputFolder(output);
        const auto watched = fileIdentity(QFile::encodeName(m_folder));
        for (const QString& folder : rules().leftOut) {
            if (!QFileInfo(folder).isDir() && !QDir().mkpath(folder))
                throw OutputRefused(u"the folder %1 cannot be made"_s.arg(folder));
            if (fileIdentity(QFile::encodeName(folder)) == watched)
                throw OutputRefused(u"%1 is the watched folder itself"_s.arg(folder));
        }
        try {
            m_journal.emplace(m_options.stateFile.isEmpty()
                                  ? joinedPath(output, u".pagestack-watch.jsonl"_s)
                                  : m_options.stateFile,
                              planHead(m_options, output).digest());
        } catch (const std::runtime_error& error) {
            throw OutputRefused(QString::fromUtf8(error.what()));
        }
        m_putAway.emplace(
            PutAway::Folders { m_folder, rules().leftOut.at(0), rules().leftOut.at(1) },
            *m_journal);
    }

    int Watch::carryOut()
    {
        if (!QFileInfo(m_folder).isDir()) {
            m_console.trouble(m_options.sources.constFirst() + u": no such folder"_s);
            return static_cast<int>(ExitCode::NoSource);
        }
        try {
            prepare();
        } catch (const OutputRefused& refusal) {
            m_console.trouble(QString::fromUtf8(refusal.what()));
            return static_cast<int>(ExitCode::OutputRefused);
        }
        for (const QString& path : m_journal->inHand())
            if (!m_journal->known(path)->movedTo.isEmpty())
                guarded(path, [&] { m_putAway->finish(path); });
        watch();
        if (!m_options.isQuiet)
            m_console.result(u"%1 sources done, %2 failed"_s.arg(m_done).arg(m_failed));
        if (const int number = Signals::received())
            return 128 + number;
        return static_cast<int>(m_isLeft                                   ? ExitCode::TryAgain
                                    : m_failed > 0 || m_console.isBroken() ? ExitCode::SomeFailed
                                                                           : ExitCode::AllWritten);
    }

    void Watch::watch()
    {
        m_watcher.emplace(rules());
        QElapsedTimer clock; ///< since the first look
        std::optional<QSet<QString>> last; ///< what is converted before the end
        while (!Signals::received()) {
            m_watcher->look();
            for (const QString& line : m_watcher->takeTroubles())
                m_console.trouble(line);
            if (!clock.isValid()) {
                clock.start();
                tellBeginning();
            }
            const qint64 restMs = m_options.watch.settleMs - clock.elapsed();
            QList<CompleteFile> files = m_watcher->complete();
            if (m_options.watch.isOnce && restMs < 0 && !last) {
                last.emplace();
                for (const CompleteFile& file : std::as_const(files))
                    last->insert(file.path);
            }
            if (last)
                files.removeIf(
                    [&](const CompleteFile& file) { return !last->contains(file.path); });
            files.removeIf([&](const CompleteFile& file) { return m_retries.isPaused(file.path); });
            const bool isMoving = !files.isEmpty() && dealWith(files);
            m_journal->shorten();
            if (isMoving)
                continue;
            m_isLeft = m_retries.hasAny() || m_watcher->waiting() > 0;
            if (last)
                return;
            qint64 wait = m_retries.nextMs(m_watcher->nextLookMs());
            if (m_options.watch.isOnce)
                wait = std::min(wait, restMs + 1);
            waitFor(wait);
        }
    }

    void Watch::tellBeginning()
    {
        if (m_options.isVerbose)
            m_console.result(u"%1 is watched, %2"_s.arg(m_options.sources.constFirst(),
                                                        m_watcher->isPolling()
                                                            ? u"by looking at it now and then"_s
                                                            : u"by what the system tells"_s));
    }

    void Watch::waitFor(qint64 ms)
    {
        QEventLoop loop;
        QTimer timer;
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
        QObject::connect(&m_signals, &Signals::interrupted, &loop, &QEventLoop::quit);
        std::unique_ptr<QSocketNotifier> changes;
        if (m_watcher->descriptor() >= 0) {
            changes
                = std::make_unique<QSocketNotifier>(m_watcher->descriptor(), QSocketNotifier::Read);
            QObject::connect(changes.get(), &QSocketNotifier::activated, &loop, &QEventLoop::quit);
        }
        timer.start(static_cast<int>(std::max<qint64>(ms, 1)));
        if (!Signals::received())
            loop.exec();
    }

    /// False when nothing could be done with any of them.
    bool Watch::dealWith(const QList<CompleteFile>& files)
    {
        QList<WatchedSource> begun;
        QList<WatchedSource> fresh;
        bool isMoving = false;
        qint64 bytes = 0;
        for (const CompleteFile& file : files) {
            if (Signals::received() || begun.size() + fresh.size() >= mostSources
                || bytes > mostBytes)
                break;
            bytes += file.state.sizeBytes;
            isMoving = settle(file, begun, fresh) || isMoving;
        }
        for (const QList<WatchedSource>& items : { begun, fresh })
            if (!items.isEmpty() && !Signals::received() && !m_retries.isPaused(u""_s))
                isMoving = convert(items) || isMoving;
        return isMoving;
    }

    /// The file at `path` has other bytes than when it was begun. What was made of the first part
    /// of a file that went on growing is wrong; what was made of a whole one stays.
    void Watch::dropParts(const QString& path, const WatchJournal::Known& known)
    {
        int removed = 0;
        for (auto output = known.outputs.cbegin(); output != known.outputs.cend(); ++output)
            if (!known.isDone && isFileOf(output.key(), *output) && QFile::remove(output.key()))
                ++removed;
        if (known.isDone && !known.outputs.isEmpty())
            tell(path, u"it was written anew after it was converted; what was made of it stays"_s);
        else if (removed > 0)
            tell(path,
                 u"it has changed since it was begun; %1 outputs made of it are removed"_s.arg(
                     removed));
    }

    /// By what is noted of it. True when it is put away.
    bool Watch::settle(const CompleteFile& file, QList<WatchedSource>& begun,
                       QList<WatchedSource>& fresh)
    {
        const WatchJournal::Known* known = m_journal->known(file.path);
        if (known && !known->movedTo.isEmpty()) {
            guarded(file.path, [&] { m_putAway->finish(file.path); });
            return !m_retries.isPaused(file.path);
        }
        WatchedSource source {
            .source = { .path = file.path, .shown = shown(file.path), .foundIn = m_folder },
            .state = file.state
        };
        if (!known || !known->digest) {
            fresh.append(source);
            return false;
        }
        if (!isFileOf(file.path, *known->digest)) {
            if (known->identity == file.state.identity)
                dropParts(file.path, *known);
            fresh.append(source);
            return false;
        }
        bool isProven
            = known->isDone && (known->isBegunHere || !m_options.conversion.run.writesChecksums);
        for (auto output = known->outputs.cbegin();
             isProven && !known->isBegunHere && output != known->outputs.cend(); ++output)
            isProven = isFileOf(output.key(), *output);
        if (isProven) {
            putAway(file.path, file.state, {});
            return !m_retries.isPaused(file.path);
        }
        source.before = *known;
        begun.append(source);
        return false;
    }

    bool Watch::convert(const QList<WatchedSource>& items)
    {
        WatchBatch batch(m_options, m_settings, *m_journal, m_console);
        batch.setFilter([this](const QString& path, const QString& line) {
            const bool isOfRun = !path.isEmpty() && !isWatched(path);
            return isOfRun ? !m_retries.hasFailed(u""_s) : m_retries.isNews(path, line);
        });
        const std::vector<WatchedResult> results = batch.carryOut(items, m_signals);
        bool isMoving = false;
        bool isReached = false;
        bool wantsRoom = false;
        for (qsizetype i = 0; i < items.size(); ++i) {
            const WatchedResult& result = results.at(static_cast<std::size_t>(i));
            takeResult(items.at(i), result);
            isMoving = isMoving || result.outcome == WatchedResult::Outcome::Done
                || result.outcome == WatchedResult::Outcome::Failed;
            isReached = isReached || result.outcome != WatchedResult::Outcome::NotReached;
            wantsRoom = wantsRoom || result.wantsRoom;
        }
        if (wantsRoom || !isReached)
            m_retries.pause(u""_s);
        else
            m_retries.end(u""_s);
        m_retries.keepTold(u""_s);
        return isMoving;
    }

    void Watch::takeResult(const WatchedSource& item, const WatchedResult& result)
    {
        using Outcome = WatchedResult::Outcome;
        const QString& path = item.source.path;
        if (result.outcome == Outcome::TryAgain)
            m_retries.pause(path);
        else if (result.outcome != Outcome::NotReached)
            m_retries.end(path);
        m_retries.keepTold(path);
        if (result.outcome != Outcome::Done && result.outcome != Outcome::Failed)
            return;
        const auto now = fileState(QFile::encodeName(path));
        if (!now) {
            tell(path, u"it was taken away while it was converted"_s);
            guarded(path, [&] { m_journal->noteMoved(path); });
            return;
        }
        if (now != item.state) {
            tell(path, u"it has changed while it was converted, and is converted again"_s);
            return;
        }
        ++(result.outcome == Outcome::Done ? m_done : m_failed);
        putAway(path, item.state,
                result.outcome == Outcome::Done ? QString() : reasonText(item, result));
    }

    void Watch::putAway(const QString& path, const FileState& state, const QString& reason)
    {
        guarded(path, [&] { m_putAway->put(path, state, reason); });
    }

    /// What goes wrong there is tried again.
    void Watch::guarded(const QString& path, const std::function<void()>& step)
    {
        try {
            step();
            m_retries.end(path);
        } catch (const std::runtime_error& error) {
            tell(path, QString::fromUtf8(error.what()));
            m_retries.pause(path);
        }
        m_retries.keepTold(path);
    }

    void Watch::tell(const QString& path, const QString& reason)
    {
        const QString line = messageText({ .reason = reason }, shown(path));
        if (m_retries.isNews(path, line))
            m_console.trouble(line);
    }

    QString Watch::reasonText(const WatchedSource& item, const WatchedResult& result) const
    {
        QStringList lines { u"%1 was not converted, or not all of it."_s.arg(
                                lastPathComponent(item.source.path)),
                            QDateTime::currentDateTime().toString(Qt::ISODate), u""_s };
        lines += result.reasons;
        lines
            += QStringList { u""_s,
                             result.outputs.isEmpty() ? u"Nothing was written."_s : u"Written:"_s };
        lines += result.outputs;
        return lines.join(u'\n') + u'\n';
    }

} // namespace

int watchFolder(const Options& options, Console& console)
{
    return Watch(options, console).carryOut();
}

} // namespace pagestack
