#include "engine/settings/OutputCodes.h"
#include "engine/support/SystemLog.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/widgets/FileChooser.h"
#include "ui_MainWindow.h"

#include <QActionGroup>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // Number fields are marked by these tags, the dynamic property "tag".
    constexpr int atLeastTwoTag = 30001;
    constexpr int atLeastOneTag = 30002;

} // namespace

void PagestackAppDelegate::connectSettingsPane()
{
    auto* group = new QActionGroup(this);
    group->addAction(m_ui->preferencesToolbarItem);
    group->addAction(m_ui->dummyToolbarItem);
    bindSettings();
    for (QLineEdit* field : m_window->findChildren<QLineEdit*>()) {
        field->installEventFilter(this);
        connect(field, &QLineEdit::textEdited, this,
                [this, field] { controlTextDidChange(field); });
    }
    connect(m_ui->chooseOutputFolderBtn, &QPushButton::clicked, this,
            &PagestackAppDelegate::chooseOutputFolder);
}

/// Each control edits one field of the record and follows it.
void PagestackAppDelegate::bindSettings()
{
    Settings* record = m_settings.get();
    const auto bindCheck = [&](QAbstractButton* box, bool (Settings::*get)() const,
                               void (Settings::*set)(bool), void (Settings::*changed)(bool)) {
        box->setChecked((record->*get)());
        connect(box, &QAbstractButton::toggled, record, set);
        connect(record, changed, box, &QAbstractButton::setChecked);
    };
    const auto bindPopup = [&](QComboBox* popup, int (Settings::*get)() const,
                               void (Settings::*set)(int), void (Settings::*changed)(int)) {
        popup->setCurrentIndex((record->*get)());
        connect(popup, &QComboBox::activated, record, set);
        connect(record, changed, popup, &QComboBox::setCurrentIndex);
    };
    bindPopup(m_ui->outputType, &Settings::outputType, &Settings::setOutputType,
              &Settings::outputTypeChanged);
    bindPopup(m_ui->tiffCompressionPopup, &Settings::tiffCompressionIndex,
              &Settings::setTiffCompressionIndex, &Settings::tiffCompressionIndexChanged);
    m_ui->jpegQualitySlider->setValue(record->jpegQuality());
    connect(m_ui->jpegQualitySlider, &QSlider::valueChanged, record, &Settings::setJpegQuality);
    connect(record, &Settings::jpegQualityChanged, m_ui->jpegQualitySlider, &QSlider::setValue);
    bindCheck(m_ui->splitTiffCheckbox, &Settings::isSplitTIFFIntoSinglePages,
              &Settings::setIsSplitTIFFIntoSinglePages,
              &Settings::isSplitTIFFIntoSinglePagesChanged);
    bindCheck(m_ui->setCurrentAsDefaultOutputFolderPathBtn,
              &Settings::isSetCurrentAsDefaultOutputFolderPath,
              &Settings::setIsSetCurrentAsDefaultOutputFolderPath,
              &Settings::isSetCurrentAsDefaultOutputFolderPathChanged);
    bindCheck(m_ui->openFolderAfterConversionBtn, &Settings::isOpenFolderAfterConversion,
              &Settings::setIsOpenFolderAfterConversion,
              &Settings::isOpenFolderAfterConversionChanged);
    bindCheck(m_ui->clearProcessedFilesBtn, &Settings::isClearProcessedFiles,
              &Settings::setIsClearProcessedFiles, &Settings::isClearProcessedFilesChanged);
    m_ui->fileNameSeparatorText->setText(record->separator());
    connect(record, &Settings::separatorChanged, m_ui->fileNameSeparatorText, &QLineEdit::setText);
    m_ui->outputFolderPath->setText(record->outputFolderPath());
    connect(record, &Settings::outputFolderPathChanged, m_ui->outputFolderPath,
            &QLineEdit::setText);
    for (QLineEdit* field : { m_ui->fileNameSeparatorText, m_ui->outputFolderPath })
        connect(field, &QLineEdit::editingFinished, this,
                &PagestackAppDelegate::commitSettingsFields);
}

void PagestackAppDelegate::observeSettings()
{
    const auto applyType = [this] { setSplitOptions(m_settings->outputType()); };
    connect(m_settings.get(), &Settings::outputTypeChanged, this, applyType);
    connect(m_settings.get(), &Settings::isSplitTIFFIntoSinglePagesChanged, this, applyType);
    connect(m_settings.get(), &Settings::outputFolderPathChanged, this,
            &PagestackAppDelegate::followOutputFolder);
    connect(m_settings.get(), &Settings::jpegQualityChanged, this,
            &PagestackAppDelegate::showQuality);
}

void PagestackAppDelegate::followOutputFolder()
{
    const bool hasFolder = !m_settings->outputFolderPath().isEmpty();
    if (!hasFolder)
        m_settings->setIsSetCurrentAsDefaultOutputFolderPath(false);
    m_ui->setCurrentAsDefaultOutputFolderPathBtn->setEnabled(hasFolder);
    m_ui->openFolderAfterConversionBtn->setEnabled(hasFolder);
}

void PagestackAppDelegate::showQuality()
{
    // Steps 9 and 10 both read 100 %.
    const int step = m_settings->jpegQuality();
    const int percent = step == 10 ? 2 * (5 * step) : 2 * (5 * step + 5);
    m_ui->qualityText->setText(u"%1%"_s.arg(percent));
}

/// What is typed into the fields of the record but not taken over yet.
void PagestackAppDelegate::commitSettingsFields()
{
    m_settings->setSeparator(m_ui->fileNameSeparatorText->text());
    m_settings->setOutputFolderPath(m_ui->outputFolderPath->text());
}

void PagestackAppDelegate::endEditing()
{
    commitSettingsFields();
    if (auto* field = qobject_cast<QLineEdit*>(m_window->focusWidget()))
        field->deselect();
}

void PagestackAppDelegate::showSettings(bool show)
{
    try {
        (show ? m_ui->preferencesToolbarItem : m_ui->dummyToolbarItem)->setChecked(true);
        m_ui->toggleSettingsAction->setChecked(show);
        m_ui->rightBox->setVisible(show);
    } catch (const std::exception& error) {
        systemLogError(u"showSettings:"_s, error);
    }
}

void PagestackAppDelegate::setSplitOptions(int)
{
    try {
        const auto type = static_cast<OutputType>(m_settings->outputType());
        const bool isTiff = type == OutputType::Tiff;
        m_ui->jpegQualitySlider->setEnabled(type == OutputType::Jpeg);
        m_ui->splitTiffCheckbox->setEnabled(isTiff);
        m_ui->tiffCompressionPopup->setEnabled(isTiff);
        const bool hasSeparator = !isTiff || m_settings->isSplitTIFFIntoSinglePages();
        m_ui->fileNameSeparatorLabel->setEnabled(hasSeparator);
        m_ui->fileNameSeparatorText->setEnabled(hasSeparator);
    } catch (const std::exception& error) {
        systemLogError(u"setSplitOptions:"_s, error);
    }
    updateTotalLabel();
}

void PagestackAppDelegate::chooseOutputFolder()
{
    m_services.chooser.chooseFolder(m_window.get(), tr("Select Output Folder:"),
                                    [this](const QList<QUrl>& urls) {
                                        if (urls.isEmpty())
                                            return;
                                        m_settings->setOutputFolderPath(urls.last().toLocalFile());
                                        m_settings->synchronize();
                                        tellSettingsTroubles();
                                    });
}

QString PagestackAppDelegate::filteredNumber(const QString& text, const QString& fallback)
{
    const auto isDigit = [](QChar sign) { return sign.isDigit(); };
    const auto first = std::find_if(text.begin(), text.end(), isDigit);
    const auto last = std::find_if(text.rbegin(), text.rend(), isDigit).base();
    if (first >= last)
        return fallback;
    const QString trimmed(first, last - first);
    // As a number reads up to its first other sign: "1a2" is 1.
    const auto end = std::find_if_not(trimmed.begin(), trimmed.end(), isDigit);
    const bool isZero
        = std::all_of(trimmed.begin(), end, [](QChar sign) { return sign.digitValue() == 0; });
    return isZero ? fallback : trimmed;
}

void PagestackAppDelegate::controlTextDidChange(QLineEdit* field)
{
    const int tag = field->property("tag").toInt();
    if (tag != atLeastTwoTag && tag != atLeastOneTag)
        return;
    const QString filtered = filteredNumber(field->text(), tag == atLeastTwoTag ? u"2"_s : u"1"_s);
    if (filtered != field->text())
        field->setText(filtered);
    field->setFocus();
}

} // namespace pagestack
