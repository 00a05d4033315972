#include "engine/support/SystemLog.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

Q_LOGGING_CATEGORY(systemLogCategory, "pagestack")

namespace {

    thread_local LogHold* currentHold = nullptr;

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

void systemLog(const QString& text)
{
    if (currentHold != nullptr)
        currentHold->hold(text, nullptr);
    else
        qCWarning(systemLogCategory).noquote() << asOneLine(text);
}

void systemLogError(const QString& operation, const std::exception& error)
{
    systemLog(u"Error in (%1) : %2"_s.arg(operation, QString::fromUtf8(error.what())));
}

void systemLog(const QString& text, const std::shared_ptr<LogQuota>& quota)
{
    if (currentHold != nullptr) {
        currentHold->hold(text, quota);
        return;
    }
    if (quota->m_lines >= quota->m_mostLines)
        return;
    ++quota->m_lines;
    systemLog(quota->m_lines == quota->m_mostLines ? quota->m_closing : text);
}

LogHold::LogHold()
    : m_outer(std::exchange(currentHold, this))
{
}

LogHold::~LogHold() { currentHold = m_outer; }

void LogHold::hold(const QString& text, const std::shared_ptr<LogQuota>& quota)
{
    const auto isOfQuota = [&](const HeldLine& line) { return line.quota == quota; };
    if (quota && std::count_if(m_lines.begin(), m_lines.end(), isOfQuota) >= quota->m_mostLines)
        return;
    m_lines.push_back({ text, quota });
}

void writeHeldLines(const HeldLines& lines)
{
    for (const HeldLine& line : lines) {
        if (line.quota)
            systemLog(line.text, line.quota);
        else
            systemLog(line.text);
    }
}

} // namespace pagestack
