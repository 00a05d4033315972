#pragma once

#include <QByteArray>

namespace pagestack {

/// `bytes` as one zlib stream (RFC 1950).
QByteArray zlibBlock(const QByteArray& bytes);

} // namespace pagestack
