#pragma once

#include <QObject>
#include <QStringList>
#include <QUrl>

class QAction;
class QMenu;

namespace pagestack {

class UserDefaults;

/// The folders that were added last, as a menu, for this start and the next. Main thread.
class RecentSourceFolders : public QObject
{
    Q_OBJECT

public:
    static constexpr qsizetype most = 10;

    /// Fills `menu` whenever it is about to be shown, with items that are enabled while `adding`
    /// is. All outlive this.
    RecentSourceFolders(UserDefaults& defaults, QMenu& menu, const QAction& adding);

    /// Puts those of `urls` that are folders first.
    void note(const QList<QUrl>& urls);

signals:
    void chosen(const QUrl& folder);

private:
    QStringList paths() const;
    void keep(const QStringList& paths);
    void fill();

    UserDefaults& m_defaults;
    QMenu& m_menu;
    const QAction& m_adding;
};

} // namespace pagestack
