#include "mainwindow/run/OutputFolderCheck.h"

#include "engine/settings/Settings.h"
#include "engine/support/Paths.h"
#include "mainwindow/desktop/Services.h"

#include <QDir>
#include <QFileInfo>
#include <QMainWindow>

namespace pagestack {

OutputFolderCheck::OutputFolderCheck(const WindowParts& parts, const Settings& settings)
    : m_parts(parts)
    , m_settings(settings)
{
}

void OutputFolderCheck::check(const std::function<void()>& goOn)
{
    const QString folder = m_settings.outputFolderPath();
    if (folder.isEmpty())
        m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical,
                             tr("No output folder selected, file(s) will be saved in source "
                                "folder.\nDo you want to continue?"),
                             { tr("Yes"), tr("No") }, [this, goOn](int button) {
                                 if (button == 0)
                                     goOn();
                                 else
                                     emit folderWanted();
                             });
    else if (!QFileInfo::exists(folder))
        refuseMissing(goOn);
    else if (!QFileInfo(folder).isWritable())
        refuse(tr("Output folder is non-writable!\r\nPlease select writable output folder."));
    else
        goOn();
}

/// It can be made where there is one to make it in.
void OutputFolderCheck::refuseMissing(const std::function<void()>& goOn)
{
    const QString text
        = tr("Output folder missing or invalid path!\r\nPlease select valid output folder.");
    const QString folder = m_settings.outputFolderPath();
    if (!QFileInfo(folder).isAbsolute() || !QFileInfo(folderPart(folder)).isDir())
        return refuse(text);
    m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical, text,
                         { tr("Create Folder"), tr("Cancel") }, [this, folder, goOn](int button) {
                             if (button != 0 || !QDir().mkdir(folder))
                                 emit folderWanted();
                             else
                                 check(goOn);
                         });
}

void OutputFolderCheck::refuse(const QString& text)
{
    m_parts.services.ask(&m_parts.window, AlertPanel::Style::Critical, text, {},
                         [this](int) { emit folderWanted(); });
}

} // namespace pagestack
