#include "engine/support/SystemLog.h"
#include "engine/sources/AllowedFileTypes.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "ui_MainWindow.h"

namespace pagestack {

using namespace Qt::StringLiterals;

void PagestackAppDelegate::importAction()
{
    endEditing();
    openImportFilesPanel();
}

void PagestackAppDelegate::openImportFilesPanel()
{
    try {
        if (m_importPanel == nullptr) {
            m_importPanel = new ImportFilesWindowController(m_window.get(), m_services.alerts,
                                                            m_services.chooser);
            m_importPanel->setDelegate(this);
            m_importPanel->setAllowedTypes(allowedFileTypes().join(u','));
        }
        m_importPanel->resetView();
        m_importPanel->open();
    } catch (const std::exception& error) {
        systemLogError(u"openImportFilesPanel"_s, error);
    }
}

void PagestackAppDelegate::ImportFilesWindowControllerDidFinish(ImportFilesWindowController& dialog)
{
    if (!dialog.files().isEmpty())
        startLoading({ dialog.files(), false, m_ui->inculdeSubfoldersBtn->isChecked() });
}

} // namespace pagestack
