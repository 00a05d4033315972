#pragma once

#include <QAbstractItemModel>

namespace pagestack {

/// Has `follow` called, as long as `context` lives, whenever files have come to the list of
/// `model`, have left it or have changed their places.
template <typename Context, typename Follow>
void onListChange(const QAbstractItemModel& model, Context* context, Follow follow)
{
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, context, follow);
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, context, follow);
    QObject::connect(&model, &QAbstractItemModel::layoutChanged, context, follow);
    QObject::connect(&model, &QAbstractItemModel::modelReset, context, follow);
}

} // namespace pagestack
