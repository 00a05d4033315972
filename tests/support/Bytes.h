#pragma once

#include <QDir>
#include <QFile>

#include <cstdint>
#include <span>

namespace pagestack {

inline QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Ends the test program when that fails.
inline void putBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("a test file cannot be written");
}

/// Whatever lies in the folder, hidden files too, sorted.
inline QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

inline std::span<const std::uint8_t> span(const QByteArray& bytes)
{
    return { reinterpret_cast<const std::uint8_t*>(bytes.constData()),
             static_cast<std::size_t>(bytes.size()) };
}

} // namespace pagestack
