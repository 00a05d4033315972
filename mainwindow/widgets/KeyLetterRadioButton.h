#pragma once

#include "mainwindow/widgets/KeyLetter.h"

#include <QRadioButton>

namespace pagestack {

/// A radio button that shows one letter of its title bold, underlined and coloured, and is pressed
/// by Alt + that letter. text() stays plain; setText() with another title takes the letter away.
class KeyLetterRadioButton : public QRadioButton
{
    Q_OBJECT

public:
    using QRadioButton::QRadioButton;

    /// `position` counts from 0; one outside of the title clears the letter.
    void setKeyLetter(qsizetype position, const QColor& color);
    void clearKeyLetter();
    /// -1 when no letter is marked.
    [[nodiscard]] qsizetype keyLetterPosition() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    KeyLetter m_keyLetter;
};

} // namespace pagestack
