#include "engine/support/Application.h"

#include "engine/support/Info.h"
#include "engine/support/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QStringList resourceFolders()
    {
        const QString program = QCoreApplication::applicationDirPath();
        // The first is also there in a build folder.
        return { program + u"/../share/pagestack"_s, program + u"/../Resources"_s };
    }

} // namespace

QString getAppTitle(const QString& suffix) { return displayName.toString() + suffix; }

QString getAppPath()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base.isEmpty() ? u""_s : base + u"/Corvanta/Pagestack1"_s;
}

bool createApplicationUsersFolder(const QString& folderName, QString* error)
{
    const QString path = joinedPath(getAppPath(), folderName);
    if (QFileInfo(path).isDir())
        return true;
    std::error_code failure;
    std::filesystem::create_directories(
        QFile::encodeName(withoutEndingSlash(path).toString()).toStdString(), failure);
    if (failure && error)
        *error = QString::fromLocal8Bit(failure.message());
    return !failure;
}

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
