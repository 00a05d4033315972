#pragma once

#include <QObject>
#include <QStringList>

class QPushButton;

namespace pagestack {

class Settings;
class UserDefaults;

/// The menu of the output folders that were used last, the latest first. Kept in the store under
/// "RECENTOUTPUTFOLDERS". Main thread.
class RecentOutputFolders : public QObject
{
    Q_OBJECT

public:
    /// Gives `button` its menu, which changes the folder of `settings`. All outlive it.
    RecentOutputFolders(QPushButton& button, Settings& settings, UserDefaults& store);

    /// Puts the folder of the settings, if there is one, at the top.
    void remember();

private:
    QStringList folders() const;
    void fill();

    QPushButton& m_button;
    Settings& m_settings;
    UserDefaults& m_store;
};

} // namespace pagestack
