#include "mainwindow/settings/RecentFolders.h"

#include "engine/settings/UserDefaults.h"

#include <QDir>
#include <QMenu>

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int mostSigns = 60; // of a menu's line

    /// An ampersand would mark a key.
    QString lineOf(const QString& folder)
    {
        QString shown = QDir::toNativeSeparators(folder);
        if (shown.size() > mostSigns)
            shown = shown.left(mostSigns / 3) + u'\u2026' + shown.right(2 * mostSigns / 3);
        return shown.replace(u'&', u"&&"_s);
    }

} // namespace

RecentFolders::RecentFolders(UserDefaults& defaults, QString key, QMenu& menu, Complete complete)
    : m_defaults(defaults)
    , m_key(std::move(key))
    , m_menu(menu)
    , m_complete(std::move(complete))
{
    connect(&menu, &QMenu::aboutToShow, this, &RecentFolders::fill);
    menu.menuAction()->setEnabled(!folders().isEmpty());
}

QStringList RecentFolders::folders() const { return m_defaults.objectForKey(m_key).toStringList(); }

void RecentFolders::keep(const QStringList& folders)
{
    m_defaults.setObject(m_key, folders);
    m_defaults.synchronize();
    m_menu.menuAction()->setEnabled(!folders.isEmpty());
}

void RecentFolders::note(const QStringList& folders)
{
    QStringList recent = folders + this->folders();
    recent.removeDuplicates();
    keep(recent.mid(0, most));
}

/// One that is gone is shown too: its disk may come back, and to look for it may take long.
void RecentFolders::fill()
{
    m_menu.clear();
    for (const QString& folder : folders())
        m_complete(*m_menu.addAction(lineOf(folder), this, [this, folder] { emit chosen(folder); }),
                   folder);
    m_menu.addSeparator();
    m_menu.addAction(tr("&Forget These Folders"), this, [this] { keep({}); });
}

} // namespace pagestack
