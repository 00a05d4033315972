#pragma once

#include <QLabel>

namespace pagestack {

/// A text in a dashed frame, in the colours of the palette at the moment of drawing.
class DropHint : public QLabel
{
    Q_OBJECT

public:
    explicit DropHint(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace pagestack
