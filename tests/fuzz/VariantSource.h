#pragma once

#include "tests/fuzz/FuzzTargets.h"

#include <QDateTime>
#include <QUrl>
#include <QVariant>

#include <limits>

namespace pagestack {

/// Takes values of many types from the bytes.
class VariantSource
{
public:
    explicit VariantSource(FuzzInput bytes)
        : m_bytes(bytes)
    {
    }

    bool isAtEnd() const { return m_bytes.empty(); }

    unsigned byte()
    {
        if (m_bytes.empty())
            return 0;
        const unsigned value = m_bytes.front();
        m_bytes = m_bytes.subspan(1);
        return value;
    }

    QVariant value(int depth = 0)
    {
        switch (byte() % 14) {
        case 0:
            return {};
        case 1:
            return static_cast<int>(number());
        case 2:
            return static_cast<qulonglong>(number()) << 20U;
        case 3:
            return static_cast<double>(number()) * 1e300;
        case 4:
            return std::numeric_limits<double>::quiet_NaN();
        case 5:
            return byte() % 2 == 1;
        case 6:
            return QString();
        case 7:
            return QString::fromUtf8(text());
        case 8:
            return text();
        case 9:
            return QString::number(number());
        case 10:
            return QUrl(QString::fromLatin1(text()));
        case 11:
            return QDateTime::fromSecsSinceEpoch(number());
        case 12:
            return depth > 3 ? QVariant() : QVariantList { value(depth + 1), value(depth + 1) };
        default:
            return depth > 3 ? QVariant()
                             : QVariantMap { { QStringLiteral("key"), value(depth + 1) } };
        }
    }

private:
    std::uint32_t number()
    {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8U | byte();
        return value;
    }

    QByteArray text()
    {
        QByteArray bytes;
        for (unsigned left = byte() % 64; left > 0 && !isAtEnd(); --left)
            bytes.append(static_cast<char>(byte()));
        return bytes;
    }

    FuzzInput m_bytes;
};

} // namespace pagestack
