#pragma once

#include <QWidget>

namespace pagestack {

/// A row of tool buttons, in a horizontal layout: each shows its icon, and from the leading one on
/// as many show their words beside it as the width of the row has room for.
class CommandBar : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// With icons alone.
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    void showWords();
    [[nodiscard]] int widthOfIcons() const;
};

} // namespace pagestack
