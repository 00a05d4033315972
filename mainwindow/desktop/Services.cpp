#include "mainwindow/desktop/Services.h"

#include "engine/settings/UserDefaults.h"
#include "engine/support/Application.h"

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

void Services::ask(QWidget* window, AlertPanel::Style style, const QString& text,
                   const QStringList& buttons, AlertPanel::Done done) const
{
    alerts.ask(window, style, getAppTitle(u""_s), text, buttons, std::move(done));
}

void Services::tell(QWidget* window, const QString& reason) const
{
    ask(window, AlertPanel::Style::Critical, reason.left(1).toUpper() + reason.mid(1));
}

void Services::tellTroubles(QWidget* window) const
{
    const QStringList troubles = defaults.takeTroubles();
    if (!troubles.isEmpty())
        ask(window, AlertPanel::Style::Critical, troubles.join(u'\n'));
}

void Services::synchronize(QWidget* window) const
{
    defaults.synchronize();
    tellTroubles(window);
}

} // namespace pagestack
