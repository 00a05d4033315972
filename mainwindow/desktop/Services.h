#pragma once

#include "filelist/ShownDates.h"
#include "mainwindow/widgets/AlertPanel.h"

class QWidget;

namespace pagestack {

class FileChooser;
class UserDefaults;
class Workspace;

/// What surrounds the window. Nothing is owned; all outlive the controller.
struct Services
{
    UserDefaults& defaults;
    Workspace& workspace;
    AlertPanel& alerts;
    FileChooser& chooser;
    ReadDates readDates = &FileItem::dates; ///< for sorts and for the table

    /// AlertPanel::ask under the title of the application.
    void ask(QWidget* window, AlertPanel::Style style, const QString& text,
             const QStringList& buttons = {}, AlertPanel::Done done = {}) const;
    /// The same with a reason, which is a clause.
    void tell(QWidget* window, const QString& reason) const;
    /// Shows what went wrong with the file of the settings since the last call, if anything.
    void tellTroubles(QWidget* window) const;
    /// Writes the settings that have changed to their file, and shows what went wrong.
    void synchronize(QWidget* window) const;
};

} // namespace pagestack
