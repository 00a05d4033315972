#pragma once

#include <QList>
#include <QWidget>

#include <utility>

class QAbstractButton;
class QHBoxLayout;
class QLabel;
class QProgressBar;

namespace pagestack {

/// The line at the bottom of the window that stands for the sheet of a run while that is made
/// small: how far it is, and buttons that press those of the sheet.
class RunStrip : public QWidget
{
    Q_OBJECT

public:
    /// Fills `bar`, which has a layout, and which is hidden until setShown().
    explicit RunStrip(QWidget& bar);

    /// Adds a button, called `name`, which does what `original` does and says what it says, and
    /// is there when that can be pressed. `original` outlives the strip.
    void addButton(const QString& name, QAbstractButton& original);

    void setShown(bool isShown);
    /// As of now: `permille` of the run.
    void update(const QString& text, int permille);

signals:
    /// The sheet is wanted back.
    void detailsRequested();

private:
    void follow(QAbstractButton& button, const QAbstractButton& original) const;

    QWidget& m_place;
    QHBoxLayout* m_layout;
    QProgressBar* m_bar;
    QLabel* m_label;
    QAbstractButton* m_details;
    QList<std::pair<QAbstractButton*, QAbstractButton*>> m_buttons; ///< and their originals
};

} // namespace pagestack
