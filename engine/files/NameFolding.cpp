#include "engine/files/NameFolding.h"

#include "engine/files/FileState.h"
#include "engine/files/PosixFile.h"
#include "engine/files/StagedNames.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <fcntl.h>
#include <unistd.h>

namespace pagestack {

QString NameFolding::folded(const QString& name) const
{
    QString folded = ignoresCase ? name.toCaseFolded() : name;
    if (ignoresNormalization)
        folded = folded.normalized(QString::NormalizationForm_C);
    return folded;
}

NameFolding nameFolding(const QString& folder)
{
    QFileInfo place(folder.isEmpty() ? QStringLiteral(".") : folder);
    while (!place.isDir() && !place.isRoot())
        place.setFile(place.absolutePath());
    const QByteArray start = QFile::encodeName(place.absoluteFilePath()) + '/';
    const QByteArray name = stagedProbeName();
    const QByteArray path = start + name;
    const int file = retryInterrupted([&] {
        return ::open(path.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    });
    if (file < 0)
        return {};
    const auto remove = qScopeGuard([&] {
        ::unlink(path.constData());
        ::close(file);
    });
    const auto made = fileIdentity(path);
    if (!ownStagedFile(file) || !made)
        return {};
    const QString decomposed = QString::fromUtf8(name).normalized(QString::NormalizationForm_D);
    return { .ignoresCase = fileIdentity(start + name.toUpper()) == made,
             .ignoresNormalization = fileIdentity(start + decomposed.toUtf8()) == made };
}

} // namespace pagestack
