#include "engine/log/Diagnostic.h"

#include "engine/support/SystemLog.h"

using namespace Qt::StringLiterals;

namespace pagestack {

QString messageText(const Diagnostic& diagnostic, const QString& shownPath)
{
    QString text = shownPath;
    if (diagnostic.page > 0)
        text += u"[%1]"_s.arg(diagnostic.page);
    text += u": "_s;
    if (diagnostic.severity == Diagnostic::Severity::Warning)
        text += u"warning: "_s;
    return text
        + (diagnostic.reason.isEmpty() ? u"failed for an unknown reason"_s : diagnostic.reason);
}

void PageDiagnostics::addLogLine(const QString& line)
{
    // A damaged fax page can give a message a row.
    if (logLines.size() < CodecLog::mostLines)
        logLines.append(line);
}

void CodecLog::write(const QString& fileName, const QStringList& lines)
{
    for (const QString& line : lines)
        if (m_lines < mostLines)
            systemLog(++m_lines < mostLines ? line
                                            : u"%1: further messages are left out"_s.arg(fileName));
}

} // namespace pagestack
