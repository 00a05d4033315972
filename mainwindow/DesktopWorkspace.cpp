#include "mainwindow/DesktopWorkspace.h"

#include "engine/support/SystemLog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QSet>
#include <QUrl>

namespace pagestack {

using namespace Qt::StringLiterals;

void DesktopWorkspace::openURL(const QUrl& url)
{
    QMetaObject::invokeMethod(this, [url] {
        if (!QDesktopServices::openUrl(url))
            systemLog(u"Nothing opens %1"_s.arg(url.toDisplayString()));
    });
}

void DesktopWorkspace::activateFileViewerSelectingURLs(const QList<QUrl>& urls)
{
    QMetaObject::invokeMethod(this, [this, urls] { callFileManager(u"ShowItems"_s, urls); });
}

void DesktopWorkspace::showInformation(const QList<QUrl>& urls)
{
    QMetaObject::invokeMethod(this, [this, urls] {
        for (const QUrl& url : urls)
            callFileManager(u"ShowItemProperties"_s, { url });
    });
}

void DesktopWorkspace::callFileManager(const QString& method, const QList<QUrl>& urls)
{
    QStringList uris;
    for (const QUrl& url : urls)
        uris.append(QString::fromLatin1(url.toEncoded()));
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s,
                                                       u"/org/freedesktop/FileManager1"_s,
                                                       u"org.freedesktop.FileManager1"_s, method);
    call << uris << QString();
    auto* watcher
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, urls] {
        if (watcher->isError()) {
            systemLog(u"The file manager did not answer: "_s + watcher->error().message());
            openFolders(urls);
        }
        watcher->deleteLater();
    });
}

void DesktopWorkspace::openFolders(const QList<QUrl>& urls)
{
    QSet<QUrl> opened;
    for (const QUrl& url : urls) {
        const QUrl folder = url.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
        if (opened.contains(folder))
            continue;
        opened.insert(folder);
        openURL(folder);
    }
}

} // namespace pagestack
