#include "engine/image/decode/SampleRange.h"

#include "engine/image/pixels/SampleMath.h"

#include <algorithm>
#include <cmath>

namespace pagestack {

using namespace Qt::StringLiterals;

SampleRange::SampleRange(int bitsPerSample, int sampleFormat, int shownBits)
    : m_lowest(sampleFormat == 2 ? -std::ldexp(1.0, bitsPerSample - 1) : 0.0)
    , m_highest(sampleFormat == 3 ? 1.0 : m_lowest + std::ldexp(1.0, bitsPerSample) - 1)
    , m_isFloat(sampleFormat == 3)
    , m_isSigned(sampleFormat == 2)
    , m_isDeep(sampleFormat != 3 && bitsPerSample > 16)
    , m_isShownIn8Bits(shownBits == 8)
    , m_isFine(!m_isFloat && bitsPerSample <= shownBits)
{
}

void SampleRange::look(const SampleUnpacker& unpacker, const SampleRun& samples)
{
    for (qsizetype i = 0; m_isFloat && i < samples.pixels; ++i) {
        const double number = unpacker.number(unpacker.rawSample(samples, i));
        m_outside += number < m_lowest || number > m_highest ? 1 : 0;
        ++m_seen;
    }
    for (qsizetype i = 0; i < samples.pixels && !m_isFine; ++i) {
        const std::uint64_t raw = unpacker.rawSample(samples, i);
        if (m_count == 0 || raw != m_last)
            add(unpacker, raw);
        m_last = raw;
    }
}

void SampleRange::add(const SampleUnpacker& unpacker, std::uint64_t raw)
{
    const double number = unpacker.number(raw);
    m_least = m_count == 0 ? number : std::min(m_least, number);
    m_most = m_count == 0 ? number : std::max(m_most, number);
    std::uint16_t shown = unpacker.scaled(raw);
    if (m_isShownIn8Bits)
        shown = toByte(shown);
    auto* const end = m_levels.begin() + m_count;
    const auto* const known
        = std::find_if(m_levels.begin(), end, [=](const Level& l) { return l.shown == shown; });
    if (known != end)
        m_isMerged = m_isMerged || known->raw != raw;
    else if (m_count + 1 == enoughLevels)
        m_isFine = true;
    else
        m_levels.at(m_count++) = { shown, raw };
}

/// A blank page has few levels, too: it is mostly at the upper end of the range.
bool SampleRange::isSmallPart() const
{
    const double part = m_isSigned ? m_most - m_least : m_most;
    return part < (m_highest - m_lowest) / 16;
}

QString SampleRange::warning() const
{
    if (m_outside > m_seen / 4 && m_isFine)
        return u"%1 % of its samples lie outside of 0 to 1, which is shown"_s.arg(100 * m_outside
                                                                                  / m_seen);
    if (m_isFine || m_count == 0)
        return {};
    const bool isOutside = m_isFloat && !(m_least >= m_lowest && m_most <= m_highest);
    if (!isOutside && !(m_isMerged && (m_isDeep || isSmallPart())))
        return {};
    const auto text = [](double number) { return QString::number(number, 'g', 12); };
    return u"its samples lie between %1 and %2, and %3 to %4 is shown: fewer than 16 levels are left"_s
        .arg(text(m_least), text(m_most), text(m_lowest), text(m_highest));
}

} // namespace pagestack
