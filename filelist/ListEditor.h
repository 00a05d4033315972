#pragma once

#include "filelist/FileTableModel.h"

#include <QObject>
#include <QUndoStack>

namespace pagestack {

/// The changes of the file list that the user can take back: check marks, removal, moving, sorting.
///
/// Each change is one step of the history. A step remembers files, not rows: files that a load has
/// added or a run has taken away since are left as they are, and a file that has come back into the
/// list by another way is not put there a second time. Main thread.
class ListEditor : public QObject
{
    Q_OBJECT

public:
    /// `model` must outlive it.
    explicit ListEditor(FileTableModel& model, QObject* parent = nullptr);

    QUndoStack& history() { return m_history; }

    void mark(const QList<int>& rows, FileTableModel::Mark mark);
    /// `text` names the step, as "Remove 3 Files".
    void remove(const QList<int>& rows, const QString& text);
    /// Moves the rows, which ascend, one place, all of them or, when one has no place to go to,
    /// none: false.
    bool moveUp(const QList<int>& rows);
    bool moveDown(const QList<int>& rows);
    /// Brings the list into the order that sortedRows() gave for `after`; `before` is what it was
    /// sorted by until now.
    void sort(const QList<int>& rows, const SortOrders& before, const SortOrders& after);

signals:
    /// A step was taken back or done again that concerned the files in these rows, which ascend.
    void stepped(const QList<int>& rows);
    /// The list is sorted by this now, be it by a step or because one was taken back.
    void sorted(const QList<pagestack::SortOrder>& orders);

private:
    void push(class ListStep* step);
    void rememberEdit(int row);

    FileTableModel& m_model;
    QUndoStack m_history;
};

} // namespace pagestack
