#include "engine/support/Resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QStringList resourceFolders()
    {
        const QString program = QCoreApplication::applicationDirPath();
        QStringList folders { program + u"/../share/pagestack"_s, program + u"/../Resources"_s };
        // An installed program must not read from where its sources once lay.
        const QString buildFolder = QFileInfo(u"" PAGESTACK_BUILD_FOLDER ""_s).canonicalFilePath();
        if (!buildFolder.isEmpty() && program.startsWith(buildFolder + u'/'))
            folders.append(u"" PAGESTACK_SOURCE_RESOURCES ""_s);
        return folders;
    }

} // namespace

QString pathForResource(const QString& name, const QString& type)
{
    if (name.isEmpty())
        return {};
    const QString fileName = type.isEmpty() ? name : name + u'.' + type;
    const QStringList folders = resourceFolders();
    for (const QString& folder : folders) {
        const QFileInfo file(folder + u'/' + fileName);
        if (file.isFile())
            return QDir::cleanPath(file.absoluteFilePath());
    }
    return {};
}

} // namespace pagestack
