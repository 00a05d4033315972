#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace pagestack {

/// What the program prints, instead of opening its window, for "--help" or "--version" among its
/// arguments; none when it has neither before "--". Needs no application.
std::optional<QString> programText(const QStringList& arguments);

/// What the program was started with.
struct ProgramArguments
{
    QStringList paths; ///< files and folders, as given
    bool wantsNewWindow = false; ///< beside that of a program that runs already
};

/// `arguments` begin with the program; what follows a first "--" is a path.
ProgramArguments programArguments(const QStringList& arguments);

/// The URLs of `paths`, those that are relative from the current folder.
QList<QUrl> fileURLs(const QStringList& paths);

} // namespace pagestack
