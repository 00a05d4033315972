#include "mainwindow/settings/SettingsPane.h"

#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "mainwindow/desktop/Services.h"
#include "mainwindow/settings/NameExample.h"
#include "mainwindow/settings/PresetMenu.h"
#include "mainwindow/settings/RecentFolders.h"
#include "mainwindow/settings/RunChoices.h"
#include "mainwindow/widgets/FileChooser.h"
#include "ui_SettingsPane.h"

#include <QEvent>
#include <QMenu>

#include <algorithm>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // Number fields are marked by these tags, the dynamic property "tag".
    constexpr int atLeastTwoTag = 30001;
    constexpr int atLeastOneTag = 30002;

    /// `control` shows a field of `settings` by `show` and changes it by its signal `edited`.
    template <typename Control, typename Show, typename Edited, typename Get, typename Value>
    void bindControl(Control* control, Show show, Edited edited, Settings& settings, Get get,
                     void (Settings::*set)(Value), void (Settings::*changed)(Value))
    {
        (control->*show)((settings.*get)());
        QObject::connect(control, edited, &settings, set);
        QObject::connect(&settings, changed, control, show);
    }

} // namespace

SettingsPane::SettingsPane(QWidget* parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::SettingsPane>())
{
    m_ui->setupUi(this);
    connect(m_ui->helpHyperlink, &QPushButton::clicked, this, &SettingsPane::helpRequested);
    colourLink();
    connect(m_ui->restoreDefaultsBtn, &QPushButton::clicked, this, &SettingsPane::restoreDefaults);
}

SettingsPane::~SettingsPane() = default;

void SettingsPane::bind(Settings& settings, const Services& services)
{
    m_settings = &settings;
    m_services = &services;
    m_choices = std::make_unique<RunChoices>(settings, services.defaults);
    m_presets = std::make_unique<PresetMenu>(*m_ui->presetsBtn, *m_choices, services, [this] {
        commitFields();
        return commitChoices();
    });
    connect(m_presets.get(), &PresetMenu::presetTaken, m_ui->moreTab, &MoreTab::forgetFaults);
    auto* recent = new QMenu(m_ui->recentFoldersBtn);
    m_ui->recentFoldersBtn->setMenu(recent);
    m_recent = std::make_unique<RecentFolders>(services.defaults, u"RECENTOUTPUTFOLDERS"_s, *recent,
                                               [&settings](QAction& item, const QString& folder) {
                                                   item.setCheckable(true);
                                                   item.setChecked(folder
                                                                   == settings.outputFolderPath());
                                               });
    connect(m_recent.get(), &RecentFolders::chosen, &settings, &Settings::setOutputFolderPath);
    m_ui->recentFoldersBtn->setEnabled(recent->menuAction()->isEnabled());
    connect(recent->menuAction(), &QAction::enabledChanged, m_ui->recentFoldersBtn,
            &QWidget::setEnabled);
    m_ui->moreTab->bind(*m_choices, [this](const ConversionOptionRow& row) -> QGridLayout* {
        if (row.name == u"mirror")
            return m_ui->folderOptions;
        if (row.name == u"digits" || row.name == u"name")
            return m_ui->fileNameLayout;
        if (row.section == conversionOption(u"srgb"_s)->section)
            return m_ui->coloursLayout;
        return nullptr;
    });
    alignLabels();
    const auto bindPopup = [&](QComboBox* popup, auto get, auto set, auto changed) {
        bindControl(popup, &QComboBox::setCurrentIndex, &QComboBox::activated, settings, get, set,
                    changed);
    };
    const auto bindCheck = [&](QCheckBox* box, auto get, auto set, auto changed) {
        bindControl(box, &QCheckBox::setChecked, &QCheckBox::toggled, settings, get, set, changed);
    };
    bindPopup(m_ui->outputType, &Settings::outputType, &Settings::setOutputType,
              &Settings::outputTypeChanged);
    bindPopup(m_ui->tiffCompressionPopup, &Settings::tiffCompressionIndex,
              &Settings::setTiffCompressionIndex, &Settings::tiffCompressionIndexChanged);
    bindControl(m_ui->jpegQualitySlider, &QSlider::setValue, &QSlider::valueChanged, settings,
                &Settings::jpegQuality, &Settings::setJpegQuality, &Settings::jpegQualityChanged);
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
    m_ui->fileNameSeparatorText->setText(settings.separator());
    m_ui->outputFolderPath->setText(settings.outputFolderPath());
    connect(&settings, &Settings::separatorChanged, m_ui->fileNameSeparatorText,
            &QLineEdit::setText);
    connect(&settings, &Settings::separatorChanged, m_ui->moreTab, &MoreTab::follow);
    connect(&settings, &Settings::outputFolderPathChanged, m_ui->moreTab, &MoreTab::follow);
    connect(&settings, &Settings::outputFolderPathChanged, m_ui->outputFolderPath,
            &QLineEdit::setText);
    for (QLineEdit* field : { m_ui->fileNameSeparatorText, m_ui->outputFolderPath }) {
        connect(field, &QLineEdit::editingFinished, this, &SettingsPane::commitFields);
        connect(field, &QLineEdit::textEdited, this, [field] { controlTextDidChange(field); });
    }
    connect(m_ui->chooseOutputFolderBtn, &QPushButton::clicked, this,
            &SettingsPane::chooseOutputFolder);
    connect(&settings, &Settings::outputFolderPathChanged, this, &SettingsPane::followSettings);
    connect(&settings, &Settings::jpegQualityChanged, this, &SettingsPane::followSettings);
}

void SettingsPane::showExampleOf(const FileList& files, const QAbstractItemModel& model)
{
    m_example = std::make_unique<NameExample>(*m_ui->outputExampleLabel, files, model, *m_settings,
                                              *m_choices);
}

/// The boxes of the formats are laid out one by one; their fields begin at one edge.
void SettingsPane::alignLabels()
{
    QList<QWidget*> labels;
    for (const QGridLayout* grid : { m_ui->formatLayout, m_ui->jpegLayout, m_ui->tiffLayout,
                                     m_ui->fileNameLayout, m_ui->coloursLayout }) {
        for (int row = 0; row < grid->rowCount(); ++row) {
            const QLayoutItem* first = grid->itemAtPosition(row, 0);
            if (first != nullptr && first != grid->itemAtPosition(row, 1))
                labels.append(first->widget());
        }
    }
    labels.removeAll(nullptr);
    int width = 0;
    for (const QWidget* label : labels)
        width = std::max(width, label->sizeHint().width());
    for (QWidget* label : labels)
        label->setMinimumWidth(width);
    // One width for all formats, whichever is shown.
    const QMargins margins = m_ui->formatTabLayout->contentsMargins();
    for (const QLayout* box : std::initializer_list<const QLayout*> {
             m_ui->jpegLayout, m_ui->tiffLayout, m_ui->fileNameLayout, m_ui->coloursLayout })
        width = std::max(width, box->minimumSize().width());
    m_ui->formatPage->setMinimumWidth(width + margins.left() + margins.right());
}

void SettingsPane::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LanguageChange)
        alignLabels();
    else if (event->type() == QEvent::PaletteChange)
        colourLink();
}

void SettingsPane::colourLink()
{
    QPalette colours; // the others stay those of the window
    for (const auto group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled })
        colours.setColor(group, QPalette::ButtonText, palette().color(group, QPalette::Link));
    m_ui->helpHyperlink->setPalette(colours);
}

void SettingsPane::restoreDefaults()
{
    m_services->ask(window(), AlertPanel::Style::Informational,
                    tr("Set the options of all tabs to their defaults? The output folder stays."),
                    { tr("Restore Defaults"), tr("Cancel") }, [this](int button) {
                        if (button != 0)
                            return;
                        ConversionOptions options;
                        options.run.writesRecord = true; // as at the first start
                        m_choices->setAll(options);
                        m_ui->moreTab->forgetFaults();
                        m_services->synchronize(window());
                    });
}

void SettingsPane::setSplitOptions()
{
    const auto type = static_cast<OutputType>(m_settings->outputType());
    const bool isTiff = type == OutputType::Tiff;
    m_ui->formatNote->setVisible(type == OutputType::Bmp || type == OutputType::Gif);
    m_ui->jpegBox->setVisible(type == OutputType::Jpeg);
    m_ui->tiffBox->setVisible(isTiff);
    m_ui->jpegQualitySlider->setEnabled(type == OutputType::Jpeg);
    m_ui->splitTiffCheckbox->setEnabled(isTiff);
    m_ui->tiffCompressionPopup->setEnabled(isTiff);
    const bool hasSeparator = !isTiff || m_settings->isSplitTIFFIntoSinglePages();
    m_ui->fileNameSeparatorLabel->setEnabled(hasSeparator);
    m_ui->fileNameSeparatorText->setEnabled(hasSeparator);
    m_ui->moreTab->follow();
}

void SettingsPane::followSettings()
{
    const bool hasFolder = !m_settings->outputFolderPath().isEmpty();
    if (!hasFolder)
        m_settings->setIsSetCurrentAsDefaultOutputFolderPath(false);
    m_ui->setCurrentAsDefaultOutputFolderPathBtn->setEnabled(hasFolder);
    m_ui->openFolderAfterConversionBtn->setEnabled(hasFolder);
    // Steps 9 and 10 both read 100 %.
    const int step = m_settings->jpegQuality();
    const int percent = step == 10 ? 2 * (5 * step) : 2 * (5 * step + 5);
    m_ui->qualityText->setText(u"%1%"_s.arg(percent));
}

void SettingsPane::commitFields()
{
    m_settings->setSeparator(m_ui->fileNameSeparatorText->text());
    m_settings->setOutputFolderPath(m_ui->outputFolderPath->text());
}

QString SettingsPane::commitChoices()
{
    QString fault = m_ui->moreTab->commit();
    QWidget* control = m_ui->moreTab->faultyControl();
    for (int tab = 0; control != nullptr && tab < m_ui->settingTabView->count(); ++tab)
        if (m_ui->settingTabView->widget(tab)->isAncestorOf(control))
            m_ui->settingTabView->setCurrentIndex(tab);
    if (control != nullptr)
        control->setFocus();
    return fault;
}

void SettingsPane::endEditing()
{
    commitFields();
    if (auto* field = qobject_cast<QLineEdit*>(window()->focusWidget()))
        field->deselect();
}

void SettingsPane::chooseOutputFolder()
{
    m_services->chooser.chooseFolder(window(), tr("Select Output Folder:"),
                                     [this](const QList<QUrl>& urls) {
                                         if (urls.isEmpty())
                                             return;
                                         m_settings->setOutputFolderPath(urls.last().toLocalFile());
                                         rememberOutputFolder();
                                         m_settings->synchronize();
                                         m_services->tellTroubles(window());
                                     });
}

void SettingsPane::rememberOutputFolder()
{
    if (const QString folder = m_settings->outputFolderPath(); !folder.isEmpty())
        m_recent->note({ folder });
}

void SettingsPane::showFormat() { m_ui->settingTabView->setCurrentWidget(m_ui->formatTab); }

void SettingsPane::takeKeys()
{
    showFormat();
    m_ui->outputType->setFocus();
}

void SettingsPane::showOutputFolder()
{
    m_ui->settingTabView->setCurrentWidget(m_ui->folderTab);
    // What follows the folder's field takes the keys.
    m_ui->outputFolderPath->nextInFocusChain()->setFocus();
}

QString SettingsPane::filteredNumber(const QString& text, const QString& fallback)
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

void SettingsPane::controlTextDidChange(QLineEdit* field)
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
