#pragma once

#include "filelist/SortOrder.h"
#include "mainwindow/list/FilterControl.h"
#include "mainwindow/list/FindControl.h"
#include "mainwindow/state/WindowParts.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QUrl>

namespace pagestack {

class ListEditor;

/// The commands on the list and on the highlighted files. What would change the list is refused
/// while a load or a run is under way. Main thread, but for sortAsTable().
class ListCommands : public QObject
{
    Q_OBJECT

public:
    /// `editor` outlives it.
    ListCommands(const WindowParts& parts, ListEditor& editor);

    /// Ticks (1), unticks (2) or inverts (3) the highlighted rows, or all.
    void checkUncheckInvertSelection(int tag);
    void checkUncheckInvertAll(int tag);
    /// Highlights all rows (1) or the first (2), removes all (3), after a question, or the
    /// highlighted ones (4).
    void selectDeselectRemoveAll(int tag);
    void removeFiles();
    /// Removes the files at these paths, which a run has converted.
    void removeConverted(const QSet<QString>& paths);
    /// Unticks the files at these paths.
    void untick(const QSet<QString>& paths);
    /// Removes the files that the last run has converted.
    void removeFinished();
    /// Ticks the files that failed or were not reached, and no others.
    void tickFailedOnly();
    void copyPaths(); ///< of the highlighted files, to the clipboard
    void moveUp();
    void moveDown();

    /// Sorts by what the table was asked to, or, when that is refused, shows `oldOrders` again.
    void sortDescriptorsDidChange(const SortOrders& oldOrders);
    /// Brings the list into the order that the table shows; a list that was left as the files came
    /// has none. On the thread of a load: only the new order goes to the main thread.
    void sortAsTable();

    void search(); ///< shows the find bar and gives it the keys

    void exportAction();
    /// Writes the list to `path`. Asks the disk about every file, so the window is busy meanwhile.
    void exportTo(const QString& path);

    void openFiles();
    void openEnclodingFolder();
    void getInfo();
    /// Highlights the file at `path`, if it is in the list, and brings it into view.
    void highlightFile(const QString& path);

private:
    void connectActions();
    QList<int> rowsOf(const QSet<QString>& paths) const;
    template <typename Condition>
    QList<int> rowsWhere(Condition condition) const;
    void mark(const QList<int>& rows, int tag);
    void remove(const QList<int>& rows, const QString& text);
    void removeConverted(const QList<int>& rows);
    void move(bool isUp);
    void showStep(const QList<int>& rows);
    void followList();
    void scrollToRow(int row);
    SortReading sortReading() const;
    QList<QUrl> highlightedUrls() const;

    const WindowParts m_parts;
    ListEditor& m_editor;
    FindControl m_find;
    FilterControl m_filter;
};

} // namespace pagestack
