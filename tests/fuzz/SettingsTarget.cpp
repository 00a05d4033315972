#include "engine/settings/Settings.h"
#include "engine/settings/UserDefaults.h"
#include "tests/fuzz/FuzzSupport.h"

#include <QMetaProperty>

namespace pagestack {

namespace {

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

} // namespace

void readSettings(FuzzInput input)
{
    if (input.empty())
        return;
    const FuzzFolder folder;
    const QString path = folder.path(u"store.json"_s);
    folder.put(input.front() % 2 == 1 ? u"store.json"_s : u"store.ini"_s, input.subspan(1));
    UserDefaults store(path);
    Settings settings(&store);
    if (store.objectForKey(u"SETTINGS"_s).typeId() == QMetaType::QVariantMap)
        checkFolderRule(settings);
    settings.synchronize();
    QVariantMap dictionary;
    for (const auto& [name, value] : settings.getData().value_or(Settings::Pairs()))
        dictionary.insert(name, value);
    Settings expected(nullptr);
    expected.setData(dictionary);
    UserDefaults again(path);
    const Settings reloaded(&again);
    checkFolderRule(reloaded);
    require(again.takeTroubles().isEmpty(), "a store that was written is sound");
    require(valuesOf(reloaded) == valuesOf(expected), "what was stored is what is read");
}

} // namespace pagestack
