#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <QStringList>

namespace pagestack {

/// Files that are tried again after growing pauses, up to a minute, and what was told of each, so
/// that it is told once. An empty path stands for all files. One thread at a time.
class Retries
{
public:
    Retries() { m_clock.start(); }

    void pause(const QString& path);
    void end(const QString& path) { m_pauses.remove(path); }

    bool isPaused(const QString& path) const;
    bool hasFailed(const QString& path) const { return m_pauses.contains(path); }
    bool hasAny() const { return !m_pauses.isEmpty(); }

    /// Until the first pause is over; `most` without any.
    qint64 nextMs(qint64 most) const;

    /// Whether no attempt before this one has had `line`, which is then told.
    bool isNews(const QString& path, const QString& line);
    /// Ends the attempt: what was told in it is kept if there will be another.
    void keepTold(const QString& path);

private:
    struct Pause
    {
        qint64 untilMs = 0;
        qint64 lengthMs = 0;
        QStringList told {};
    };

    qint64 leftMs(const QString& path) const;

    QElapsedTimer m_clock;
    QHash<QString, Pause> m_pauses; ///< by path
    QHash<QString, QStringList> m_told; ///< in the attempt in hand
};

} // namespace pagestack
