#include "mainwindow/desktop/InformationScript.h"

#include <QStringList>

namespace pagestack {

using namespace Qt::StringLiterals;

QString informationScript(const QString& path)
{
    QStringList folders = path.split(u'/', Qt::SkipEmptyParts);
    // Joined rather than filled in by arg(), which would take a "%1" in a name for a place to fill.
    QString script = u"tell application \"Finder\"\n"
                     "activate \n"
                     "open information window of document file \""_s
        + (folders.isEmpty() ? QString() : folders.takeLast()) + u'"';
    while (!folders.isEmpty())
        script += u" of folder \""_s + folders.takeLast() + u'"';
    return script + u" of startup disk\nend tell"_s;
}

bool isSafeInScript(const QString& path) { return !path.contains(u'"') && !path.contains(u'\\'); }

} // namespace pagestack
