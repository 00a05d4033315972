// How long the commands on a long list take: list_commands [FILES [FOLDER]]
//
// Makes FILES (100000) one-row TIFF files below FOLDER (/dev/shm), opens them in the main window
// and in another one a tenth of them, and measures each command in both: the time until its work is
// done and painted, in milliseconds, and the ratio of the two, which is about 10 as long as no step
// is quadratic. Runs without a display.

#include "engine/settings/UserDefaults.h"
#include "engine/support/Workspace.h"
#include "filelist/CustomTableView.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
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
    double ms;
};

class Window
{
public:
    explicit Window(const QString& settings)
        : m_defaults(settings)
        , m_controller({ m_defaults, m_desktop, m_alerts, m_chooser })
    {
        m_controller.awakeFromNib();
    }

    QList<Timing> run(const QString& folder)
    {
        m_controller.setInculdeSubfolders(true);
        m_controller.window()
            ->findChild<QAbstractButton*>(u"inculdeSubfoldersBtn"_s)
            ->setChecked(true);
        measure(u"load"_s, [&] { m_controller.openPaths({ folder }); });
        m_timings.clear();
        const int count = m_controller.files().count();
        for (const char* name : { "invertCheckAction", "uncheckAllAction", "checkAllAction",
                                  "selectAllRowsAction", "invertSelectionAction" })
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
        measure(u"find what a tenth of the names has"_s, [&] {
            table().clearSelection();
            m_controller.searchAction();
            m_controller.window()->findChild<QLineEdit*>(u"searchField"_s)->setText(u"3.tif"_s);
        });
        auto& filter = *m_controller.window()->findChild<QLineEdit*>(u"filterField"_s);
        measure(u"filter what a tenth of the names has"_s, [&] { filter.setText(u"3.tif"_s); });
        measure(u"show all again"_s, [&] {
            action("filterAction").trigger();
            filter.clear();
        });
        QList<int> half;
        for (int row = 0; row < count; row += 2)
            half.append(row);
        measure(u"highlight every other row"_s, [&] { table().highlightRows(half); });
        measure(u"invert them"_s, [&] { action("invertSelectionAction").trigger(); });
        measure(u"remove every other row"_s, [&] { action("removeSelectedAction").trigger(); });
        measure(u"undo that"_s, [&] { action("undoAction").trigger(); });
        QList<int> firstHalf(count / 2);
        std::iota(firstHalf.begin(), firstHalf.end(), 0);
        table().highlightRows(firstHalf);
        measure(u"remove the first half"_s, [&] { action("removeSelectedAction").trigger(); });
        measure(u"undo that "_s, [&] { action("undoAction").trigger(); });
        m_chooser.setNextChoice({ QUrl::fromLocalFile(folder + u"/list.txt"_s) });
        measure(u"export"_s, [&] { action("exportAction").trigger(); });
        m_alerts.setNextAnswer(0);
        measure(u"remove all"_s, [&] { action("removeAllAction").trigger(); });
        return m_timings;
    }

private:
    QAction& action(const char* name)
    {
        return *m_controller.window()->findChild<QAction*>(QLatin1StringView(name));
    }
    CustomTableView& table() { return *m_controller.window()->findChild<CustomTableView*>(); }
    void sort(int column, bool isAscending)
    {
        table().horizontalHeader()->setSortIndicator(
            column, isAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
    }

    void measure(const QString& command, const std::function<void()>& act)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        act();
        // What runs beside the window, and what typing waits for, belongs to the command.
        const bool isLoad = command == u"load"_s;
        const bool isTyped = command.startsWith(u"find"_s);
        const bool isFilter = command.startsWith(u"filter"_s);
        do {
            QApplication::processEvents(QEventLoop::AllEvents, 5);
        } while (m_controller.isProcessing() || (isLoad && m_controller.files().count() == 0)
                 || (isTyped && table().highlightedSpan().first < 0)
                 || (isFilter && !table().shownRows().isFiltered()));
        table().viewport()->repaint();
        m_timings.append({ command, static_cast<double>(elapsed.nsecsElapsed()) / 1e6 });
        QThread::msleep(20); // the thread beside the window ends
        QApplication::processEvents();
    }

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
    makeTree(place.filePath(u"some"_s), files / 10);
    const QList<Timing> few = Window(place.filePath(u"some.json"_s)).run(place.filePath(u"some"_s));
    const QList<Timing> many = Window(place.filePath(u"all.json"_s)).run(place.filePath(u"all"_s));
    QTextStream out(stdout);
    out << "command | " << files / 10 << " files, ms | " << files << " files, ms | ratio\n";
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(1);
    for (qsizetype i = 0; i < many.size(); ++i)
        out << many.at(i).command << " | " << few.at(i).ms << " | " << many.at(i).ms << " | "
            << many.at(i).ms / few.at(i).ms << '\n';
    return 0;
}
