#pragma once

#include "mainwindow/state/WindowParts.h"

#include <QObject>
#include <QString>

#include <functional>

namespace pagestack {

class Settings;

/// Asks the user about an output folder that is not set, is missing or cannot be written. Main
/// thread.
class OutputFolderCheck : public QObject
{
    Q_OBJECT

public:
    /// `settings` outlive it.
    OutputFolderCheck(const WindowParts& parts, const Settings& settings);

    /// Calls `goOn` when outputs can go where the settings say, at once or after a question.
    void check(const std::function<void()>& goOn);

signals:
    /// The user is to choose another one.
    void folderWanted();

private:
    void refuse(const QString& text);
    void refuseMissing(const std::function<void()>& goOn);

    const WindowParts m_parts;
    const Settings& m_settings;
};

} // namespace pagestack
