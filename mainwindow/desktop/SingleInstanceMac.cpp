#include "mainwindow/desktop/SingleInstance.h"

namespace pagestack {

// The system starts a bundle once and sends it what is opened later as events.
SingleInstance::SingleInstance() = default;

SingleInstance::~SingleInstance() = default;

bool SingleInstance::handOver(const QList<QUrl>&) { return false; }

} // namespace pagestack
