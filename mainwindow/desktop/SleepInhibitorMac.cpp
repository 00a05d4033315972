#include "engine/support/SystemLog.h"
#include "mainwindow/desktop/SleepInhibitor.h"

#include <QCoreApplication>
#include <QProcess>

namespace pagestack {

using namespace Qt::StringLiterals;

/// The system's own tool for this, which ends with this program at the latest.
struct SleepInhibitor::Hold
{
    QProcess keeper;
};

SleepInhibitor::SleepInhibitor()
    : m_hold(std::make_unique<Hold>())
{
    m_hold->keeper.start(u"/usr/bin/caffeinate"_s,
                         { u"-i"_s, u"-w"_s, QString::number(QCoreApplication::applicationPid()) });
    connect(&m_hold->keeper, &QProcess::errorOccurred, this, [this] {
        systemLog(u"The computer is not kept awake: "_s + m_hold->keeper.errorString());
    });
}

SleepInhibitor::~SleepInhibitor()
{
    m_hold->keeper.disconnect(this);
    m_hold->keeper.kill();
    m_hold->keeper.waitForFinished();
}

} // namespace pagestack
