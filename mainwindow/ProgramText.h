#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace pagestack {

/// What the program prints, instead of opening its window, for "--help" or "--version" among its
/// arguments; none when it has neither before "--". Needs no application.
std::optional<QString> programText(const QStringList& arguments);

/// The files and folders among `arguments`, the first of which is the program: all others but a
/// first "--".
QStringList pathArguments(QStringList arguments);

} // namespace pagestack
