#pragma once

#include "engine/settings/UserDefaults.h"
#include "engine/support/Workspace.h"
#include "filelist/CustomTableView.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"
#include "tests/filelist/TinyTiff.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTabWidget>

namespace pagestack {

constexpr int longMs = 60000; // for what a slow machine may take its time over

/// Remembers what it was asked for.
class Desktop : public Workspace
{
public:
    void openURL(const QUrl& url) override { note(opened, { url }); }
    void activateFileViewerSelectingURLs(const QList<QUrl>& urls) override { note(revealed, urls); }
    void showInformation(const QList<QUrl>& urls) override { note(informed, urls); }

    bool isRefusing = false;
    QList<QUrl> opened; ///< by a job's thread too, before it announces that it is complete
    QList<QUrl> revealed;
    QList<QUrl> informed;

private:
    void note(QList<QUrl>& list, const QList<QUrl>& urls) const
    {
        if (isRefusing)
            throw std::runtime_error("refused");
        list += urls;
    }
};

inline QList<QUrl> urlsOf(const QStringList& paths)
{
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    return urls;
}

inline QString sample(const QString& name)
{
    return qEnvironmentVariable("PAGESTACK_SOURCE_DIR") + u"/samples/"_s + name;
}

template <typename T = QWidget>
T& childOf(const QObject& parent, const char* name = nullptr)
{
    T* const object = parent.findChild<T*>(QLatin1StringView(name));
    if (object == nullptr)
        qFatal("there is no %s", name);
    return *object;
}

/// The window with what surrounds it, from one start of the program to its end.
struct Session
{
    Session(const QString& store, const ReadDates& readDates)
        : defaults(store)
        , controller({ defaults, desktop, alerts, chooser, readDates })
    {
        controller.awakeFromNib();
    }

    UserDefaults defaults;
    Desktop desktop;
    AlertPanel alerts;
    FileChooser chooser;
    PagestackAppDelegate controller;
};

/// A test of the real window. Settings, logs and files are in a folder of each case; dialogs are
/// answered beforehand.
class WindowFixture : public QObject
{
protected:
    void takeNewFolder()
    {
        m_session.reset();
        QTest::failOnWarning(
            QRegularExpression(u"invalid nullptr"_s)); // connects what is not there
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("XDG_DATA_HOME", path(u"data"_s).toLocal8Bit());
        QDir::setCurrent(path({}));
    }
    /// Ends the program and starts it again.
    void start(const ReadDates& readDates = &FileItem::dates)
    {
        m_session.reset();
        m_session = std::make_unique<Session>(path(u"settings.json"_s), readDates);
    }
    void end() { m_session.reset(); }

    QString path(const QString& name) const { return m_folder->filePath(name); }
    PagestackAppDelegate& controller() const { return m_session->controller; }
    QMainWindow& window() const { return *controller().window(); }
    Settings& settings() const { return controller().settings(); }
    Desktop& desktop() const { return m_session->desktop; }
    AlertPanel& alerts() const { return m_session->alerts; }
    FileChooser& chooser() const { return m_session->chooser; }
    UserDefaults& defaults() const { return m_session->defaults; }

    template <typename T = QWidget>
    T& find(const char* name = nullptr) const
    {
        return childOf<T>(window(), name);
    }
    CustomTableView& table() const { return find<CustomTableView>("mainTableView"); }
    QString text(const char* label) const { return find<QLabel>(label).text(); }
    /// Clicks a button or chooses a menu item, which does nothing while it is disabled.
    void press(const char* name) const
    {
        if (auto* action = window().findChild<QAction*>(QLatin1StringView(name)))
            action->trigger();
        else
            find<QAbstractButton>(name).click();
    }
    bool isEnabled(const char* name) const
    {
        const auto* action = window().findChild<QAction*>(QLatin1StringView(name));
        return action != nullptr ? action->isEnabled() : find(name).isEnabled();
    }
    QPoint placeOf(int row, int column) const
    {
        return table().visualRect(table().model()->index(row, column)).center();
    }

    QStringList names() const { return namesOf(controller().files()); }
    QString order() const { return names().join(u' ').remove(u".tif"_s); }
    /// "files, ticked, ticked pages, pages" as the two lines of totals say it.
    QString totals() const
    {
        static const QRegularExpression numbers(
            u"^(\\d+) Total file\\(s\\); (\\d+) file selected; "
            "Total page count of selected TIFF file\\(s\\): (\\d+)Total Pages TIFF : (\\d+)$"_s);
        const QString lines = text("labelTotalFiles") + text("labelTotalTIFFPages");
        const QStringList found = numbers.match(lines).capturedTexts();
        return found.isEmpty() ? lines : found.sliced(1).join(u", "_s);
    }

    /// Does `begin`, which starts a load, and waits for its end.
    template <typename Begin>
    bool load(Begin begin)
    {
        QSignalSpy processing(&controller(), &PagestackAppDelegate::isProcessingChanged);
        QSignalSpy ended(&controller(), &PagestackAppDelegate::readyToTerminate);
        begin();
        while (processing.size() < 2)
            if (!processing.wait(longMs))
                return false;
        // Not before the sort at its end, which the end of the program would cut short.
        return QTest::qWaitFor([this] { return table().isEnabled(); }, longMs)
            && (controller().applicationShouldTerminate() || ended.wait(longMs));
    }
    bool open(const QStringList& paths)
    {
        return load([&] { controller().openPaths(paths); });
    }
    /// Makes files of `pages` pages each and opens them.
    bool openFiles(std::initializer_list<std::pair<const char*, int>> files)
    {
        QStringList paths;
        for (const auto& [name, pages] : files)
            paths.append(makeFile(path(u"in/"_s + QLatin1StringView(name)), pages));
        return open(paths);
    }
    /// Six files "0.tif" to "5.tif"; the pages of each are its number.
    QStringList sixFiles() const
    {
        QStringList paths;
        for (int i = 0; i < 6; ++i)
            paths.append(makeFile(path(u"in/%1.tif"_s.arg(i)), i));
        return paths;
    }
    bool fill() { return open(sixFiles()); }
    /// A folder of 300 files "100.tif" to "399.tif".
    QString manyFiles() const
    {
        for (int i = 100; i < 400; ++i)
            makeFile(path(u"many/%1.tif"_s.arg(i)));
        return path(u"many"_s);
    }
    /// The samples in a folder of their own, without what a run adds to them.
    QString samples() const
    {
        QDir().mkpath(path(u"samples"_s));
        for (const QString& name : QDir(sample({})).entryList({ u"*.tif"_s }))
            QFile::copy(sample(name), path(u"samples/"_s + name));
        return path(u"samples"_s);
    }
    QString outFolder() const
    {
        QDir().mkpath(path(u"out"_s));
        return path(u"out"_s);
    }
    bool waitForRun() const
    {
        return QTest::qWaitFor([this] { return isEnabled("closeProcessBtn"); }, longMs);
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Session> m_session;
};

} // namespace pagestack
