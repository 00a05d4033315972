#pragma once

#include "engine/options/ConversionOptions.h"

#include <QList>
#include <QString>

namespace pagestack {

/// A named set of all options. As a file: a JSON object with "name" and the object "options", in
/// which each option that is not the default stands under its name: true or false where it is on or
/// off, a number or its text else.
struct Preset
{
    QString name;
    ConversionOptions options;
};

/// The name before its bracket: "Web" of "Web (JPEG 8, sRGB)".
QString shortName(const Preset& preset);

/// Those that come with the program.
const QList<Preset>& shippedPresets();

/// Those that the user saved, by name; files that cannot be read are left out and named in
/// `troubles`, a sentence each, which may be null.
QList<Preset> savedPresets(QStringList* troubles = nullptr);

/// Throws OptionError, which names the file, and what in it is wrong.
Preset readPreset(const QString& path);

/// Writes the file anew. Throws std::runtime_error.
void writePreset(const Preset& preset, const QString& path);

/// Among those of the user, where one of the same name is replaced. Throws OptionError for a name
/// that is empty or that one of the program's own has, and as writePreset.
void savePreset(const Preset& preset);

/// False when it could not be removed. Nothing happens when there is none.
bool removePreset(const QString& name);

/// The one that the user saved under `nameOrFile`, else the program's own of that name or
/// short name, else that of the file. Throws OptionError.
Preset findPreset(const QString& nameOrFile);

} // namespace pagestack
