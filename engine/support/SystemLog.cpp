#include "engine/support/SystemLog.h"

using namespace Qt::StringLiterals;

namespace pagestack {

Q_LOGGING_CATEGORY(systemLogCategory, "pagestack")

QString asOneLine(QString text, QChar replacement)
{
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control)
            character = replacement;
    }
    return text;
}

void systemLog(const QString& text)
{
    qCWarning(systemLogCategory).noquote() << asOneLine(text, u' ');
}

void systemLogError(const QString& operation, const std::exception& error)
{
    systemLog(u"Error in (%1) : %2"_s.arg(operation, QString::fromUtf8(error.what())));
}

} // namespace pagestack
