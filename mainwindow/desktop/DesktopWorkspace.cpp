#include "mainwindow/desktop/DesktopWorkspace.h"

#include "engine/support/SystemLog.h"

#include <QDesktopServices>
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
    QMetaObject::invokeMethod(this, [this, urls] { revealFiles(urls); });
}

void DesktopWorkspace::showInformation(const QList<QUrl>& urls)
{
    QMetaObject::invokeMethod(this, [this, urls] { describeFiles(urls); });
}

} // namespace pagestack
