#include "engine/options/PageChoice.h"

#include "engine/options/ConversionOptions.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    int placeOf(int page, int count) { return page < 0 ? count + 1 + page : page; }

} // namespace

PageChoice::PageChoice(const QString& text)
{
    if (text.trimmed().isEmpty())
        return;
    for (const QString& one : text.split(u','))
        m_parts.push_back(part(text, one.trimmed()));
}

PageChoice::Part PageChoice::part(const QString& choice, const QString& text)
{
    // Nine digits are a number in any case.
    static const QRegularExpression form(u"^(-?0*[1-9]\\d{0,8})(-(-?0*[1-9]\\d{0,8})?)?$"_s);
    const QRegularExpressionMatch match = form.match(text);
    Part found { text };
    if (match.hasMatch()) {
        found.first = found.last = match.captured(1).toInt();
        if (match.hasCaptured(2))
            found.last = match.hasCaptured(3) ? match.captured(3).toInt() : -1;
    }
    const bool isBackwards = (found.first < 0) == (found.last < 0) && found.first > found.last;
    if (!match.hasMatch() || isBackwards)
        throw OptionError(
            u"pages '%1' has '%2', which is none of 3, 3-5, 3- and -1 (from 1 on, or from -1 back)"_s
                .arg(choice, text));
    return found;
}

QList<int> PageChoice::pages(int count) const
{
    std::vector<std::pair<int, int>> ranges;
    for (const Part& part : m_parts)
        ranges.emplace_back(std::max(placeOf(part.first, count), 1),
                            std::min(placeOf(part.last, count), count));
    if (isEvery())
        ranges.emplace_back(1, count);
    std::ranges::sort(ranges);
    QList<int> found;
    int next = 1;
    for (const auto& [first, last] : ranges)
        for (next = std::max(next, first); next <= last; ++next)
            found.append(next);
    return found;
}

QString PageChoice::missing(int count) const
{
    constexpr qsizetype mostNamed = 5;
    QStringList parts;
    for (const Part& part : m_parts) {
        const int first = placeOf(part.first, count);
        const int last = placeOf(part.last, count);
        const bool isOpen = part.text.endsWith(u'-');
        if (first < 1 || first > count || last < 1 || last > count || first > last)
            parts.append((part.first == part.last && !isOpen ? u"page "_s : u"pages "_s)
                         + part.text);
    }
    if (parts.isEmpty())
        return {};
    const qsizetype more = parts.size() - mostNamed;
    QString named = parts.mid(0, mostNamed).join(u", "_s);
    if (more > 0)
        named += u" and %1 more"_s.arg(more);
    return u"%1 asked for, the file has %2"_s.arg(named).arg(count);
}

} // namespace pagestack
