#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

namespace pagestack {

/// The user's store of settings: plain values (numbers, booleans, texts) and dictionaries of plain
/// values under short keys. A dictionary is kept as a group, so that it can be read and edited in
/// the file. Values come back as the platform keeps them: in an INI file every value is text, which
/// toInt() and toBool() of QVariant understand. A file that holds other objects than plain values,
/// or lines that are neither settings nor comments, acts as an empty one that cannot be written.
/// One thread at a time.
class UserDefaults
{
public:
    /// The store of the current user: the platform's own on macOS, elsewhere an INI file in the
    /// user's configuration folder. System-wide defaults are not consulted.
    UserDefaults();
    /// The INI file at `path`; it need not exist.
    explicit UserDefaults(const QString& path);

    /// The value under `key`, a QVariantMap when it is a dictionary, an invalid QVariant when there
    /// is none.
    QVariant objectForKey(const QString& key) const;

    /// Replaces what is under `key`, a whole dictionary included. An invalid value removes the key;
    /// an empty dictionary, a null text inside a dictionary and byte order marks at the start of a
    /// text leave nothing behind.
    void setObject(const QString& key, const QVariant& value);

    /// False when there is no value under `key`.
    bool boolForKey(const QString& key) const;
    void setBool(const QString& key, bool value);

    /// Writes to disk now. False when that failed; the values are kept in memory and written later
    /// if it becomes possible.
    bool synchronize();

private:
    void examine();

    QSettings m_store;
    bool m_isDamaged = false;
};

} // namespace pagestack
