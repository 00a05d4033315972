#pragma once

#include <QString>

#include <optional>

namespace pagestack {

/// The I-th of N parts of a plan, I from 0 on: the same pages whenever asked. Parts follow each
/// other in the order of the plan and have as many pages as each other, but for sources that are
/// not divided.
struct Shard
{
    int index = 0;
    int count = 1;

    /// "3/16". Throws OptionError.
    static Shard parse(const QString& text);
    QString text() const;

    /// Where it starts among the pages of a plan with `total` of them; that of `index` == `count`
    /// is the end of the last one.
    qint64 start(qint64 total) const;

    /// Pages of a source, counted from 0 among those that are converted, the last one excluded.
    struct Part
    {
        int from = 0;
        int to = 0;
    };

    /// What is its part of a source with `pages` pages that has `before` pages before it in a plan
    /// with `total` of them; none when it has none. A source that has more than a hundredth of a
    /// part's pages is divided if it `isDivisible`; another one belongs to the part with its
    /// middle, one without pages too.
    std::optional<Part> partOf(qint64 before, int pages, bool isDivisible, qint64 total) const;
};

} // namespace pagestack
