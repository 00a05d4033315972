#pragma once

#include <QLabel>

namespace pagestack {

/// The hint over an empty list: text in a dashed frame. Mouse and drops go to what lies under it.
class DropHintLabel : public QLabel
{
    Q_OBJECT

public:
    explicit DropHintLabel(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace pagestack
