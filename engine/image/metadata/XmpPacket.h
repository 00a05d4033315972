#pragma once

#include <QByteArray>

namespace pagestack {

/// `packet`, with the orientation that it names, if any, for upright pixels; nothing else of it is
/// changed.
QByteArray uprightXmp(QByteArray packet);

/// A packet without the white space that leaves room for changes.
QByteArray withoutPadding(const QByteArray& packet);

/// A packet as JPEG segments hold it: XMP part 3, section 1.1.3.
struct XmpParts
{
    QByteArray standard; ///< no more than was asked for
    QByteArray extended; ///< what is too large for it; mostly empty
    QByteArray digest; ///< that names `extended`
};

/// `packet` itself if it has no more than `mostBytes`, else a short one that names the rest.
XmpParts xmpParts(const QByteArray& packet, qsizetype mostBytes);

} // namespace pagestack
