#pragma once

#include <QObject>

class QAbstractButton;
class QWidget;

namespace Ui {
class MainWindow;
}

namespace pagestack {

class ViewState;

/// The tool tips of the window's buttons: the command and its key, then what it does, then why it
/// cannot be used, where that is so. Main thread.
class CommandTips : public QObject
{
    Q_OBJECT

public:
    /// Those of all buttons of `window` that have a tool tip, which says what they do. All outlive
    /// it.
    CommandTips(QWidget& window, const Ui::MainWindow& ui, const ViewState& view, QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow(QAbstractButton& button) const;

    const Ui::MainWindow& m_ui;
    const ViewState& m_view;
};

} // namespace pagestack
