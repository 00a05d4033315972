#pragma once

#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QVariant>

#include <utility>

namespace pagestack {

/// The user's store of settings, a JSON file: plain values (numbers, booleans, texts) and
/// dictionaries of plain values under short keys.
///
/// A file that is not a JSON object is put aside under a name that says so, and the store goes on
/// without it. If there is no file yet, the store takes over that of an earlier version, an INI
/// file beside it; its values are texts, which toInt() and toBool() of QVariant understand. Errors
/// go to the system log and to takeTroubles(). One thread at a time.
class UserDefaults
{
public:
    /// The store of the current user, in the user's configuration folder.
    UserDefaults();
    /// The JSON file at `path`; neither it nor its folder need exist.
    explicit UserDefaults(const QString& path);

    /// The value under `key`, a QVariantMap when it is a dictionary, an invalid QVariant when there
    /// is none.
    QVariant objectForKey(const QString& key) const { return m_values.value(key).toVariant(); }

    /// Replaces what is under `key`, a whole dictionary included. An invalid value removes the key.
    void setObject(const QString& key, const QVariant& value);

    /// False when there is no value under `key`.
    bool boolForKey(const QString& key) const { return objectForKey(key).toBool(); }
    void setBool(const QString& key, bool value) { setObject(key, value); }

    /// Writes the keys that were set since the last call to disk and takes over the others, which
    /// another program may have written. False when that failed; the next call tries it again.
    bool synchronize();

    /// The errors since the last call, a sentence each, for the user.
    QStringList takeTroubles() { return std::exchange(m_troubles, {}); }

private:
    enum class Found {
        Nothing, ///< or a damaged file that is put aside by now
        Values,
        Damage, ///< a file that cannot be read or put aside
    };
    std::pair<Found, QJsonObject> read();
    Found putAside(const QString& reason);
    bool write();
    void tell(const QString& trouble);

    QString m_path;
    QJsonObject m_values;
    QSet<QString> m_changed; ///< keys
    QStringList m_troubles;
};

} // namespace pagestack
