#include "engine/settings/UserDefaults.h"

#include "engine/settings/IniValues.h"
#include "engine/support/SystemLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qint64 mostStoreBytes = 1 << 20;
    constexpr int mostDamagedFiles = 99;

    QString userStore()
    {
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
            + u"/Corvanta/Pagestack1.json"_s;
    }

    /// "store.ini" for "store.json" and ".ini".
    QString beside(const QString& path, const QString& end)
    {
        const QFileInfo info(path);
        return info.path() + u'/' + info.completeBaseName() + end;
    }

} // namespace

UserDefaults::UserDefaults()
    : UserDefaults(userStore())
{
}

UserDefaults::UserDefaults(const QString& path)
    : m_path(path)
{
    m_values = QFileInfo::exists(m_path) ? read().second : readIniValues(beside(m_path, u".ini"_s));
}

void UserDefaults::setObject(const QString& key, const QVariant& value)
{
    if (value.isValid())
        m_values.insert(key, QJsonValue::fromVariant(value));
    else
        m_values.remove(key);
    m_changed.insert(key);
}

bool UserDefaults::synchronize()
{
    auto [found, values] = read();
    if (found == Found::Damage)
        return false;
    if (found == Found::Values) {
        for (const QString& key : m_changed) {
            if (m_values.contains(key))
                values.insert(key, m_values.value(key));
            else
                values.remove(key);
        }
        m_values = values;
    }
    const bool isNews = !m_changed.isEmpty() || (found == Found::Nothing && !m_values.isEmpty());
    if (isNews && !write())
        return false;
    m_changed.clear();
    return true;
}

std::pair<UserDefaults::Found, QJsonObject> UserDefaults::read()
{
    const QFileInfo info(m_path);
    if (!info.exists())
        return { Found::Nothing, {} };
    if (!info.isFile() || info.size() > mostStoreBytes)
        return { putAside(info.isFile() ? u"it is too long"_s : u"it is no file"_s), {} };
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return { putAside(file.errorString()), {} };
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (document.isObject())
        return { Found::Values, document.object() };
    return { putAside(error.error ? error.errorString() : u"it holds no object"_s), {} };
}

UserDefaults::Found UserDefaults::putAside(const QString& reason)
{
    const QString fault = u"The settings in %1 cannot be read: %2."_s.arg(m_path, reason);
    for (int i = 1; i <= mostDamagedFiles; ++i) {
        const QString number = i == 1 ? QString() : u'-' + QString::number(i);
        const QString place = beside(m_path, u"-damaged%1.json"_s.arg(number));
        if (QFile::rename(m_path, place)) {
            tell(fault + u" They are kept in %1; the defaults are used."_s.arg(place));
            return Found::Nothing;
        }
    }
    tell(fault + u" They cannot be put aside either, so that no settings are saved."_s);
    return Found::Damage;
}

bool UserDefaults::write()
{
    const QByteArray text = QJsonDocument(m_values).toJson();
    QDir().mkpath(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        return true;
    tell(u"The settings cannot be saved in %1: %2."_s.arg(m_path, file.errorString()));
    return false;
}

void UserDefaults::tell(const QString& trouble)
{
    systemLog(trouble);
    if (!m_troubles.contains(trouble))
        m_troubles.append(trouble);
}

} // namespace pagestack
