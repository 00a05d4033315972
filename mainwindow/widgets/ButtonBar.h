#pragma once

#include <QList>
#include <QWidget>

namespace pagestack {

/// Places its child widgets in a row, in the order in which they were made: from the left, or,
/// where a child has the dynamic property "anchor" with the value "right", against the right edge.
/// Where the width does not do for one row, there are several; the right group stays together.
class ButtonBar : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Place
    {
        QWidget* widget = nullptr;
        QRect area;
    };
    /// Where every shown child goes in a bar of `width` pixels.
    [[nodiscard]] QList<Place> places(int width) const;
    [[nodiscard]] int spacing() const;
    void arrange();
};

} // namespace pagestack
