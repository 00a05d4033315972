// How long the commands on a long list take: list_commands [FILES [FOLDER [PART]]]
//
// Makes FILES (100000) one-row TIFF files below FOLDER (/dev/shm), opens them in the main window
// and in another one a tenth of them, and measures each command in both: the time until its work is
// done and painted, in milliseconds, and the ratio of the two, which is about 10 as long as no step
// is quadratic; and for the long list how long the main thread was not free, as processor time of
// its longest turn of the event loop and as the longest time in which a timer of 1 ms did not come.
// PART is one of list, find, remove and run, which then are measured alone, with the long list
// only. Resident memory is told beside what came before. Runs without a display; with the
// environment's QT_QPA_PLATFORM on one (bench/accessible.sh).

#include "bench/TurnMeter.h"
#include "engine/settings/UserDefaults.h"
#include "engine/support/Workspace.h"
#include "filelist/CustomTableView.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <tiffio.h>

#include <functional>
#include <numeric>

using namespace Qt::StringLiterals;
using namespace pagestack;

namespace {

constexpr int filesInAFolder = 1000;

void makeTree(const QString& folder, int files)
{
    QDir().mkpath(folder);
    const QString one = folder + u"/one"_s;
    if (TIFF* tiff = TIFFOpen(QFile::encodeName(one).constData(), "w")) {
        unsigned char row[2] {};
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 16);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFWriteScanline(tiff, row, 0, 0);
        TIFFClose(tiff);
    }
    for (int i = 0; i < files; ++i) {
        const QString below = folder + u"/folder %1"_s.arg(i / filesInAFolder);
        if (i % filesInAFolder == 0)
            QDir().mkpath(below);
        // Not in the order of their numbers, so that sorting has something to do.
        QFile::copy(one, below + u"/scan %1.tif"_s.arg((i * 7919LL) % files));
    }
    QFile::remove(one);
}

class NoDesktop : public Workspace
{
public:
    void openURL(const QUrl&) override { }
    void activateFileViewerSelectingURLs(const QList<QUrl>&) override { }
    void showInformation(const QList<QUrl>&) override { }
};

struct Timing
{
    QString command;
    double ms = 0;
    double turnCpuMs = 0;
    double gapMs = 0;
    double residentMb = 0;
};

class Window
{
public:
    Window(const QTemporaryDir& place, const QString& name)
        : m_folder(place.filePath(name))
        , m_defaults(m_folder + u".json"_s)
        , m_controller({ m_defaults, m_desktop, m_alerts, m_chooser })
    {
        m_controller.awakeFromNib();
    }

    QList<Timing> run(const QString& part)
    {
        m_controller.setInculdeSubfolders(true);
        findBox("inculdeSubfoldersBtn").setChecked(true);
        measure(u"nothing"_s, [] {});
        const auto isLoaded = [this] { return isIdle() && m_controller.files().count() > 0; };
        measure(
            u"load"_s, [&] { m_controller.openPaths({ m_folder }); }, isLoaded);
        const auto isWanted = [&](const QString& name) { return part.isEmpty() || part == name; };
        if (isWanted(u"list"_s))
            measureList();
        if (isWanted(u"find"_s))
            measureLookingFor();
        if (isWanted(u"remove"_s))
            measureRemoval();
        if (isWanted(u"run"_s))
            measureRuns();
        return m_timings;
    }

private:
    void measureList()
    {
        const auto hasSaidSo = [this] {
            return isIdle()
                && !m_controller.window()->findChild<QLabel*>(u"additionLabel"_s)->text().isEmpty();
        };
        measure(
            u"load what is there"_s, [&] { m_controller.openPaths({ m_folder }); }, hasSaidSo);
        m_chooser.setNextChoice({ QUrl::fromLocalFile(m_folder + u".txt"_s) });
        measure(u"export"_s, [&] { action("exportAction").trigger(); });
        const int count = m_controller.files().count();
        for (const char* name : { "invertCheckAction", "uncheckAllAction", "undoAction",
                                  "checkAllAction", "selectAllRowsAction", "copyAction",
                                  "invertSelectionAction", "checkSelectionAction" })
            measure(QLatin1StringView(name), [&] { action(name).trigger(); });
        for (int column = 0; column < FileTableModel::ColumnCount; ++column) {
            measure(u"sort by "_s + FileTableModel::identifier(column),
                    [&] { sort(column, false); });
            measure(u"sort back by "_s + FileTableModel::identifier(column),
                    [&] { sort(column, true); });
        }
        measure(u"undo the sort"_s, [&] { action("undoAction").trigger(); });
        QList<int> block(std::min(1000, count / 2));
        std::iota(block.begin(), block.end(), count / 4);
        measure(u"highlight a block of 1000"_s, [&] { table().highlightRows(block); });
        measure(u"move it down"_s, [&] { action("moveDownAction").trigger(); });
        measure(u"move it up"_s, [&] { action("moveUpAction").trigger(); });
        measure(u"drag it to the end"_s, [&] { emit table().dragRequested(count); });
        measure(u"undo the drag"_s, [&] { action("undoAction").trigger(); });
        measure(u"tick a row"_s, [&] {
            m_controller.tableModel().setData(m_controller.tableModel().index(0, 0), Qt::Unchecked,
                                              Qt::CheckStateRole);
        });
        measure(u"undo the tick"_s, [&] { action("undoAction").trigger(); });
    }

    void measureLookingFor()
    {
        measure(
            u"find what a tenth of the names has"_s,
            [&] {
                table().clearSelection();
                m_controller.searchAction();
                m_controller.window()->findChild<QLineEdit*>(u"searchField"_s)->setText(u"3.tif"_s);
            },
            [&] { return table().highlightedSpan().first >= 0; });
        auto& filter = *m_controller.window()->findChild<QLineEdit*>(u"filterField"_s);
        const auto isFiltered = [&] { return table().shownRows().isFiltered(); };
        measure(
            u"filter nearly all"_s, [&] { filter.setText(u"scan"_s); }, isFiltered);
        measure(
            u"filter a tenth of the names"_s, [&] { filter.setText(u"3.tif"_s); },
            [&] { return table().model()->rowCount() < m_controller.files().count() / 5; });
        measure(u"tick what is shown"_s, [&] {
            action("selectAllRowsAction").trigger();
            action("invertSelectionAction").trigger();
        });
        measure(
            u"show all again"_s, [&] { filter.clear(); }, [&] { return !isFiltered(); });
        measure(u"undo the ticks"_s, [&] { action("undoAction").trigger(); });
    }

    void measureRemoval()
    {
        const int count = m_controller.files().count();
        QList<int> half;
        for (int row = 0; row < count; row += 2)
            half.append(row);
        measure(u"open the preview"_s, [&] { action("togglePreviewAction").trigger(); });
        measure(u"highlight every other row"_s, [&] { table().highlightRows(half); });
        measure(u"invert them"_s, [&] { action("invertSelectionAction").trigger(); });
        measure(u"remove every other row"_s, [&] { action("removeSelectedAction").trigger(); });
        measure(u"undo that "_s, [&] { action("undoAction").trigger(); });
        measure(u"invert again"_s, [&] { action("invertSelectionAction").trigger(); });
        QList<int> firstHalf(count / 2);
        std::iota(firstHalf.begin(), firstHalf.end(), 0);
        table().highlightRows(firstHalf);
        measure(u"remove the first half"_s, [&] { action("removeSelectedAction").trigger(); });
        measure(u"undo that  "_s, [&] { action("undoAction").trigger(); });
        measure(u"close the preview"_s, [&] { action("togglePreviewAction").trigger(); });
        m_alerts.setNextAnswer(0);
        measure(u"remove all"_s, [&] { action("removeAllAction").trigger(); });
        measure(u"undo that"_s, [&] { action("undoAction").trigger(); });
    }

    void measureRuns()
    {
        const auto isEnded = [this] {
            return m_controller.process() != nullptr && m_controller.process()->isCompleted();
        };
        const auto begin = [this](const QString& folder) {
            QDir().mkpath(m_folder + folder);
            m_controller.settings().setOutputFolderPath(m_folder + folder);
            m_controller.convertAction();
        };
        measure(
            u"begin a run"_s, [&] { begin(u".part"_s); },
            [this] { return m_controller.process()->totalFileCreated() > 100; });
        measure(
            u"cancel it"_s, [this] { m_controller.processViewPanel()->cancel(); }, isEnded);
        measure(u"close it"_s, [this] { m_controller.closeProcessAction(); });
        measure(u"tick what was not reached"_s, [&] { action("tickFailedAction").trigger(); });
        measure(u"undo these ticks"_s, [&] { action("undoAction").trigger(); });
        measure(
            u"run"_s, [&] { begin(u".full"_s); }, isEnded);
        measure(u"close the run"_s, [this] { m_controller.closeProcessAction(); });
        measure(u"sort by what became of them"_s, [&] { sort(FileTableModel::Status, false); });
        measure(u"remove what is converted"_s, [&] { action("removeConvertedAction").trigger(); });
        measure(u"undo that   "_s, [&] { action("undoAction").trigger(); });
    }

    QAction& action(const char* name)
    {
        return *m_controller.window()->findChild<QAction*>(QLatin1StringView(name));
    }
    QAbstractButton& findBox(const char* name)
    {
        return *m_controller.window()->findChild<QAbstractButton*>(QLatin1StringView(name));
    }
    CustomTableView& table() { return *m_controller.window()->findChild<CustomTableView*>(); }
    void sort(int column, bool isAscending)
    {
        table().horizontalHeader()->setSortIndicator(
            column, isAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
    }
    bool isIdle() const { return !m_controller.isProcessing(); }

    void measure(const QString& command, const std::function<void()>& act)
    {
        measure(command, act, [this] { return isIdle(); });
    }

    // What runs beside the window, what typing waits for and what is told a moment later belongs to
    // the command.
    void measure(const QString& command, const std::function<void()>& act,
                 const std::function<bool()>& isDone)
    {
        QThread::msleep(20); // the thread beside the window ends
        for (int turn = 0; turn < 20; ++turn)
            QApplication::processEvents();
        constexpr qint64 restMs = 1000; // of what follows a change: totals, the plan, statuses
        Timing timing { command };
        TurnMeter turns;
        QElapsedTimer elapsed;
        elapsed.start();
        bool hasBegun = false;
        QMetaObject::invokeMethod(
            m_controller.window(),
            [&] {
                act();
                hasBegun = true;
            },
            Qt::QueuedConnection);
        qint64 doneMs = 0;
        while (doneMs == 0 || elapsed.elapsed() < doneMs + restMs) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
            if (doneMs == 0 && hasBegun && isDone()) {
                table().viewport()->repaint();
                timing.ms = static_cast<double>(elapsed.nsecsElapsed()) / 1e6;
                doneMs = std::max<qint64>(1, elapsed.elapsed());
            }
        }
        timing.turnCpuMs = turns.longestCpuMs();
        timing.gapMs = turns.longestGapMs();
        timing.residentMb = residentMb();
        m_timings.append(timing);
    }

    const QString m_folder;
    UserDefaults m_defaults;
    NoDesktop m_desktop;
    AlertPanel m_alerts;
    FileChooser m_chooser;
    PagestackAppDelegate m_controller;
    QList<Timing> m_timings;
};

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const int files = arguments.size() > 1 ? std::max(100, arguments.at(1).toInt()) : 100000;
    const QTemporaryDir place((arguments.size() > 2 ? arguments.at(2) : u"/dev/shm"_s)
                              + u"/list_commands-XXXXXX"_s);
    qputenv("XDG_DATA_HOME", place.filePath(u"data"_s).toLocal8Bit());
    makeTree(place.filePath(u"all"_s), files);
    const QString part = arguments.value(3);
    const QList<Timing> many = Window(place, u"all"_s).run(part);
    QList<Timing> few;
    if (part.isEmpty()) {
        makeTree(place.filePath(u"some"_s), files / 10);
        few = Window(place, u"some"_s).run(part);
    }
    QTextStream out(stdout);
    out << "command | " << files / 10 << " files, ms | " << files
        << " files, ms | ratio | longest turn, CPU ms | longest gap, ms | resident, MB\n";
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(1);
    for (qsizetype i = 0; i < many.size(); ++i) {
        const Timing& timing = many.at(i);
        const double fewMs = few.value(i).ms;
        out << timing.command.trimmed() << " | " << fewMs << " | " << timing.ms << " | "
            << (fewMs > 0 ? timing.ms / fewMs : 0) << " | " << timing.turnCpuMs << " | "
            << timing.gapMs << " | " << timing.residentMb << '\n';
    }
    return 0;
}
