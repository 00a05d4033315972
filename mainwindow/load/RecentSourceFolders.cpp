#include "mainwindow/load/RecentSourceFolders.h"

#include "engine/settings/UserDefaults.h"

#include <QDir>
#include <QFileInfo>
#include <QMenu>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString recentFoldersKey = u"RECENTFOLDERS"_s;

    /// What a menu shows as it is: an ampersand would mark a key.
    QString menuText(const QString& path)
    {
        return QDir::toNativeSeparators(path).replace(u'&', u"&&"_s);
    }

} // namespace

RecentSourceFolders::RecentSourceFolders(UserDefaults& defaults, QMenu& menu, const QAction& adding)
    : m_defaults(defaults)
    , m_menu(menu)
    , m_adding(adding)
{
    connect(&menu, &QMenu::aboutToShow, this, &RecentSourceFolders::fill);
    menu.menuAction()->setEnabled(!paths().isEmpty());
}

QStringList RecentSourceFolders::paths() const
{
    return m_defaults.objectForKey(recentFoldersKey).toStringList();
}

void RecentSourceFolders::keep(const QStringList& paths)
{
    m_defaults.setObject(recentFoldersKey, paths);
    m_defaults.synchronize();
    m_menu.menuAction()->setEnabled(!paths.isEmpty());
}

void RecentSourceFolders::note(const QList<QUrl>& urls)
{
    if (urls.size() > most) // a drop of many is one of files
        return;
    QStringList recent;
    for (const QUrl& url : urls)
        if (QFileInfo(url.toLocalFile()).isDir())
            recent.append(QDir::cleanPath(url.toLocalFile()));
    if (recent.isEmpty())
        return;
    recent += paths();
    recent.removeDuplicates();
    keep(recent.mid(0, most));
}

/// One that is gone is shown too: its disk may come back, and to look for it may take long.
void RecentSourceFolders::fill()
{
    m_menu.clear();
    for (const QString& path : paths()) {
        QAction* item = m_menu.addAction(menuText(path), this,
                                         [this, path] { emit chosen(QUrl::fromLocalFile(path)); });
        item->setEnabled(m_adding.isEnabled());
    }
    m_menu.addSeparator();
    m_menu.addAction(tr("Clear"), this, [this] { keep({}); });
}

} // namespace pagestack
