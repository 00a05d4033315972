#include "engine/options/Presets.h"

#include "engine/files/StagedFile.h"
#include "engine/support/Application.h"
#include "engine/support/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString folderName = u"Presets"_s;
    constexpr qint64 mostBytes = qint64 { 1024 } * 1024;

    Preset shipped(const QString& name,
                   std::initializer_list<std::pair<const char16_t*, const char16_t*>> values)
    {
        Preset preset { name, {} };
        for (const auto& [option, text] : values) {
            const ConversionOptionRow* row = conversionOption(QString::fromUtf16(option));
            row->set(preset.options, *row, QString::fromUtf16(text));
        }
        return preset;
    }

    QString presetFolder() { return joinedPath(getAppPath(), folderName); }

    /// The name as a file name on any system: what is no letter, digit, blank or dash as its code.
    QString fileOf(const QString& name)
    {
        QString file;
        for (const QChar sign : name)
            file += sign.isLetterOrNumber() || sign == u' ' || sign == u'-'
                ? QString(sign)
                : u"_%1"_s.arg(sign.unicode(), 4, 16, QLatin1Char('0'));
        return joinedPath(presetFolder(), file + u".json"_s);
    }

    QJsonValue jsonOf(const ConversionOptionRow& row, const ConversionOptions& options)
    {
        const QString text = row.text(options, row);
        return row.isFlag() ? QJsonValue(text == u"true") : QJsonValue(text);
    }

    QString textOf(const ConversionOptionRow& row, const QJsonValue& value)
    {
        if (value.isBool() && row.isFlag())
            return value.toBool() ? u"true"_s : u"false"_s;
        if (value.isDouble() && !row.isFlag())
            return QString::number(value.toDouble());
        if (value.isString() && !row.isFlag())
            return value.toString();
        throw OptionError(row.isFlag() ? u"%1 is neither true nor false"_s.arg(row.name)
                                       : u"%1 is neither a text nor a number"_s.arg(row.name));
    }

    Preset presetOf(const QByteArray& text)
    {
        QJsonParseError fault;
        const QJsonDocument document = QJsonDocument::fromJson(text, &fault);
        if (fault.error != QJsonParseError::NoError)
            throw OptionError(
                u"%1 at byte %2"_s.arg(fault.errorString(), QString::number(fault.offset)));
        const QJsonObject whole = document.object();
        if (!whole.value(u"options").isObject())
            throw OptionError(u"it has no object \"options\""_s);
        Preset preset { whole.value(u"name").toString(), {} };
        const QJsonObject options = whole.value(u"options").toObject();
        for (auto option = options.begin(); option != options.end(); ++option) {
            const ConversionOptionRow* row = conversionOption(option.key());
            if (row == nullptr)
                throw OptionError(u"there is no option '%1'"_s.arg(option.key()));
            row->set(preset.options, *row, textOf(*row, option.value()));
        }
        return preset;
    }

    const Preset* named(const QList<Preset>& presets, const QString& name)
    {
        const auto found = std::ranges::find(presets, name, &Preset::name);
        return found == presets.end() ? nullptr : &*found;
    }

} // namespace

QString shortName(const Preset& preset) { return preset.name.section(u" ("_s, 0, 0); }

const QList<Preset>& shippedPresets()
{
    static const QList<Preset> presets {
        shipped(u"Legal production (G4, 300 dpi, one file a page, numbered)"_s,
                { { u"format", u"tiff" },
                  { u"compression", u"g4" },
                  { u"split", u"true" },
                  { u"bilevel", u"otsu" },
                  { u"name", u"{n:8}" },
                  { u"expect-dpi", u"300" } }),
        shipped(u"Web (JPEG 8, sRGB)"_s,
                { { u"format", u"jpeg" }, { u"quality", u"8" }, { u"srgb", u"true" } }),
        shipped(u"Archive (TIFF LZW, verified)"_s,
                { { u"format", u"tiff" }, { u"compression", u"lzw" }, { u"verify", u"true" } }),
    };
    return presets;
}

QList<Preset> savedPresets(QStringList* troubles)
{
    QList<Preset> presets;
    const QDir folder(presetFolder());
    for (const QString& name : folder.entryList({ u"*.json"_s }, QDir::Files)) {
        try {
            presets.append(readPreset(folder.filePath(name)));
        } catch (const OptionError& error) {
            if (troubles != nullptr)
                troubles->append(QString::fromUtf8(error.what()));
        }
    }
    std::ranges::sort(presets, {}, &Preset::name);
    return presets;
}

Preset readPreset(const QString& path)
{
    const auto refuse
        = [&](const QString& reason) { throw OptionError(u"preset %1: %2"_s.arg(path, reason)); };
    if (!QFileInfo(path).isFile()) // a named pipe would wait for its writer
        refuse(u"it is no file"_s);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        refuse(file.errorString());
    const QByteArray text = file.read(mostBytes + 1);
    if (text.size() > mostBytes)
        refuse(u"it is larger than a preset can be"_s);
    try {
        Preset preset = presetOf(text);
        if (preset.name.isEmpty())
            preset.name = baseName(path);
        return preset;
    } catch (const OptionError& error) {
        refuse(QString::fromUtf8(error.what()));
    }
    return {};
}

void writePreset(const Preset& preset, const QString& path)
{
    QJsonObject options;
    for (const ConversionOptionRow& row : conversionOptionTable())
        if (const QJsonValue value = jsonOf(row, preset.options); value != jsonOf(row, {}))
            options.insert(row.name, value);
    const QByteArray text
        = QJsonDocument({ { u"name"_s, preset.name }, { u"options"_s, options } }).toJson();
    StagedFile file(path);
    file.write({ reinterpret_cast<const std::uint8_t*>(text.constData()),
                 static_cast<std::size_t>(text.size()) });
    file.commit();
}

void savePreset(const Preset& preset)
{
    if (preset.name.trimmed().isEmpty())
        throw OptionError(u"the name of the preset is empty"_s);
    if (named(shippedPresets(), preset.name) != nullptr)
        throw OptionError(u"the preset %1 comes with the program"_s.arg(preset.name));
    QString fault;
    if (!createApplicationUsersFolder(u""_s, &fault)
        || !createApplicationUsersFolder(folderName, &fault))
        throw OptionError(u"the folder %1 cannot be made: %2"_s.arg(presetFolder(), fault));
    writePreset(preset, fileOf(preset.name));
}

bool removePreset(const QString& name)
{
    const QString path = fileOf(name);
    return !QFile::exists(path) || QFile::remove(path);
}

Preset findPreset(const QString& nameOrFile)
{
    const QList<Preset> saved = savedPresets();
    if (const Preset* own = named(saved, nameOrFile))
        return *own;
    // One of the user's that is damaged must not give way to another of its name.
    if (const QString file = fileOf(nameOrFile); QFile::exists(file))
        return readPreset(file);
    for (const Preset& preset : shippedPresets())
        if (preset.name == nameOrFile || shortName(preset) == nameOrFile)
            return preset;
    if (QFile::exists(nameOrFile))
        return readPreset(nameOrFile);
    QStringList names;
    for (const Preset& preset : saved + shippedPresets())
        names.append(shortName(preset));
    throw OptionError(u"preset '%1' is no file and none of %2"_s.arg(nameOrFile, names.join(u'|')));
}

} // namespace pagestack
