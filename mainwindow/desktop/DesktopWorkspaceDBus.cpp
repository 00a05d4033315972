#include "engine/support/SystemLog.h"
#include "mainwindow/desktop/DesktopWorkspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QSet>
#include <QUrl>

#include <memory>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // How long the file manager may take, which first may have to be started and then opens one
    // window after the other, some 40 ms each.
    constexpr int answerTimeMs = 3000;
    constexpr int fileTimeMs = 100;

    // One request of the user, which may take several calls. Lives until the last is answered.
    class Request
    {
    public:
        explicit Request(DesktopWorkspace& workspace)
            : m_workspace(workspace)
        {
        }

        // Does without the file manager what it did not do, for `reason`.
        void openFolders(const QList<QUrl>& urls, const QString& reason)
        {
            for (const QUrl& url : urls) {
                const QUrl folder = url.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
                if (m_opened.contains(folder))
                    continue;
                m_opened.insert(folder);
                systemLog(u"The file manager did not show the files, so %1 is opened: %2"_s.arg(
                    folder.toLocalFile(), reason));
                m_workspace.openURL(folder);
            }
        }

        // How long the answer to the next call, about `urls`, may take: all files asked for so far
        // come before it.
        int nextTimeLimitMs(const QList<QUrl>& urls)
        {
            m_filesAsked += int(urls.size());
            return answerTimeMs + m_filesAsked * fileTimeMs;
        }

        DesktopWorkspace& workspace() const { return m_workspace; }

    private:
        DesktopWorkspace& m_workspace;
        int m_filesAsked = 0;
        QSet<QUrl> m_opened;
    };

    QDBusMessage fileManagerCall(const QString& method, const QList<QUrl>& urls)
    {
        QStringList uris;
        for (const QUrl& url : urls)
            uris.append(QString::fromLatin1(url.toEncoded()));
        QDBusMessage call = QDBusMessage::createMethodCall(
            u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
            u"org.freedesktop.FileManager1"_s, method);
        call << uris << QString(); // no startup id
        return call;
    }

    void callFileManager(const std::shared_ptr<Request>& request, const QString& method,
                         const QList<QUrl>& urls)
    {
        const QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected()) { // a watcher would then never say that its call has failed
            request->openFolders(urls, u"there is no session bus"_s);
            return;
        }
        const QDBusPendingCall call
            = bus.asyncCall(fileManagerCall(method, urls), request->nextTimeLimitMs(urls));
        auto* watcher = new QDBusPendingCallWatcher(call, &request->workspace());
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                         [watcher, request, urls] {
                             if (watcher->isError())
                                 request->openFolders(urls, watcher->error().message());
                             watcher->deleteLater();
                         });
    }

} // namespace

void DesktopWorkspace::revealFiles(const QList<QUrl>& urls)
{
    callFileManager(std::make_shared<Request>(*this), u"ShowItems"_s, urls);
}

void DesktopWorkspace::describeFiles(const QList<QUrl>& urls)
{
    const auto request = std::make_shared<Request>(*this);
    for (const QUrl& url : urls)
        callFileManager(request, u"ShowItemProperties"_s, { url });
}

} // namespace pagestack
