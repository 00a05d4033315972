#pragma once

#include "engine/settings/UserDefaults.h"
#include "engine/support/Workspace.h"
#include "filelist/CustomTableView.h"
#include "filelist/FileTableModel.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMutex>
#include <QSignalSpy>
#include <QTest>

namespace pagestack {

using namespace Qt::StringLiterals;

constexpr int longMs = 60000; // for what a slow machine may take its time over

/// Remembers what it was asked for.
class Desktop : public Workspace
{
public:
    void openURL(const QUrl& url) override
    {
        const QMutexLocker lock(&m_mutex);
        m_opened.append(url);
    }
    void activateFileViewerSelectingURLs(const QList<QUrl>& urls) override
    {
        revealed.append(urls);
    }
    void showInformation(const QList<QUrl>& urls) override { informed.append(urls); }

    QList<QUrl> requests() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_opened;
    }
    QStringList opened() const
    {
        QStringList paths;
        for (const QUrl& url : requests())
            paths.append(url.toLocalFile());
        return paths;
    }

    QList<QList<QUrl>> revealed; ///< a list a request
    QList<QList<QUrl>> informed;

private:
    mutable QMutex m_mutex; // a job opens its folder from its own thread
    QList<QUrl> m_opened;
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

/// The window with what surrounds it, from one start of the program to its end. Its settings are in
/// a JSON file; dialogs are answered beforehand.
class Session
{
public:
    explicit Session(const QString& store, const ReadDates& readDates = &FileItem::dates)
        : defaults(store)
        , controller({ defaults, desktop, alerts, chooser, readDates })
    {
        controller.awakeFromNib();
    }

    template <typename T>
    T& find(const char* name) const
    {
        T* const object = controller.window()->findChild<T*>(QLatin1StringView(name));
        if (object == nullptr)
            qFatal("the window has no %s", name);
        return *object;
    }
    QWidget& widget(const char* name) const { return find<QWidget>(name); }
    QString text(const char* label) const { return find<QLabel>(label).text(); }
    void click(const char* button) const { QTest::mouseClick(&widget(button), Qt::LeftButton); }
    CustomTableView& table() const { return find<CustomTableView>("mainTableView"); }
    QStringList names()
    {
        QStringList result;
        for (const auto& item : controller.files().items())
            result.append(item->name());
        return result;
    }
    /// "files, ticked, ticked pages, pages" as the two lines of totals say it.
    QString totals()
    {
        const QString numbers = u"%1 Total file(s); %2 file selected; "
                                "Total page count of selected TIFF file(s): %3"_s;
        const FileList& files = controller.files();
        const QString line
            = numbers.arg(files.count()).arg(files.checkedCount()).arg(files.checkedPages());
        if (text("labelTotalFiles") != line)
            return text("labelTotalFiles");
        return u"%1, %2, %3, %4"_s.arg(files.count())
            .arg(files.checkedCount())
            .arg(files.checkedPages())
            .arg(text("labelTotalTIFFPages").section(u"Total Pages TIFF : "_s, 1));
    }

    /// Does `begin`, which starts a load, and waits for its end.
    template <typename Begin>
    bool load(Begin begin)
    {
        QSignalSpy processing(&controller, &PagestackAppDelegate::isProcessingChanged);
        QSignalSpy ended(&controller, &PagestackAppDelegate::readyToTerminate);
        begin();
        while (processing.size() < 2)
            if (!processing.wait(longMs))
                return false;
        // Not before the sort at its end, which the end of the program would cut short.
        return QTest::qWaitFor([this] { return table().isEnabled(); }, longMs)
            && (controller.applicationShouldTerminate() || ended.wait(longMs));
    }
    bool open(const QStringList& paths)
    {
        return load([&] { controller.openPaths(paths); });
    }
    /// Begins a run that has something to do for a while, and waits for its first page.
    bool beginLongRun(const QString& folder, int files)
    {
        const QString sources = folder + u"/sources"_s;
        QDir().mkpath(sources);
        QDir().mkpath(folder + u"/out"_s);
        for (int i = 0; i < files; ++i)
            QFile::copy(sample(u"text-page.tif"_s), u"%1/%2.tif"_s.arg(sources).arg(i));
        if (!open({ sources }))
            return false;
        controller.settings().setOutputType(1);
        controller.settings().setOutputFolderPath(folder + u"/out"_s);
        click("convertBtn");
        // No spy: the signal comes from the job's thread, and a spy belongs to one.
        return QTest::qWaitFor([&] { return controller.process()->totalFileCreated() > 0; },
                               longMs);
    }

    UserDefaults defaults;
    Desktop desktop;
    AlertPanel alerts;
    FileChooser chooser;
    PagestackAppDelegate controller;
};

} // namespace pagestack
