#include "mainwindow/settings/RecentOutputFolders.h"

#include "engine/settings/Settings.h"
#include "engine/settings/UserDefaults.h"

#include <QDir>
#include <QMenu>
#include <QPushButton>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString foldersKey = u"RECENTOUTPUTFOLDERS"_s;
    constexpr qsizetype mostFolders = 10;
    constexpr int mostSigns = 60; // of a menu's line

} // namespace

RecentOutputFolders::RecentOutputFolders(QPushButton& button, Settings& settings,
                                         UserDefaults& store)
    : m_button(button)
    , m_settings(settings)
    , m_store(store)
{
    auto* menu = new QMenu(&button);
    button.setMenu(menu);
    button.setEnabled(!folders().isEmpty());
    connect(menu, &QMenu::aboutToShow, this, &RecentOutputFolders::fill);
}

QStringList RecentOutputFolders::folders() const
{
    return m_store.objectForKey(foldersKey).toStringList();
}

void RecentOutputFolders::remember()
{
    const QString folder = m_settings.outputFolderPath();
    if (folder.isEmpty())
        return;
    QStringList all = folders();
    all.removeAll(folder);
    all.prepend(folder);
    m_store.setObject(foldersKey, QStringList(all.first(std::min(all.size(), mostFolders))));
    m_button.setEnabled(true);
}

void RecentOutputFolders::fill()
{
    QMenu& menu = *m_button.menu();
    menu.clear();
    for (const QString& folder : folders()) {
        QString shown = QDir::toNativeSeparators(folder);
        if (shown.size() > mostSigns)
            shown = shown.left(mostSigns / 3) + u'\u2026' + shown.right(2 * mostSigns / 3);
        QAction* action = menu.addAction(shown.replace(u'&', u"&&"_s), this, [this, folder] {
            m_settings.setOutputFolderPath(folder);
        });
        action->setCheckable(true);
        action->setChecked(folder == m_settings.outputFolderPath());
    }
    menu.addSeparator();
    menu.addAction(tr("&Forget These Folders"), this, [this] {
        m_store.setObject(foldersKey, QStringList());
        m_button.setEnabled(false);
    });
}

} // namespace pagestack
