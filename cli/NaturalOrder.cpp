#include "cli/NaturalOrder.h"

namespace pagestack {

namespace {

    bool isDigit(QChar character) { return character >= u'0' && character <= u'9'; }

    /// The run of digits at `start`, without leading zeros; `start` moves behind it.
    QStringView takeNumber(QStringView text, qsizetype& start)
    {
        while (start < text.size() && text.at(start) == u'0')
            ++start;
        const qsizetype first = start;
        while (start < text.size() && isDigit(text.at(start)))
            ++start;
        return text.sliced(first, start - first);
    }

    /// Below, at or above 0 like the order of the two numbers, however long.
    int compareNumbers(QStringView a, QStringView b)
    {
        if (a.size() != b.size())
            return a.size() < b.size() ? -1 : 1;
        return a.compare(b);
    }

} // namespace

bool naturallyLess(const QString& a, const QString& b)
{
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a.at(i)) && isDigit(b.at(j))) {
            const QStringView first = takeNumber(a, i);
            if (const int order = compareNumbers(first, takeNumber(b, j)))
                return order < 0;
        } else if (a.at(i) != b.at(j)) {
            return a.at(i) < b.at(j);
        } else {
            ++i;
            ++j;
        }
    }
    const qsizetype restA = a.size() - i;
    const qsizetype restB = b.size() - j;
    return restA != restB ? restA < restB : a < b;
}

} // namespace pagestack
