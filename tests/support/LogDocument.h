#pragma once

#include "engine/log/Log.h"

#include <QBuffer>

namespace pagestack {

/// What `log` writes; empty when it fails.
inline QByteArray documentOf(const Log& log)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return log.writeTo(buffer) ? buffer.data() : QByteArray();
}

} // namespace pagestack
