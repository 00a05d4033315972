#pragma once

#include <QList>

class QWidget;

namespace pagestack {

/// The controls of `root` that Tab can reach, in the order in which they are read: as its layouts,
/// tool bars, splitters and tabs have them.
QList<QWidget*> controlsAsRead(QWidget& root);

/// Makes Tab go through `controls` in their order.
void setTabOrder(const QList<QWidget*>& controls);

} // namespace pagestack
