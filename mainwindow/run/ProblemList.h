#pragma once

#include "engine/log/Diagnostic.h"

#include <QTreeWidget>

namespace pagestack {

/// What went wrong in a run: a row for each diagnostic, with file, page and reason. The selected
/// rows, or all, can be copied as text. Takes no more memory for more problems than it shows.
class ProblemList : public QTreeWidget
{
    Q_OBJECT

public:
    static constexpr int mostRows = 1000;

    explicit ProblemList(QWidget* parent = nullptr);

    void add(const Diagnostic& diagnostic);
    void removeAll();
    /// A line for each row, path, page and reason parted by tabs, and a last one when there are
    /// more problems.
    QString allText() const;
    /// Of all problems, those that are not shown included.
    qint64 count() const { return m_count; }

signals:
    /// The source at `path` is to be shown in the list of files.
    void fileRequested(const QString& path);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void copy(bool onlySelected) const;
    QStringList lines(bool onlySelected) const;

    qint64 m_count = 0;
};

} // namespace pagestack
