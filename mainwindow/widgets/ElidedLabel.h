#pragma once

#include <QLabel>

namespace pagestack {

/// One line of plain text that shows as much of it as fits, with an ellipsis in the middle, so that
/// the beginning and the end of a path stay readable. Its width does not depend on its text; the
/// tool tip has all of a text that does not fit. text() is the whole text.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    /// What is drawn at the present width.
    [[nodiscard]] QString shownText() const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace pagestack
