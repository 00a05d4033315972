#include "mainwindow/PagestackAppDelegate.h"

#include "engine/image/CodecVersions.h"
#include "engine/settings/UserDefaults.h"
#include "engine/support/Application.h"
#include "engine/support/SystemLog.h"
#include "engine/support/Workspace.h"
#include "filelist/FileTableModel.h"
#include "filelist/ListEditor.h"
#include "mainwindow/desktop/ApplicationEvents.h"
#include "mainwindow/list/FindControl.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/AlertPanel.h"
#include "mainwindow/widgets/KeyLetter.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "ui_MainWindow.h"

#include <QMenu>
#include <QMenuBar>
#include <QUrl>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// The product's page, opened by Help > Pagestack on the Web.
    const QString productPage = u"https://pagestack.example/"_s;

    const QString productName = u"Pagestack"_s;
    const QString showSettingsKey = u"SHOWSETTINGS"_s;

    /// Puts the application's title in place of the product name in the titles of `menu` that
    /// `concerns` names.
    template <typename Concerns>
    void renameItems(QMenu* menu, Concerns concerns)
    {
        if (menu == nullptr)
            return;
        for (QAction* item : menu->actions())
            if (concerns(item->text()))
                item->setText(item->text().replace(productName, getAppTitle(u""_s)));
    }

} // namespace

PagestackAppDelegate::PagestackAppDelegate(const Services& services, QObject* parent)
    : QObject(parent)
    , m_services(services)
    , m_window(std::make_unique<QMainWindow>())
    , m_ui(std::make_unique<Ui::MainWindow>())
    , m_tableModel(std::make_unique<FileTableModel>(m_files, services.readDates))
    , m_editor(std::make_unique<ListEditor>(*m_tableModel))
{
    m_ui->setupUi(m_window.get());
    m_find = std::make_unique<FindControl>(*m_ui, m_files);
    m_ui->lableDragAndDrop->setAttribute(Qt::WA_TransparentForMouseEvents);
    QSizePolicy keepingItsPlace = m_ui->loadingIndicator->sizePolicy();
    keepingItsPlace.setRetainSizeWhenHidden(true);
    m_ui->loadingIndicator->setSizePolicy(keepingItsPlace);
    m_processViewPanel = std::make_unique<ProcessPanel>(m_window.get());
    m_window->installEventFilter(this);
    m_applicationEvents = std::make_unique<ApplicationEvents>(
        [this] { return mayQuit(); },
        [this](bool hasVisibleWindows) { applicationShouldHandleReopen(hasVisibleWindows); });
    applySymbolicIcons(*m_window);
}

PagestackAppDelegate::~PagestackAppDelegate()
{
    m_applicationEvents.reset();
    m_window->removeEventFilter(this);
    m_isTerminating = true; // a load that is about to start sees it
    cancelAction();
    cancelProcessAction();
    finishWorker();
    m_processViewPanel->stopFollowing();
    m_ui->mainTableView->setModel(nullptr);
}

void PagestackAppDelegate::awakeFromNib()
{
    m_window->setWindowTitle(getAppTitle(QString()));
    if (createApplicationUsersFolder(u""_s, nullptr))
        createApplicationUsersFolder(u"Logs"_s, nullptr);
    m_tableModel->clear();
    m_ui->mainTableView->setModel(m_tableModel.get());
    m_settings = std::make_unique<Settings>(&m_services.defaults);
    setIsProcessing(false);
    m_process = std::make_unique<Process>(&m_services.workspace);
    connectControls();
    setSplitOptions(m_settings->outputType());
    const QVariant shown = m_services.defaults.objectForKey(showSettingsKey);
    m_showSettings = shown.isValid() ? shown.toBool() : true;
    if (!shown.isValid())
        m_services.defaults.setBool(showSettingsKey, true);
    showSettings(m_showSettings);
    markTheKeyLetters();
    m_ui->settingTabView->setCurrentIndex(0);
    resetView(true);
    observeSettings();
    setupVersion();
    setupToolbarAndMenuItems();
    restoreWindowState();
    openAppAction();
    tellSettingsTroubles();
}

void PagestackAppDelegate::tellSettingsTroubles()
{
    const QStringList troubles = m_services.defaults.takeTroubles();
    if (!troubles.isEmpty())
        m_services.alerts.ask(m_window.get(), AlertPanel::Style::Critical, getAppTitle(u""_s),
                              troubles.join(u'\n'), {}, {});
}

void PagestackAppDelegate::markTheKeyLetters()
{
    const QColor color = m_window->palette().color(QPalette::ButtonText);
    const std::pair<QAbstractButton*, const char*> letters[] = {
        { m_ui->removeBtn, "r" },
        { m_ui->importBtn, "i" },
        { m_ui->addFilesBtn, "f" },
        { m_ui->addFolderBtn, "o" },
        { m_ui->inculdeSubfoldersBtn, "u" },
        { m_ui->convertBtn, "s" },
        { m_ui->setCurrentAsDefaultOutputFolderPathBtn, "d" },
        { m_ui->openFolderAfterConversionBtn, "p" },
        { m_processViewPanel->viewLogBtn(), "l" },
        { m_processViewPanel->cancelProcessBtn(), "c" },
    };
    for (const auto& [button, letter] : letters)
        setButtonKeyCharacter(button, QString::fromLatin1(letter), color);
}

void PagestackAppDelegate::setButtonKeyCharacter(QAbstractButton* button, const QString& keyChar,
                                                 const QColor& color)
{
    try {
        setKeyLetter(button, keyChar, color);
    } catch (const std::exception& error) {
        systemLogError(u"setButtonKeyCharacter:keyChar:color:"_s, error);
    }
}

void PagestackAppDelegate::setupVersion()
{
    const QList<QAction*> items = m_window->menuBar()->actions();
    if (items.isEmpty())
        return;
    const auto beginsWithName = [](const QString& title) { return title.startsWith(productName); };
    renameItems(items.first()->menu(),
                [](const QString& title) { return title.endsWith(productName); });
    for (const QAction* item : items)
        if (item->text() == u"Window"_s)
            renameItems(item->menu(), beginsWithName);
    renameItems(items.last()->menu(), beginsWithName);
}

void PagestackAppDelegate::setupToolbarAndMenuItems()
{
    m_ui->mainToolBar->setMovable(false);
    m_ui->mainToolBar->setContextMenuPolicy(Qt::PreventContextMenu);
    m_window->setContextMenuPolicy(Qt::NoContextMenu);
}

void PagestackAppDelegate::searchAction()
{
    endEditing();
    m_find->begin();
}

void PagestackAppDelegate::scrollToRow(int row)
{
    m_ui->mainTableView->scrollTo(m_tableModel->index(row, FileTableModel::Name));
}

void PagestackAppDelegate::openAppAction()
{
    // Not showNormal(), which would forget that the window was maximized.
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void PagestackAppDelegate::websiteAction() { m_services.workspace.openURL(QUrl(productPage)); }

void PagestackAppDelegate::helpAction()
{
    try {
        const QString guide = pathForResource(u"MACPagestack1"_s, u"pdf"_s);
        m_services.workspace.openURL(QUrl::fromLocalFile(guide));
    } catch (const std::exception& error) {
        systemLog(u"Error in [helpAction:] : "_s + QString::fromUtf8(error.what()));
    }
}

void PagestackAppDelegate::aboutAction()
{
    m_services.alerts.ask(
        m_window.get(), AlertPanel::Style::Informational, getAppTitle(u""_s),
        tr("Pagestack %1 turns TIFF files into images.\n\n%2")
            .arg(QCoreApplication::applicationVersion(), codecVersions().join(u"\n"_s)),
        {}, {});
}

void PagestackAppDelegate::toggleSettings()
{
    m_showSettings = !m_showSettings;
    m_services.defaults.setBool(showSettingsKey, m_showSettings);
    m_services.defaults.synchronize();
    showSettings(m_showSettings);
    tellSettingsTroubles();
}

void PagestackAppDelegate::connectControls()
{
    connectTable();
    connectListCommands();
    connectSettingsPane();
    connectMenus();
    connect(m_ui->addFilesBtn, &QPushButton::clicked, this, &PagestackAppDelegate::addFiles);
    connect(m_ui->addFolderBtn, &QPushButton::clicked, this, &PagestackAppDelegate::addFolder);
    connect(m_ui->importBtn, &QPushButton::clicked, this, &PagestackAppDelegate::importAction);
    connect(m_ui->searchBtn, &QToolButton::clicked, this, &PagestackAppDelegate::searchAction);
    m_ui->inculdeSubfoldersBtn->setChecked(inculdeSubfolders());
    connect(m_ui->inculdeSubfoldersBtn, &QCheckBox::toggled, this,
            &PagestackAppDelegate::setInculdeSubfolders);
    connect(m_ui->convertBtn, &QPushButton::clicked, this, &PagestackAppDelegate::convertAction);
    connect(m_ui->cancelBtn, &QPushButton::clicked, this, &PagestackAppDelegate::cancelAction);
    connect(m_processViewPanel.get(), &ProcessPanel::viewLogRequested, this,
            &PagestackAppDelegate::viewLogAction);
    connect(m_processViewPanel.get(), &ProcessPanel::cancelRequested, this,
            &PagestackAppDelegate::cancelProcessAction);
    connect(m_processViewPanel.get(), &ProcessPanel::closeRequested, this,
            &PagestackAppDelegate::closeProcessAction);
}

void PagestackAppDelegate::setIsProcessing(bool isProcessing)
{
    if (m_isProcessing.exchange(isProcessing) == isProcessing)
        return;
    emit isProcessingChanged(isProcessing);
}

void PagestackAppDelegate::setProcessingLabelColor(const QColor& color)
{
    m_processingLabelColor = color;
    for (QLabel* label :
         { m_ui->labelTotalFiles, m_ui->labelTotalTIFFPages, m_ui->labelTimeTaken }) {
        QPalette palette; // the other colours stay those of the window
        palette.setColor(QPalette::WindowText, color);
        label->setPalette(palette);
    }
    emit processingLabelColorChanged(color);
}

void PagestackAppDelegate::followPalette()
{
    setProcessingLabelColor(m_window->palette().color(m_labelGroup, QPalette::WindowText));
}

} // namespace pagestack
