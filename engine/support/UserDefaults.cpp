#include "engine/support/UserDefaults.h"

#include "engine/support/SystemLog.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

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

    /// What comes back as it was stored: the system's reader drops a byte order mark that a text
    /// begins with.
    QVariant storable(const QVariant& value)
    {
        if (value.typeId() != QMetaType::QString)
            return value;
        QString text = value.toString();
        while (text.startsWith(QChar::ByteOrderMark))
            text.remove(0, 1);
        return text;
    }

    /// Whether every line of the INI file is one that the system's writer could have written, or a
    /// person, and no value stands for an object. The system's reader makes an object of
    /// "@Variant(...)" and "@DateTime(...)" and takes the lengths in it as they are, so that a few
    /// bytes can ask for gigabytes. Stored values never are one: a text that begins with '@' is
    /// written with two of them, and the sign itself never as an escape. Lines in which a value
    /// could begin where it does not seem to are refused: quotes or a backslash at odd places, the
    /// end of a byte order mark, which the reader drops, or the mark as an escape, which the writer
    /// would not write again.
    bool holdsPlainValues(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return true;
        static const QRegularExpression line(QRegularExpression::anchoredPattern(uR"((?(DEFINE)
                (?<name>(?:\\?[A-Za-z0-9_.%-])++)
                (?<escape>\\[abfnrtv"?'\\]|\\0(?![0-7])
                    |\\x(?!(?:0*+40|[Ff][Ee][Ff][Ff])(?![0-9A-Fa-f]))[0-9A-Fa-f]{1,4}+(?![0-9A-Fa-f]))
                (?<noObject>(?!(?:(?:\xEF?\xBB)?\xBF)?(?:\xEF\xBB\xBF)*+@(?![@BISPR])))
                (?<item>(?:"(?&noObject)(?:(?&escape)|[^"\\\x00-\x08\x0A-\x1F])*+"
                    |(?&noObject)(?:(?&escape)|[^"\\,;\x00-\x08\x0A-\x1F])*+)[ \t]*+)
                )
                [ \t]*+(?:\[(?&name)\]|(?&name)[ \t]*+=[ \t]*+(?&item)(?:,[ \t]*+(?&item))*+)?
                [ \t]*+(?:;.*+)?)"_s),
                                             QRegularExpression::ExtendedPatternSyntaxOption);
        QString text = QString::fromLatin1(file.readAll());
        text.replace(u'\r', u'\n');
        return std::ranges::all_of(QStringView(text).split(u'\n'), [](const QStringView& each) {
            return line.match(each).hasMatch();
        });
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
            m_store.setValue(key, storable(value));
        return;
    }
    const QVariantMap dictionary = value.toMap();
    for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry) {
        if (!isNullText(entry.value()))
            m_store.setValue(key + u'/' + entry.key(), storable(entry.value()));
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
