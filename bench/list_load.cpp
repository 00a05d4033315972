// How fast a folder tree gets into the file list: list_load [FILES [FOLDER]]
//
// Makes a tree of small TIFF files (100000 below /dev/shm, or the given numbers), then measures
// walking it and counting the pages of each file with libtiff alone; loading it, with the table in
// a window; and loading a tenth of it. For the loads also the longest time that the main thread's
// event loop did not come round to a 60 Hz timer, and whether the last files took longer than the
// first. Runs without a display.

#include "filelist/CustomTableView.h"
#include "filelist/FileLoader.h"
#include "filelist/FileTableModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

#include <tiffio.h>

#include <atomic>
#include <filesystem>
#include <iterator>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int filesInAFolder = 1000;

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

void writeTiff(const QString& path, int pages)
{
    TIFF* tiff = TIFFOpen(QFile::encodeName(path).constData(), "w");
    for (int page = 0; tiff && page < pages; ++page) {
        unsigned char row[2] {};
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 16);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFWriteScanline(tiff, row, 0, 0);
        TIFFWriteDirectory(tiff);
    }
    if (tiff)
        TIFFClose(tiff);
}

// One file in ten has three pages.
void makeTree(const QString& folder, int files)
{
    QDir().mkpath(folder);
    const QString one = folder + u"/one"_s;
    const QString three = folder + u"/three"_s;
    writeTiff(one, 1);
    writeTiff(three, 3);
    for (int i = 0; i < files; ++i) {
        const QString below = folder + u"/folder %1"_s.arg(i / filesInAFolder);
        if (i % filesInAFolder == 0)
            QDir().mkpath(below);
        QFile::copy(i % 10 == 0 ? three : one, below + u"/scan %1.tif"_s.arg(i));
    }
    QFile::remove(one);
    QFile::remove(three);
}

struct Walk
{
    qint64 files = 0;
    qint64 pages = 0;
    double seconds = 0;
};

Walk walkWithLibtiff(const QString& folder)
{
    namespace fs = std::filesystem;
    QElapsedTimer elapsed;
    elapsed.start();
    Walk walk;
    for (const auto& entry : fs::recursive_directory_iterator(folder.toStdString())) {
        if (entry.path().extension() != ".tif")
            continue;
        ++walk.files;
        if (TIFF* tiff = TIFFOpen(entry.path().c_str(), "rm")) {
            walk.pages += TIFFNumberOfDirectories(tiff);
            TIFFClose(tiff);
        }
    }
    walk.seconds = static_cast<double>(elapsed.nsecsElapsed()) / 1e9;
    return walk;
}

// The window as far as a load concerns it.
class Window : public QWidget, public pagestack::LoaderTarget
{
public:
    Window()
        : m_model(m_files)
    {
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(&m_table);
        layout->addWidget(&m_total);
        m_table.setModel(&m_model);
        resize(1000, 700);
    }

    bool isProcessing() const override { return m_isProcessing; }
    bool contains(const QUrl& url) const override { return m_files.contains(url); }
    bool append(const std::shared_ptr<pagestack::FileItem>& item) override
    {
        if (m_files.count() % std::max(1, tenth) == 0)
            tenthsMs.append(sinceStart.elapsed());
        return m_model.append(item);
    }
    void choosePages(const QHash<QUrl, QString>&) override { }
    void updateTotalPagesLabel() override
    {
        m_total.setText(u"Total Pages TIFF : %1"_s.arg(m_files.totalPages()));
    }

    const pagestack::FileList& files() const { return m_files; }
    void reorder(const QList<int>& rows) { m_model.reorder(rows); }

    int tenth = 1;
    QElapsedTimer sinceStart;
    QList<qint64> tenthsMs; ///< when each tenth of the files began

private:
    std::atomic_bool m_isProcessing = true;
    pagestack::FileList m_files;
    pagestack::FileTableModel m_model;
    pagestack::CustomTableView m_table;
    QLabel m_total;
};

// The longest time between two turns of a 60 Hz timer.
class Heartbeat
{
public:
    Heartbeat()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            m_longestMs = std::max(m_longestMs, m_sinceLast.restart());
            ++m_beats;
        });
        m_timer.setTimerType(Qt::PreciseTimer);
        m_sinceLast.start();
        m_timer.start(16);
    }
    qint64 longestMs() const { return std::max(m_longestMs, m_sinceLast.elapsed()); }
    int beats() const { return m_beats; }

private:
    QTimer m_timer;
    QElapsedTimer m_sinceLast;
    qint64 m_longestMs = 0;
    int m_beats = 0;
};

double loadTree(const QString& folder, int files)
{
    Window window;
    window.tenth = files / 10;
    window.show();
    QApplication::processEvents(); // the window is there before the clock starts

    Heartbeat heartbeat;
    double seconds = 0;
    qint64 longestMs = 0;
    double sortSeconds = 0;
    window.sinceStart.start();
    const std::unique_ptr<QThread> worker(QThread::create([&] {
        pagestack::FileLoader(window).addFolderToList({ QUrl::fromLocalFile(folder) }, true);
        seconds = static_cast<double>(window.sinceStart.nsecsElapsed()) / 1e9;
        QMetaObject::invokeMethod(
            &window, [&] { longestMs = heartbeat.longestMs(); }, Qt::BlockingQueuedConnection);
        const QList<int> rows
            = pagestack::sortedRows(window.files().items(), { { u"name"_s, true } });
        QMetaObject::invokeMethod(
            &window, [&] { window.reorder(rows); }, Qt::BlockingQueuedConnection);
        sortSeconds = static_cast<double>(window.sinceStart.nsecsElapsed()) / 1e9 - seconds;
    }));
    QObject::connect(worker.get(), &QThread::finished, qApp, &QCoreApplication::quit);
    worker->start();
    QApplication::exec();
    worker->wait();

    out() << "load: " << window.files().count() << " files, " << window.files().totalPages()
          << " pages in " << seconds << " s; longest gap of the main thread " << longestMs
          << " ms, with the sort by name " << heartbeat.longestMs() << " ms (" << heartbeat.beats()
          << " beats); sort " << sortSeconds << " s\n  ms for each tenth:";
    window.tenthsMs.append(static_cast<qint64>(seconds * 1000));
    for (auto it = window.tenthsMs.cbegin(); std::next(it) != window.tenthsMs.cend(); ++it)
        out() << ' ' << *std::next(it) - *it;
    out() << Qt::endl;
    return seconds;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    const int files = arguments.size() > 1 ? std::max(10, arguments.at(1).toInt()) : 100000;
    const QString parent = arguments.size() > 2 ? arguments.at(2) : u"/dev/shm"_s;

    const QTemporaryDir place(parent + u"/list_load-XXXXXX"_s);
    const QString all = place.path() + u"/all"_s;
    const QString some = place.path() + u"/some"_s;
    makeTree(all, files);
    makeTree(some, files / 10);

    walkWithLibtiff(all); // warms the caches
    double plain = 0;
    for (int round = 0; round < 3; ++round) {
        const Walk walk = walkWithLibtiff(all);
        out() << "walk and libtiff: " << walk.files << " files, " << walk.pages << " pages in "
              << walk.seconds << " s" << Qt::endl;
        plain = round == 0 ? walk.seconds : std::min(plain, walk.seconds);
        const double loaded = loadTree(all, files);
        out() << "  ratio " << loaded / walk.seconds << Qt::endl;
    }
    loadTree(some, files / 10);
    return 0;
}
