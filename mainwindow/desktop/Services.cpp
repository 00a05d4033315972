#include "mainwindow/desktop/Services.h"

#include "engine/log/ShownReason.h"
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
    const QString text = shownReason(reason);
    ask(window, AlertPanel::Style::Critical, text.left(1).toUpper() + text.mid(1));
}

void Services::tellTroubles(QWidget* window) const
{
    QStringList troubles = defaults.takeTroubles();
    for (QString& trouble : troubles)
        trouble = shownReason(trouble);
    if (!troubles.isEmpty())
        ask(window, AlertPanel::Style::Critical, troubles.join(u'\n'));
}

void Services::synchronize(QWidget* window) const
{
    defaults.synchronize();
    tellTroubles(window);
}

} // namespace pagestack
