#include "engine/support/UserDefaults.h"

#include "engine/support/SystemLog.h"

#include <QStringList>

#include <new>

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

/// What `access` gives; `otherwise` when the file makes the system's reader ask for memory that
/// there is not: some lengths in it are taken as they are.
template <typename Access>
auto UserDefaults::guarded(decltype(std::declval<Access>()()) otherwise, Access access) const
{
    try {
        return access();
    } catch (const std::bad_alloc&) {
        systemLog(u"The settings in %1 are damaged and cannot be read or changed"_s.arg(
            m_store.fileName()));
        return otherwise;
    }
}

QVariant UserDefaults::objectForKey(const QString& key) const
{
    return guarded(QVariant(), [&] {
        QVariantMap dictionary;
        const QString start = key + u'/';
        for (const QString& name : m_store.allKeys())
            if (name.startsWith(start) && !name.sliced(start.size()).contains(u'/'))
                dictionary.insert(name.sliced(start.size()), m_store.value(name));
        return dictionary.isEmpty() ? m_store.value(key) : QVariant(dictionary);
    });
}

void UserDefaults::setObject(const QString& key, const QVariant& value)
{
    guarded(false, [&] {
        store(key, value);
        return true;
    });
}

void UserDefaults::store(const QString& key, const QVariant& value)
{
    m_store.remove(key);
    if (value.typeId() != QMetaType::QVariantMap) {
        if (value.isValid())
            m_store.setValue(key, value);
        return;
    }
    const QVariantMap dictionary = value.toMap();
    for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry) {
        if (!isNullText(entry.value()))
            m_store.setValue(key + u'/' + entry.key(), entry.value());
    }
}

bool UserDefaults::boolForKey(const QString& key) const
{
    return guarded(false, [&] { return m_store.value(key).toBool(); });
}

void UserDefaults::setBool(const QString& key, bool value) { setObject(key, value); }

bool UserDefaults::synchronize()
{
    return guarded(false, [&] {
        m_store.sync();
        // FormatError only tells of what was read: a damaged file is written all the same.
        return m_store.status() != QSettings::AccessError;
    });
}

} // namespace pagestack
