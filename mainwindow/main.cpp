#include "engine/support/Info.h"
#include "engine/support/Signals.h"
#include "engine/support/UserDefaults.h"
#include "mainwindow/AlertPanel.h"
#include "mainwindow/DesktopWorkspace.h"
#include "mainwindow/FileChooser.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/SymbolicIcon.h"

#include <QApplication>

#include <csignal>

int main(int argc, char* argv[])
{
    using namespace pagestack;

    // A file that grows past the limit of the process is a write that fails, and no end of it.
    std::signal(SIGXFSZ, SIG_IGN);
    QApplication application(argc, argv);
    QApplication::setApplicationName(displayName.toString());
    QApplication::setApplicationVersion(version.toString());
    QApplication::setWindowIcon(applicationIcon());
    QApplication::setQuitOnLastWindowClosed(false); // the controller ends the program
    UserDefaults defaults;
    DesktopWorkspace workspace;
    AlertPanel alerts;
    FileChooser chooser;
    PagestackAppDelegate controller({ defaults, workspace, alerts, chooser });
    QObject::connect(&controller, &PagestackAppDelegate::readyToTerminate, &controller,
                     &PagestackAppDelegate::quitAction, Qt::QueuedConnection);
    // As by the menu: a run ends at its next check point, its log and the settings are written.
    const Signals terminationSignals;
    QObject::connect(&terminationSignals, &Signals::interrupted, &controller,
                     &PagestackAppDelegate::quitAction);
    controller.awakeFromNib();
    controller.openPaths(QCoreApplication::arguments().mid(1));
    const int code = QApplication::exec();
    return Signals::received() != 0 ? 128 + Signals::received() : code;
}
