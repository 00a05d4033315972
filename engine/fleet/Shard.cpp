#include "engine/fleet/Shard.h"

#include "engine/options/ConversionOptions.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int mostParts = 1'000'000;

} // namespace

Shard Shard::parse(const QString& text)
{
    const qsizetype slash = text.indexOf(u'/');
    if (slash < 0)
        throw OptionError(u"shard '%1' is none, as 0/16 to 15/16 are"_s.arg(text));
    const int count = numberOf(text.mid(slash + 1), 1, mostParts, u"shard count"_s);
    return { numberOf(text.left(slash), 0, count - 1, u"shard index"_s), count };
}

QString Shard::text() const { return u"%1/%2"_s.arg(index).arg(count); }

qint64 Shard::start(qint64 total) const
{
    // total * index / count, without a product that is too large.
    return total / count * index + total % count * index / count;
}

std::optional<Shard::Part> Shard::partOf(qint64 before, int pages, bool isDivisible,
                                         qint64 total) const
{
    const qint64 first = start(total);
    const qint64 end = index + 1 == count ? total : Shard { index + 1, count }.start(total);
    if (isDivisible && pages > 1 && qint64 { 100 } * pages * count > total) {
        const qint64 from = std::clamp(first, before, before + pages);
        const qint64 to = std::clamp(end, before, before + pages);
        if (from == to)
            return std::nullopt;
        return Part { static_cast<int>(from - before), static_cast<int>(to - before) };
    }
    const qint64 middle = before + pages / 2;
    const bool isLast = index + 1 == count;
    const bool isMine = first <= middle && (isLast || middle < end);
    // Of parts without pages, the last of those that start at one page takes what is there.
    return isMine ? std::optional(Part { 0, pages }) : std::nullopt;
}

} // namespace pagestack
