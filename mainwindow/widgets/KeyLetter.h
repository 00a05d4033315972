#pragma once

#include <QColor>
#include <QRectF>
#include <QSize>
#include <QString>
#include <QStyle>

class QAbstractButton;
class QPainter;
class QStyleOptionButton;
class QStylePainter;

namespace pagestack {

/// The one letter of a button's title that stands out: bold, underlined and in a colour of its own.
/// A value held by the button. It belongs to one title; with any other title there is no letter.
class KeyLetter
{
public:
    /// What a style calls the pieces of a button that has an indicator before its title.
    struct Pieces
    {
        QStyle::PrimitiveElement indicator;
        QStyle::SubElement indicatorArea;
        QStyle::SubElement titleArea;
        QStyle::SubElement focusArea;
    };

    /// Marks the letter at `position` of `button`'s title and makes Alt + that letter press the
    /// button (not on macOS, where Alt types characters). A position outside of the title clears
    /// the letter. A `color` equal to the button's text colour follows the palette when the theme
    /// changes.
    void set(QAbstractButton& button, qsizetype position, const QColor& color);
    void clear(QAbstractButton& button);

    /// Position in `title`, -1 when there is no letter in it.
    [[nodiscard]] qsizetype positionIn(const QString& title) const;
    /// By how many pixels `title` is wider with its bold letter than without, in the font of
    /// `button`.
    [[nodiscard]] int extraWidth(const QAbstractButton& button) const;
    /// Draws `button`'s title on one line inside `area`, centred vertically; horizontally as
    /// `alignment` says. `textColor` is the colour of the title, and of the letter of a disabled
    /// button.
    void draw(QPainter& painter, const QAbstractButton& button, const QRectF& area,
              Qt::Alignment alignment, const QColor& textColor) const;
    /// Draws all of `button`, a check box or a radio button: indicator, title and focus frame.
    void drawWithIndicator(QStylePainter& painter, const QAbstractButton& button,
                           const QStyleOptionButton& option, const Pieces& pieces) const;

private:
    QString m_title;
    qsizetype m_position = -1;
    QColor m_color; // invalid: the colour of the text
};

} // namespace pagestack
