#include "cli/SystemLogLines.h"

#include "cli/Console.h"

#include <QtGlobal>

#include <atomic>

namespace pagestack {

namespace {

    // The framework's message handler is a plain function, so what it needs is here.
    std::atomic<Console*> target = nullptr;
    std::atomic<bool> takesAll = false;

    void takeMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        Console* console = target;
        if (console && (takesAll || type == QtCriticalMsg || type == QtFatalMsg))
            console->trouble(text);
    }

} // namespace

SystemLogLines::SystemLogLines(Console& console)
{
    target = &console;
    takesAll = false;
    qInstallMessageHandler(takeMessage);
}

SystemLogLines::~SystemLogLines()
{
    qInstallMessageHandler(nullptr);
    target = nullptr;
}

void SystemLogLines::setVerbose(bool isVerbose) { takesAll = isVerbose; }

} // namespace pagestack
