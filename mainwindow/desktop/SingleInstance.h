#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <utility>

namespace pagestack {

/// Makes the program one of its kind in a session of the desktop: a second one hands its files to
/// the first, and ends. Without a session bus each program stands for itself. Main thread.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    /// Becomes the first one, if there is none.
    SingleInstance();
    ~SingleInstance() override;
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Hands `urls`, with absolute paths, to the program that is the first one; waits for its
    /// answer, some seconds at the most. False when this program is the first itself, or when the
    /// other does not answer.
    bool handOver(const QList<QUrl>& urls);

    /// From the time when `isEnding` is true files are refused: they would be opened no more, and
    /// the other start of the program opens them itself.
    void setIsEnding(std::function<bool()> isEnding) { m_isEnding = std::move(isEnding); }
    bool isEnding() const { return m_isEnding && m_isEnding(); }

signals:
    /// Another start of the program wants these opened, and the window in front; maybe none.
    void opened(const QList<QUrl>& urls);

private:
    bool m_isFirst = true;
    std::function<bool()> m_isEnding;
};

} // namespace pagestack
