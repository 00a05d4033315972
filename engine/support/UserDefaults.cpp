#include "engine/support/UserDefaults.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

#ifdef Q_OS_MACOS
    constexpr QSettings::Format userFormat = QSettings::NativeFormat;
#else
    constexpr QSettings::Format userFormat = QSettings::IniFormat;
#endif

    bool isNullText(const QVariant& value)
    {
        return value.typeId() == QMetaType::QString && value.toString().isNull();
    }

} // namespace

UserDefaults::UserDefaults()
    : m_store(userFormat, QSettings::UserScope, u"Corvanta"_s, u"Pagestack1"_s)
{
    m_store.setFallbacksEnabled(false);
}

UserDefaults::UserDefaults(const QString& path)
    : m_store(path, QSettings::IniFormat)
{
}

QVariant UserDefaults::objectForKey(const QString& key) const
{
    m_store.beginGroup(key);
    QVariantMap dictionary;
    const QStringList names = m_store.childKeys();
    for (const QString& name : names)
        dictionary.insert(name, m_store.value(name));
    m_store.endGroup();
    return dictionary.isEmpty() ? m_store.value(key) : QVariant(dictionary);
}

void UserDefaults::setObject(const QString& key, const QVariant& value)
{
    m_store.remove(key);
    if (value.typeId() != QMetaType::QVariantMap) {
        if (value.isValid())
            m_store.setValue(key, value);
        return;
    }
    m_store.beginGroup(key);
    const QVariantMap dictionary = value.toMap();
    for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry) {
        if (!isNullText(entry.value()))
            m_store.setValue(entry.key(), entry.value());
    }
    m_store.endGroup();
}

bool UserDefaults::boolForKey(const QString& key) const { return m_store.value(key).toBool(); }

void UserDefaults::setBool(const QString& key, bool value) { setObject(key, value); }

bool UserDefaults::synchronize()
{
    m_store.sync();
    // FormatError only tells of what was read: a damaged file is written all the same.
    return m_store.status() != QSettings::AccessError;
}

} // namespace pagestack
