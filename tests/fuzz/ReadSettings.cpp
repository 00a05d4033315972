#include "engine/settings/Settings.h"
#include "engine/support/UserDefaults.h"
#include "tests/fuzz/FuzzSupport.h"
#include "tests/fuzz/VariantSource.h"

#include <QDataStream>
#include <QFile>
#include <QMetaProperty>
#include <QSet>
#include <QSettings>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString storeKey = u"SETTINGS"_s;

    /// What a store keeps of a text, in which not all need be valid UTF-16.
    QByteArray kept(QString text)
    {
        while (text.startsWith(QChar::ByteOrderMark))
            text.remove(0, 1);
        return text.toUtf8();
    }

    /// The nine fields in their order.
    QVariantList valuesOf(const Settings& settings)
    {
        QVariantList values;
        const QMetaObject* type = settings.metaObject();
        for (int i = type->propertyOffset(); i < type->propertyCount(); ++i) {
            const QVariant value = type->property(i).read(&settings);
            const bool isText = value.typeId() == QMetaType::QString;
            values.append(isText ? kept(value.toString()) : value);
        }
        require(values.size() == 9, "there are nine fields");
        return values;
    }

    void checkFolderRule(const Settings& settings)
    {
        require(settings.isSetCurrentAsDefaultOutputFolderPath()
                    != settings.outputFolderPath().isEmpty(),
                "a folder is kept exactly when there is one to be kept");
    }

    QVariantMap dictionaryOf(Settings& settings)
    {
        QVariantMap dictionary;
        for (const auto& [name, value] : settings.getData().value_or(Settings::Pairs()))
            dictionary.insert(name, value);
        return dictionary;
    }

    /// A path that no store had before: Qt remembers what it read from one.
    QString newStorePath(const FuzzFolder& folder)
    {
        static unsigned stores = 0;
        return folder.path(QString::number(++stores) + u".ini"_s);
    }

    /// Checks that `settings`, which writes to the store at `path`, comes back from there.
    void checkStored(const FuzzFolder& folder, Settings& settings, const QString& path)
    {
        settings.synchronize();
        Settings expected(nullptr);
        expected.setData(dictionaryOf(settings));
        const QString copy = newStorePath(folder);
        require(QFile::copy(path, copy), "settings that were stored are in their file");
        UserDefaults store(copy);
        const Settings reloaded(&store);
        checkFolderRule(reloaded);
        require(valuesOf(reloaded) == valuesOf(expected), "what was stored is what is read");
    }

    /// Whether the system's reader made no object of the value but those of fixed size.
    bool isPlain(const QVariant& value)
    {
        if (value.typeId() == QMetaType::QVariantList)
            return std::ranges::all_of(value.toList(), isPlain);
        static const QSet<int> types { QMetaType::UnknownType, QMetaType::QString,
                                       QMetaType::QStringList, QMetaType::QByteArray,
                                       QMetaType::QRect,       QMetaType::QSize,
                                       QMetaType::QPoint };
        return types.contains(value.typeId());
    }

    void readStoreFile(const FuzzFolder& folder, FuzzInput bytes)
    {
        const QString path = newStorePath(folder);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            throw BrokenPromise("the folder for fuzz inputs cannot be written to");
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
        file.close();
        UserDefaults store(path);
        Settings settings(&store);
        if (!store.synchronize()) {
            require(valuesOf(settings) == valuesOf(Settings(nullptr)),
                    "a store that cannot be read is an empty one");
            return;
        }
        const QSettings values(path, QSettings::IniFormat);
        for (const QString& key : values.allKeys())
            require(isPlain(values.value(key)), "a store with objects in it is not read");
        if (store.objectForKey(storeKey).typeId() == QMetaType::QVariantMap)
            checkFolderRule(settings);
        checkStored(folder, settings, path);
    }

    void readKeyedRecord(FuzzInput bytes)
    {
        Settings settings(nullptr);
        QDataStream from(QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                    static_cast<qsizetype>(bytes.size())));
        if (!settings.initWithCoder(from)) {
            require(from.status() != QDataStream::Ok, "a damaged record shows in the status");
            require(valuesOf(settings) == valuesOf(Settings(nullptr)),
                    "a damaged record changes nothing");
            return;
        }
        QByteArray record;
        QDataStream to(&record, QIODevice::WriteOnly);
        settings.encodeWithCoder(to);
        Settings reloaded(nullptr);
        QDataStream again(record);
        require(reloaded.initWithCoder(again) && again.atEnd(),
                "a record that is written is sound");
        require(valuesOf(reloaded) == valuesOf(settings)
                    && reloaded.separator().isNull() == settings.separator().isNull(),
                "what was written is what is read");
    }

    void readDictionary(const FuzzFolder& folder, FuzzInput bytes)
    {
        const QString path = newStorePath(folder);
        UserDefaults store(path);
        Settings settings(&store);
        const QStringList names = dictionaryOf(settings).keys();
        VariantSource source(bytes);
        QVariantMap dictionary;
        while (!source.isAtEnd()) {
            const auto name = static_cast<qsizetype>(source.byte());
            dictionary.insert(names.value(name % (names.size() + 1)), source.value());
        }
        settings.setData(dictionary);
        checkFolderRule(settings);
        checkStored(folder, settings, path);
    }

} // namespace

void readSettings(FuzzInput input)
{
    if (input.empty())
        return;
    const FuzzFolder folder;
    switch (input.front() % 3) {
    case 0:
        readStoreFile(folder, input.subspan(1));
        break;
    case 1:
        readKeyedRecord(input.subspan(1));
        break;
    default:
        readDictionary(folder, input.subspan(1));
    }
}

} // namespace pagestack
