#include "engine/support/Dates.h"
#include "engine/support/SystemLog.h"
#include "filelist/ListExport.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/FileChooser.h"

namespace pagestack {

using namespace Qt::StringLiterals;

void PagestackAppDelegate::exportAction()
{
    endEditing();
    const QString name
        = u"Export %1.txt"_s.arg(getStringFromDateFormat(u"dd-MMM-yyyy hh-mm-ss AP"_s));
    m_services.chooser.chooseSaveFile(m_window.get(),
                                      tr("Export List To Tab Delimited Text File :"), u"txt"_s,
                                      name, [this](const QList<QUrl>& urls) {
                                          if (!urls.isEmpty())
                                              exportTo(urls.first().toLocalFile());
                                      });
}

/// Asks the disk about every file, so it is done beside the window, which is busy meanwhile.
void PagestackAppDelegate::exportTo(const QString& path)
{
    startBusy([this, path, items = m_files.items()] {
        try {
            const QByteArray text = exportText(items, [this] { return isProcessing(); });
            if (!text.isEmpty())
                writeExport(path, text);
        } catch (const std::exception& error) {
            systemLogError(u"export"_s, error);
        }
    });
}

} // namespace pagestack
