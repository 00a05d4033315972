#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <vector>

namespace pagestack {

/// One kind of what is not as it should be: how much there is of it, and the first ones.
class FaultList
{
public:
    /// `text` is a line for people, `members` the same for programs.
    void add(const QJsonObject& members, const QString& text);

    qint64 count() const { return m_count; }
    QJsonObject toJson() const; ///< the number and up to a hundred of them
    void addTo(QStringList& lines) const; ///< up to ten of them, and how many more there are

private:
    struct Example
    {
        QJsonObject members;
        QString text;
    };

    qint64 m_count = 0;
    std::vector<Example> m_first;
};

} // namespace pagestack
