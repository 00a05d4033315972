#pragma once

#include <QObject>

class QAction;

namespace Ui {
class MainWindow;
}

namespace pagestack {

class UserDefaults;
enum class Theme;

/// The menu of the themes. Shows at once what is chosen, and what was chosen before: it is kept in
/// the store under "APPEARANCE". Main thread.
class AppearanceMenu : public QObject
{
    Q_OBJECT

public:
    /// `ui` and `store` outlive it.
    AppearanceMenu(Ui::MainWindow& ui, UserDefaults& store, QObject* parent);

private:
    void offer(QAction* action, Theme theme, UserDefaults& store);
};

} // namespace pagestack
