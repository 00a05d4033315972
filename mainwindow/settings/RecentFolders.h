#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QAction;
class QMenu;

namespace pagestack {

class UserDefaults;

/// The folders that were used last for something, as a menu, for this start and the next. The
/// action of the menu is enabled while there are some. Main thread.
class RecentFolders : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype most = 10;
    /// Completes the item of a folder, which is about to be shown.
    using Complete = std::function<void(QAction& item, const QString& folder)>;

    /// Keeps the folders in `defaults` under `key`. Fills `menu` whenever it is about to be shown;
    /// both outlive this.
    RecentFolders(UserDefaults& defaults, QString key, QMenu& menu, Complete complete);

    /// Puts `folders` first.
    void note(const QStringList& folders);

signals:
    void chosen(const QString& folder);

private:
    QStringList folders() const;
    void keep(const QStringList& folders);
    void fill();

    UserDefaults& m_defaults;
    const QString m_key;
    QMenu& m_menu;
    const Complete m_complete;
};

} // namespace pagestack
