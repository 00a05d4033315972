#include "engine/support/UserDefaults.h"

#include "engine/support/SystemLog.h"

#include <QFile>
#include <QRegularExpression>
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

    /// Whether no value of the INI file stands for an object. The system's reader makes one of
    /// "@Variant(...)" and "@DateTime(...)" and takes the lengths in it as they are, so that a few
    /// bytes can ask for gigabytes. No value that was stored here is one: a text that begins with
    /// '@' is written with two of them, and the sign itself never as an escape.
    bool holdsPlainValues(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return true;
        // A value begins after '=' or ','. Dropped before it: blanks outside of quotes, quotes,
        // a backslash with a sign that needs none or with the end of the line.
        static const QRegularExpression object(
            uR"((?(DEFINE)(?<dropped>\\(?:\r\n|\n\r|x(?![0-9a-fA-F])|[^abfnrtvx0-7"?'\\]))))"
            uR"([=,]\s*+(?:(?&dropped)*+"(?&dropped)*+"\s*+)*+(?&dropped)*+(?:"(?&dropped)*+)?)"
            uR"(@(?![@BISPR])|)"
            uR"((?<!\\)(?:\\\\)*+\\(?:x(?:[0-9a-fA-F]+00|0*)40(?![0-9a-fA-F])|[1-7]|0[0-7]))"_s);
        const QRegularExpressionMatch match = object.match(QString::fromLatin1(file.readAll()));
        return match.isValid() && !match.hasMatch();
    }

} // namespace

UserDefaults::UserDefaults()
    : m_store(userFormat, QSettings::UserScope, u"Corvanta"_s, u"Pagestack1"_s)
{
    m_store.setFallbacksEnabled(false);
    examine();
}

UserDefaults::UserDefaults(const QString& path)
    : m_store(path, QSettings::IniFormat)
{
    examine();
}

void UserDefaults::examine()
{
    if (m_isDamaged || m_store.format() != QSettings::IniFormat)
        return;
    m_isDamaged = !holdsPlainValues(m_store.fileName());
    if (m_isDamaged)
        systemLog(u"The settings in %1 are damaged and cannot be read or changed"_s.arg(
            m_store.fileName()));
}

QVariant UserDefaults::objectForKey(const QString& key) const
{
    if (m_isDamaged)
        return {};
    QVariantMap dictionary;
    const QString start = key + u'/';
    for (const QString& name : m_store.allKeys())
        if (name.startsWith(start) && !name.sliced(start.size()).contains(u'/'))
            dictionary.insert(name.sliced(start.size()), m_store.value(name));
    return dictionary.isEmpty() ? m_store.value(key) : QVariant(dictionary);
}

void UserDefaults::setObject(const QString& key, const QVariant& value)
{
    if (m_isDamaged)
        return;
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
    return !m_isDamaged && m_store.value(key).toBool();
}

void UserDefaults::setBool(const QString& key, bool value) { setObject(key, value); }

bool UserDefaults::synchronize()
{
    examine(); // what another program wrote meanwhile
    if (m_isDamaged)
        return false;
    m_store.sync();
    // FormatError only tells of what was read: a damaged file is written all the same.
    return m_store.status() != QSettings::AccessError;
}

} // namespace pagestack
