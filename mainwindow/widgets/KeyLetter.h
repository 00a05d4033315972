#pragma once

#include <QtGlobal>

class QAbstractButton;
class QColor;
class QString;

namespace pagestack {

enum class Occurrence {
    FirstInAnyCase,
    LastInThisCase,
};

/// Shows the letter `key` of the title of `button`, a push or tool button, check box or radio
/// button, bold, underlined and in `color`, and makes Alt + that letter press the button (not on
/// macOS, where Alt types characters). The title stays plain text; another title has no such
/// letter.
///
/// A `color` equal to that of the button's text follows the palette. Nothing changes without a
/// button, a letter or a valid colour, or when the title does not contain the letter.
void setKeyLetter(QAbstractButton* button, const QString& key, const QColor& color,
                  Occurrence occurrence = Occurrence::FirstInAnyCase);

/// Position in the button's title, -1 when it has no key letter.
qsizetype keyLetterPosition(const QAbstractButton& button);

} // namespace pagestack
