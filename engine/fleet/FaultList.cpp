#include "engine/fleet/FaultList.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr std::size_t mostKept = 100;
    constexpr std::size_t mostShown = 10;

} // namespace

void FaultList::add(const QJsonObject& members, const QString& text)
{
    ++m_count;
    if (m_first.size() < mostKept)
        m_first.push_back({ members, text });
}

QJsonObject FaultList::toJson() const
{
    QJsonArray first;
    for (const Example& example : m_first)
        first.append(example.members);
    return { { u"count"_s, m_count }, { u"first"_s, first } };
}

void FaultList::addTo(QStringList& lines) const
{
    const std::size_t shown = std::min(m_first.size(), mostShown);
    for (std::size_t i = 0; i < shown; ++i)
        lines.append(m_first[i].text);
    if (const qint64 more = m_count - static_cast<qint64>(shown); more > 0)
        lines.append(u"and %1 more"_s.arg(more));
}

} // namespace pagestack
