#include "engine/settings/Settings.h"
#include "engine/settings/UserDefaults.h"
#include "tests/fuzz/FuzzSupport.h"
#include "tests/fuzz/VariantSource.h"

#include <QDataStream>
#include <QMetaProperty>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString storeKey = u"SETTINGS"_s;

    /// The nine fields in their order.
    QVariantList valuesOf(const Settings& settings)
    {
        QVariantList values;
        const QMetaObject* type = settings.metaObject();
        for (int i = type->propertyOffset(); i < type->propertyCount(); ++i) {
            const QVariant value = type->property(i).read(&settings);
            const bool isText = value.typeId() == QMetaType::QString;
            // Not all of a text need be valid UTF-16, which the store keeps as UTF-8.
            values.append(isText ? QVariant(value.toString().toUtf8()) : value);
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

    /// Checks that `settings`, which writes to the store at `path`, comes back from there.
    void checkStored(Settings& settings, const QString& path)
    {
        settings.synchronize();
        Settings expected(nullptr);
        expected.setData(dictionaryOf(settings));
        UserDefaults store(path);
        const Settings reloaded(&store);
        checkFolderRule(reloaded);
        require(store.takeTroubles().isEmpty(), "a store that was written is sound");
        require(valuesOf(reloaded) == valuesOf(expected), "what was stored is what is read");
    }

    /// The bytes are those of the store, or of the INI file that it takes over.
    void readStoreFile(const FuzzFolder& folder, FuzzInput bytes, const QString& name)
    {
        folder.put(name, bytes);
        const QString path = folder.path(u"store.json"_s);
        UserDefaults store(path);
        Settings settings(&store);
        if (store.objectForKey(storeKey).typeId() == QMetaType::QVariantMap)
            checkFolderRule(settings);
        checkStored(settings, path);
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
        const QString path = folder.path(u"store.json"_s);
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
        checkStored(settings, path);
    }

} // namespace

void readSettings(FuzzInput input)
{
    if (input.empty())
        return;
    const FuzzFolder folder;
    switch (input.front() % 4) {
    case 0:
        readStoreFile(folder, input.subspan(1), u"store.ini"_s);
        break;
    case 3:
        readStoreFile(folder, input.subspan(1), u"store.json"_s);
        break;
    case 1:
        readKeyedRecord(input.subspan(1));
        break;
    default:
        readDictionary(folder, input.subspan(1));
    }
}

} // namespace pagestack
