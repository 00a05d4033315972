#pragma once

#include <QWidget>

class QAbstractButton;
class QHBoxLayout;
class QLabel;
class QMainWindow;
class QProgressBar;

namespace pagestack {

/// The line at the bottom of the window that stands for the sheet of a run while that is made
/// small: how far it is, and buttons that press those of the sheet.
class RunStrip : public QWidget
{
    Q_OBJECT

public:
    /// Lies hidden in the status bar of `window`.
    explicit RunStrip(QMainWindow& window);

    /// Adds a button, called `name`, which does what `original` does and says what it says, and
    /// is there when that can be pressed. `original` outlives the strip.
    void addButton(const QString& name, QAbstractButton& original);

    /// With the status bar.
    void setShown(bool isShown);
    /// As of now: `permille` of the run.
    void update(const QString& text, int permille);

signals:
    /// The sheet is wanted back.
    void detailsRequested();

private:
    void follow(QAbstractButton& button, const QAbstractButton& original) const;

    QMainWindow& m_window;
    QHBoxLayout* m_layout;
    QProgressBar* m_bar;
    QLabel* m_label;
    QAbstractButton* m_details;
    QList<std::pair<QAbstractButton*, QAbstractButton*>> m_buttons; ///< and their originals
};

} // namespace pagestack
