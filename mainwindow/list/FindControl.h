#pragma once

#include "engine/support/Pause.h"

#include <QList>
#include <QObject>

namespace Ui {
class MainWindow;
}

namespace pagestack {

class FileList;

/// The find bar: the files with the typed text in their names are highlighted, and the current row
/// goes from one of them to the next. Escape hides the bar. Main thread.
class FindControl : public QObject
{
    Q_OBJECT

public:
    /// `ui` and `files` outlive it.
    FindControl(Ui::MainWindow& ui, const FileList& files);

    /// Shows the bar and gives its field the keys, the text selected.
    void begin();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void find();
    void showMatch(bool isNext);
    void close();
    QList<int> matches() const; ///< none of them hidden

    Ui::MainWindow& m_ui;
    const FileList& m_files;
    Pause m_pause; ///< while the user types
};

} // namespace pagestack
