#pragma once

#include "engine/support/Pause.h"
#include "filelist/FileTableModel.h"

#include <QObject>
#include <QUndoStack>

#include <functional>

namespace pagestack {

/// The changes of the file list that the user can take back: check marks, removal, moving, sorting.
///
/// Each change is one step of the history. A step remembers files, not rows: it leaves alone files
/// that were added or removed since by other ways, and does not insert a file that is in the list
/// again. Main thread.
class ListEditor : public QObject
{
    Q_OBJECT

public:
    /// `model` must outlive it.
    explicit ListEditor(FileTableModel& model, QObject* parent = nullptr);

    QUndoStack& history() { return m_history; }

    void mark(const QList<int>& rows, FileTableModel::Mark mark);
    /// Ticks these rows, which ascend, and no others.
    void tickOnly(const QList<int>& rows);
    /// `text` names the step, as "Remove 3 Files".
    void remove(const QList<int>& rows, const QString& text);
    /// Moves the rows, which ascend, by one place up or down. False, with none moved, if one of
    /// them has no place to go to. The list is sorted by `before` until then and by nothing
    /// afterwards.
    bool move(const QList<int>& rows, bool isUp, const SortOrders& before);
    /// Moves the rows, which ascend, before row `target`, or to the end for the row count; `before`
    /// as above.
    void moveTo(const QList<int>& rows, int target, const SortOrders& before);
    /// Brings the list into the order that sortedRows() gave for `after`; `before` are the orders
    /// until now.
    void sort(const QList<int>& rows, const SortOrders& before, const SortOrders& after);

signals:
    /// A step was taken back or done again; it concerned the files in these rows, which ascend.
    /// Comes a turn of the event loop later when they are very many.
    void stepped(const QList<int>& rows);
    /// The list is sorted by `orders` now, after a step or after taking one back.
    void sorted(const QList<pagestack::SortOrder>& orders);

private:
    using Items = FileList::Items;
    /// Does it or takes it back.
    using Step = std::function<void(bool isForward)>;

    /// `concerned`: the files to be told of by stepped().
    void push(const QString& text, const Items& concerned, const Step& step);
    void pushMarks(const Items& checked, const Items& unchecked);
    void rememberEdit(int row);
    void rememberPageChoice(int row, const QString& before);

    void tellStep();

    FileTableModel& m_model;
    bool m_isNewStep = false; ///< which is told by nothing but the change itself
    Items m_concerned; ///< by the last step that was taken back or done again, until it is told
    Pause m_nextTurn; ///< of the event loop: then that of very many files is told
    QUndoStack m_history;
};

} // namespace pagestack
