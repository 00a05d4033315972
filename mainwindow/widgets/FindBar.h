#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QToolButton;

namespace pagestack {

/// A line for a text to look for, with what was found and ways to the next and the previous one.
/// Hidden until `begin`; Escape and its close button hide it again.
class FindBar : public QWidget
{
    Q_OBJECT

public:
    explicit FindBar(QWidget* parent = nullptr);

    QString text() const;
    /// Shows the bar and gives the field the keys, its text selected.
    void begin();
    /// Says which of how many was found, counted from 1; 0 of 0: none, negative: nothing is said.
    void showFound(qsizetype current, qsizetype count);

signals:
    /// The text has changed and typing pauses.
    void searched(const QString& text);
    void nextRequested();
    void previousRequested();
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QToolButton* addButton(const QString& icon, const QString& name, const QString& text);

    QLineEdit* m_field;
    QLabel* m_found;
};

} // namespace pagestack
