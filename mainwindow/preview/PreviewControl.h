#pragma once

#include "engine/support/Pause.h"
#include "mainwindow/state/WindowParts.h"

#include <QObject>

namespace pagestack {

class Settings;

/// Shows and hides the preview, and has it show the file that is highlighted. Main thread.
class PreviewControl : public QObject
{
    Q_OBJECT

public:
    PreviewControl(const WindowParts& parts, Settings& settings);

    /// As it was when the program ended; to be called once the window has its size.
    void restore();
    void toggle();

private:
    void show(bool show);
    void makeRoom();
    void giveKeysAndRoomBack();
    bool hasOwnWidth() const;
    void follow();
    QString highlightedPath() const;

    const WindowParts m_parts;
    int m_widthBefore = 0; ///< of the window, in points; 0: it was not widened
    Pause m_rest; ///< of the highlight, which keys may move fast
};

} // namespace pagestack
