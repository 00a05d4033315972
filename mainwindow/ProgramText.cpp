#include "mainwindow/ProgramText.h"

#include "engine/image/CodecVersions.h"
#include "engine/support/Info.h"

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString helpText = uR"(Usage: pagestack [FILE|FOLDER...]

Opens the window, with these files, and the TIFF files in these folders, in its
list. '--' ends the options. pagestack-convert converts without a window.

Options:
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

QStringList pathArguments(QStringList arguments)
{
    arguments.removeFirst(); // the program
    arguments.removeOne(u"--"_s);
    return arguments;
}

} // namespace pagestack
