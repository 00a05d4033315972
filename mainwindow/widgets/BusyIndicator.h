#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace pagestack {

/// A turning wheel that says that something is going on. It draws nothing while it stands still but
/// keeps its place.
class BusyIndicator : public QWidget
{
    Q_OBJECT

public:
    explicit BusyIndicator(QWidget* parent = nullptr);

    void startAnimation();
    void stopAnimation();
    [[nodiscard]] bool isAnimating() const;

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// The timer runs only while the wheel can be seen.
    void followVisibility(bool visible);

    QBasicTimer m_timer;
    bool m_isAnimating = false;
    int m_step = 0;
};

} // namespace pagestack
