#pragma once

#include "engine/support/Pause.h"

#include <QObject>

class QAbstractItemModel;
class QLabel;

namespace pagestack {

class FileList;
class RunChoices;
class Settings;

/// Shows what the first image of the first ticked file will be called by the present options:
/// "scan.tif \u2192 scan1.jpg". Follows the list and the options a moment later. Main thread.
class NameExample : public QObject
{
    Q_OBJECT

public:
    /// All outlive it; `model` is that of `files`.
    NameExample(QLabel& label, const FileList& files, const QAbstractItemModel& model,
                const Settings& settings, const RunChoices& choices);

private:
    void show();
    QString text() const;

    QLabel& m_label;
    const FileList& m_files;
    const Settings& m_settings;
    const RunChoices& m_choices;
    Pause m_pause;
};

} // namespace pagestack
