#include "engine/settings/UserDefaults.h"
#include "engine/support/Info.h"
#include "engine/support/Signals.h"
#include "mainwindow/Languages.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/ProgramText.h"
#include "mainwindow/desktop/DesktopWorkspace.h"
#include "mainwindow/desktop/SingleInstance.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/FileChooser.h"
#include "mainwindow/widgets/SymbolicIcon.h"

#include <QApplication>

#include <cstdio>

#include <csignal>
#include <optional>

namespace {

bool print(const QString& text)
{
    return std::fputs(text.toLocal8Bit().constData(), stdout) >= 0 && std::fflush(stdout) == 0;
}

} // namespace

int main(int argc, char* argv[])
{
    using namespace pagestack;

    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (const auto text = programText(arguments)) // before the display is looked for
        return print(*text) ? 0 : 1;
    // A file that grows past the limit of the process is a write that fails, and no end of it.
    std::signal(SIGXFSZ, SIG_IGN);
    QApplication application(argc, argv);
    QApplication::setApplicationName(displayName.toString());
    QApplication::setApplicationVersion(version.toString());
    installTranslations();
    QApplication::setWindowIcon(applicationIcon());
    QApplication::setQuitOnLastWindowClosed(false); // the controller ends the program
    const ProgramArguments given = programArguments(QCoreApplication::arguments());
    std::optional<SingleInstance> instance;
    if (!given.wantsNewWindow) {
        instance.emplace();
        if (instance->handOver(fileURLs(given.paths)))
            return 0;
    }
    UserDefaults defaults;
    DesktopWorkspace workspace;
    AlertPanel alerts;
    FileChooser chooser;
    PagestackAppDelegate controller({ defaults, workspace, alerts, chooser });
    QObject::connect(&controller, &PagestackAppDelegate::readyToTerminate, &controller,
                     &PagestackAppDelegate::quitAction, Qt::QueuedConnection);
    // As by the menu, but without a question: a run ends at its next check point, its log and the
    // settings are written.
    const Signals terminationSignals;
    QObject::connect(&terminationSignals, &Signals::interrupted, &controller,
                     &PagestackAppDelegate::quitUnasked);
    controller.awakeFromNib();
    if (instance) {
        instance->setIsEnding([&controller] { return controller.isEnding(); });
        QObject::connect(&*instance, &SingleInstance::opened, &controller,
                         &PagestackAppDelegate::openFromOutside);
    }
    controller.openPaths(given.paths);
    const int code = QApplication::exec();
    return Signals::received() != 0 ? 128 + Signals::received() : code;
}
