#include "engine/support/SystemLog.h"

using namespace Qt::StringLiterals;

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

void systemLogError(const QString& operation, const std::exception& error)
{
    systemLog(u"Error in (%1) : %2"_s.arg(operation, QString::fromUtf8(error.what())));
}

} // namespace pagestack
