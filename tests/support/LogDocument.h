#pragma once

#include "engine/log/Log.h"

namespace pagestack {

/// What `log` writes.
inline QByteArray documentOf(const Log& log)
{
    QByteArray document;
    log.writeTo([&](const QByteArray& text) { document += text; });
    return document;
}

} // namespace pagestack
