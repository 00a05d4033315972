#include "engine/support/Dates.h"
#include "engine/support/SystemLog.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "ui_MainWindow.h"

namespace pagestack {

using namespace Qt::StringLiterals;

void PagestackAppDelegate::updateTotalLabel()
{
    try {
        m_ui->labelTotalTIFFPages->setText(tr("Total Pages TIFF : %1").arg(m_files.totalPages()));
        updateConvertControls();
        m_ui->labelTotalFiles->setText(
            tr("%1 Total file(s); %2 file selected; Total page count of selected TIFF file(s): %3")
                .arg(m_files.count())
                .arg(m_files.checkedCount())
                .arg(m_files.checkedPages()));
    } catch (const std::exception& error) {
        systemLogError(u"updateTotalLabel:"_s, error);
    }
    updateTimeTakenLabel(QString());
}

/// What is loaded or sorted cannot be converted meanwhile.
void PagestackAppDelegate::updateConvertControls()
{
    const bool canConvert = m_isViewEnabled && m_files.checkedPages() > 0;
    m_ui->convertBtn->setEnabled(canConvert);
    m_ui->convertMenuAction->setEnabled(canConvert);
}

void PagestackAppDelegate::updateTotalPagesLabel()
{
    try {
        m_ui->labelTotalTIFFPages->setText(tr("Total Pages TIFF : %1").arg(m_files.totalPages()));
    } catch (const std::exception& error) {
        systemLog(u"Error in updateTotalPagesLabel : "_s + QString::fromUtf8(error.what()));
    }
}

void PagestackAppDelegate::updateTimeTakenLabel(const QString& text)
{
    try {
        m_ui->labelTimeTaken->setText(text.isNull() ? zeroTotalTimeTakenText() : text);
    } catch (const std::exception& error) {
        systemLogError(u"updateTimeTakenLabel:"_s, error);
    }
}

} // namespace pagestack
