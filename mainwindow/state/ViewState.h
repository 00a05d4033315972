#pragma once

#include "engine/support/Pause.h"

#include <QColor>
#include <QObject>
#include <QPalette>

#include <atomic>

class QMainWindow;
class QUndoStack;
class QWidget;

namespace Ui {
class MainWindow;
}

namespace pagestack {

class FileList;

/// What the main window shows and allows: which controls are enabled, the lines of totals, the
/// spinner. It follows the list, the highlight and the history by itself. Main thread, but for
/// isProcessing().
class ViewState : public QObject
{
    Q_OBJECT

public:
    /// All of them outlive it. The table of `ui` has its model.
    ViewState(QMainWindow& window, Ui::MainWindow& ui, const FileList& files,
              const QUndoStack& history);

    /// Enables the controls, as far as they have something to act on, or disables them.
    void resetView(bool enable);
    /// False from the start of a load, a sort or a run to its end; that of a run is its Close.
    bool isViewEnabled() const { return m_isViewEnabled; }
    /// While the controls are disabled the list may be read all the same: highlighted and scrolled,
    /// but not changed.
    void setListReadable(bool isReadable);
    /// Enables or disables Convert and Cancel, whatever the list holds.
    void resetViewForProcess(bool enable);
    /// Shows that a load or a run is under way, or that none is.
    void startProcess();
    void stopProcess();

    /// Why `control`, which is disabled, cannot be used; empty: what it belongs to says so.
    QString whyDisabled(const QWidget& control) const;

    /// Counts the pages of ticked files that are chosen to be converted; those of a long list a
    /// moment later.
    void updateTotalLabel();
    void updateTotalPagesLabel();
    void updateTimeTakenLabel(const QString& text); ///< null: the text for no time at all

    /// True while a load or a run is under way. Any thread.
    bool isProcessing() const { return m_isProcessing; }
    void setIsProcessing(bool isProcessing);
    QColor processingLabelColor() const { return m_processingLabelColor; }
    void setProcessingLabelColor(const QColor& color);
    /// Takes the colour of the totals from the palette of the window.
    void followPalette();

signals:
    void isProcessingChanged(bool isProcessing);
    void processingLabelColorChanged(const QColor& color);

private:
    void follow();
    void followTotals();
    void showTotals();

    QMainWindow& m_window;
    Ui::MainWindow& m_ui;
    const FileList& m_files;
    const QUndoStack& m_history;
    std::atomic<bool> m_isProcessing = false; ///< written by the main thread
    bool m_isViewEnabled = true; ///< what resetView was last called with
    bool m_isListReadable = false; ///< when it is disabled
    QPalette::ColorGroup m_labelGroup = QPalette::Active; ///< that the totals are shown in
    QColor m_processingLabelColor;
    Pause m_totals; ///< many changes are counted once
};

} // namespace pagestack
