#include "mainwindow/ProgramText.h"

#include "engine/image/CodecVersions.h"
#include "engine/support/Info.h"

#include <QDir>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString helpText = uR"(Usage: pagestack [FILE|FOLDER...]

Opens the window, with these files, and the TIFF files in these folders, in its
list. A second start adds to the list of the first. '--' ends the options.
pagestack-convert converts without a window.

Options:
  --new-window
        opens a window of its own, beside one that is open already
  -h, --help
        prints this help
  --version
        prints the version, with those of the libraries
)"_s;

    QString versionText()
    {
        QStringList lines { u"pagestack "_s + version.toString() };
        lines += codecVersions();
        lines += u"Qt "_s + QLatin1StringView(qVersion());
        return lines.join(u'\n') + u'\n';
    }

} // namespace

std::optional<QString> programText(const QStringList& arguments)
{
    for (const QString& argument : arguments) {
        if (argument == u"--")
            break;
        if (argument == u"--help" || argument == u"-h")
            return helpText;
        if (argument == u"--version")
            return versionText();
    }
    return std::nullopt;
}

ProgramArguments programArguments(const QStringList& arguments)
{
    ProgramArguments result;
    bool isOption = true;
    for (const QString& argument : arguments.mid(1)) {
        if (isOption && argument == u"--")
            isOption = false;
        else if (isOption && argument == u"--new-window")
            result.wantsNewWindow = true;
        else
            result.paths.append(argument);
    }
    return result;
}

QList<QUrl> fileURLs(const QStringList& paths)
{
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(QDir::current().absoluteFilePath(path)));
    return urls;
}

} // namespace pagestack
