#pragma once

#include <QToolButton>

namespace pagestack {

/// A button that looks like a link: underlined, in the link colour of the palette, with the
/// pointing hand. It takes the keyboard focus and is pressed by the space bar and by Return.
class HyperlinkButton : public QToolButton
{
    Q_OBJECT

public:
    explicit HyperlinkButton(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace pagestack
