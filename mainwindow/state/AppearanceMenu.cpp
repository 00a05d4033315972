#include "mainwindow/state/AppearanceMenu.h"

#include "engine/settings/UserDefaults.h"
#include "mainwindow/widgets/OutlinedStyle.h"
#include "mainwindow/widgets/Theme.h"
#include "ui_MainWindow.h"

#include <QGuiApplication>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString appearanceKey = u"APPEARANCE"_s;

} // namespace

AppearanceMenu::AppearanceMenu(Ui::MainWindow& ui, UserDefaults& store, QObject* parent)
    : QObject(parent)
{
    outlineIndicators();
    if (QGuiApplication::platformName() == u"cocoa"_s) { // whose own controls have its colours
        ui.menuAppearance->menuAction()->setVisible(false);
        return;
    }
    offer(ui.systemThemeAction, Theme::System, store);
    offer(ui.lightThemeAction, Theme::Light, store);
    offer(ui.darkThemeAction, Theme::Dark, store);
}

void AppearanceMenu::offer(QAction* action, Theme theme, UserDefaults& store)
{
    const int code = static_cast<int>(theme);
    connect(action, &QAction::triggered, this, [theme, code, &store] {
        store.setObject(appearanceKey, code);
        showTheme(theme);
    });
    if (store.objectForKey(appearanceKey).toInt() == code) {
        action->setChecked(true);
        if (theme != Theme::System)
            showTheme(theme);
    }
}

} // namespace pagestack
