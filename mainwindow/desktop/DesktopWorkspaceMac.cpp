#include "engine/support/SystemLog.h"
#include "mainwindow/desktop/DesktopWorkspace.h"
#include "mainwindow/desktop/InformationScript.h"

#include <QProcess>
#include <QUrl>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // The first script may have to wait until the user lets the program control the file manager.
    constexpr int scriptTimeMs = 30000;

    // Waits for the end of the script, whose own errors do not matter. False when it never comes.
    bool runScript(const QString& text)
    {
        QProcess runner;
        runner.setStandardOutputFile(QProcess::nullDevice());
        runner.setStandardErrorFile(QProcess::nullDevice());
        runner.start(u"/usr/bin/osascript"_s, { u"-"_s });
        runner.write(text.toUtf8());
        runner.closeWriteChannel();
        if (runner.waitForFinished(scriptTimeMs))
            return true;
        systemLog(u"A script did not run to its end: "_s + runner.errorString());
        runner.kill();
        runner.waitForFinished();
        return false;
    }

} // namespace

void DesktopWorkspace::revealFiles(const QList<QUrl>& urls)
{
    if (urls.isEmpty())
        return;
    QStringList arguments { u"-R"_s };
    for (const QUrl& url : urls)
        arguments.append(url.toLocalFile());
    if (!QProcess::startDetached(u"/usr/bin/open"_s, arguments))
        systemLog(u"The file manager cannot be asked to show files"_s);
}

void DesktopWorkspace::describeFiles(const QList<QUrl>& urls)
{
    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        if (!isSafeInScript(path))
            systemLog(u"The file manager cannot be told the name "_s + path);
        else if (!runScript(informationScript(path)))
            return; // each of the others would keep the window waiting as long
    }
}

} // namespace pagestack
