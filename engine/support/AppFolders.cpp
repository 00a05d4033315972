#include "engine/support/AppFolders.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace pagestack {

QString getAppPath()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base.isEmpty() ? u""_s : base + u"/Corvanta/Pagestack1"_s;
}

bool createApplicationUsersFolder(const QString& folderName, QString* error)
{
    QString path = getAppPath();
    if (!folderName.isEmpty())
        path += path.isEmpty() ? folderName : u'/' + folderName;
    if (QFileInfo(path).isDir())
        return true;

    std::error_code failure;
    std::filesystem::create_directories(QFile::encodeName(path).toStdString(), failure);
    if (failure && error)
        *error = QString::fromLocal8Bit(failure.message());
    return !failure;
}

} // namespace pagestack
