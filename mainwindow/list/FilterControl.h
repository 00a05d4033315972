#pragma once

#include "engine/support/Pause.h"
#include "filelist/ListFilter.h"
#include "mainwindow/state/WindowParts.h"

#include <QObject>

#include <array>
#include <vector>

class QAbstractButton;

namespace pagestack {

/// The filter above the table: a field, and a button for each kind of outcome that the list has.
/// What is hidden is left alone by the commands on highlighted rows; ticked, it is converted all
/// the same. A long list is looked through a part at a turn of the event loop. Main thread.
class FilterControl : public QObject
{
    Q_OBJECT

public:
    explicit FilterControl(const WindowParts& parts);

    void begin(); ///< gives the field the keys, the text selected
    void clear(); ///< shows all files

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Group
    {
        RowGroup group {};
        QAbstractButton* button = nullptr;
        const char* text = nullptr; ///< with its number
        int count = 0;
    };

    void choose();
    void chooseGroup(RowGroup chosen);
    void lookAgain();
    void followList();
    void followStatuses();
    void look();
    void count(RowStatus::State state);
    void apply();
    void showGroups();
    void showNumber();

    const WindowParts m_parts;
    std::array<Group, 3> m_groups;
    ListFilter m_filter;
    Pause m_pause; ///< while the user types
    Pause m_refresh; ///< from a change of statuses on
    QTimer m_turn;
    int m_next = 0; ///< the row that is looked at next
    std::vector<int> m_found; ///< rows before that, of a filter that is not applied yet
    bool m_isChosenAnew = false; ///< since it was last applied
    bool m_isApplied = true; ///< the table keeps to the filter by itself
};

} // namespace pagestack
