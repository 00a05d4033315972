#include "engine/support/SystemLog.h"

namespace pagestack {

Q_LOGGING_CATEGORY(systemLogCategory, "pagestack")

namespace {

    // File names end up in the text: a line break in one must not forge a second entry, and an
    // escape sequence must not reach the terminal.
    QString asOneLine(QString text)
    {
        for (QChar& character : text) {
            if (character.category() == QChar::Other_Control)
                character = u' ';
        }
        return text;
    }

} // namespace

void systemLog(const QString& text) { qCWarning(systemLogCategory).noquote() << asOneLine(text); }

} // namespace pagestack
