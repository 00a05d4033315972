#include "mainwindow/PagestackAppDelegate.h"

#include "engine/settings/UserDefaults.h"
#include "engine/support/Application.h"
#include "filelist/FileTableModel.h"
#include "filelist/ListEditor.h"
#include "mainwindow/ProgramText.h"
#include "mainwindow/desktop/ApplicationEvents.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/state/AppearanceMenu.h"
#include "mainwindow/state/CommandTips.h"
#include "mainwindow/widgets/ReadingOrder.h"
#include "mainwindow/widgets/SymbolicIcon.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString showSettingsKey = u"SHOWSETTINGS"_s;
    const QString windowKey = u"WINDOW"_s;
    constexpr QSize frame(16, 48); // what the desktop may put round a window, generously

    struct KeyLetterOfButton
    {
        const char* letter;
        const char* button;
    };

    QString asText(const QByteArray& state) { return QString::fromLatin1(state.toBase64()); }

    QByteArray asState(const QVariant& text)
    {
        return QByteArray::fromBase64(text.toString().toLatin1());
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
    applySymbolicIcons(*m_window);
    m_window->installEventFilter(this);
    m_ui->mainTableView->setModel(m_tableModel.get());
    m_ui->mainTableView->setContextMenu(m_ui->filesContextMenu);
    m_applicationEvents = std::make_unique<ApplicationEvents>(
        [this] { return mayQuit(); },
        [this](bool hasVisibleWindows) { applicationShouldHandleReopen(hasVisibleWindows); },
        [this](const QUrl& url) { m_incoming->add({ url }); });
}

PagestackAppDelegate::~PagestackAppDelegate()
{
    m_applicationEvents.reset();
    m_window->removeEventFilter(this);
    if (m_worker) {
        m_worker->terminate();
        cancelProcessAction();
        m_worker->finish();
    }
    m_run.reset();
    m_ui->mainTableView->setModel(nullptr);
}

void PagestackAppDelegate::awakeFromNib()
{
    m_window->setWindowTitle(getAppTitle(QString()));
    if (createApplicationUsersFolder(u""_s, nullptr))
        createApplicationUsersFolder(u"Logs"_s, nullptr);
    m_tableModel->clear();
    m_settings = std::make_unique<Settings>(&m_services.defaults);
    pane().bind(*m_settings, m_services);
    m_view = std::make_unique<ViewState>(*m_window, *m_ui, m_files, m_editor->history());
    m_worker = std::make_unique<Worker>(*m_window, *m_view);
    const WindowParts parts { *m_window,     *m_ui,   m_services, m_files,
                              *m_tableModel, *m_view, *m_worker };
    m_list = std::make_unique<ListCommands>(parts, *m_editor);
    m_load = std::make_unique<LoadControl>(parts, *m_list);
    m_run = std::make_unique<RunControl>(parts, *m_settings, *m_list);
    m_preview = std::make_unique<PreviewControl>(parts, *m_settings);
    m_incoming = std::make_unique<IncomingFiles>(
        [this] {
            return m_view->isViewEnabled() && !m_worker->isBusy()
                && QApplication::activeModalWidget() == nullptr;
        },
        [this](const QList<QUrl>& urls) { m_load->openURLs(urls); });
    connect(m_incoming.get(), &IncomingFiles::kept, this, [this](int count) {
        if (m_run->isOpen())
            m_load->tellWaiting(count);
    });
    pane().showExampleOf(m_files, *m_tableModel);
    connectButtons();
    connectMenus();
    setSplitOptions(m_settings->outputType());
    const QVariant shown = m_services.defaults.objectForKey(showSettingsKey);
    if (!shown.isValid())
        m_services.defaults.setBool(showSettingsKey, true);
    showSettings(!shown.isValid() || shown.toBool());
    markTheKeyLetters();
    resetView(true);
    setupVersion();
    setupToolbarAndMenuItems();
    m_preview->restore();
    restoreWindowState();
    if (!pane().isHidden()) // the screen may have become another one
        leaveRoom(*m_ui->previewBox, *m_ui->togglePreviewAction, *m_ui->toggleSettingsAction);
    new AppearanceMenu(*m_ui, m_services.defaults, m_window.get());
    new CommandTips(*m_window, *m_ui, *m_view, m_view.get());
    setTabOrder(controlsAsRead(*m_window));
    m_ui->mainTableView->setFocus(); // not the first button of the tool bar
    openAppAction();
    m_services.tellTroubles(m_window.get());
}

SettingsPane& PagestackAppDelegate::pane() const { return *m_ui->rightBox; }

void PagestackAppDelegate::connectButtons()
{
    using Self = PagestackAppDelegate;
    const auto on = [this](QAbstractButton* button, void (Self::*command)()) {
        connect(button, &QAbstractButton::clicked, this, command);
    };
    on(m_ui->addFilesBtn, &Self::addFiles);
    on(m_ui->addFolderBtn, &Self::addFolder);
    on(m_ui->importBtn, &Self::importAction);
    on(m_ui->searchBtn, &Self::searchAction);
    on(m_ui->removeBtn, &Self::removeAction);
    on(m_ui->moveUpButton, &Self::moveUp);
    on(m_ui->moveDownButton, &Self::moveDown);
    on(m_ui->convertBtn, &Self::convertAction);
    on(m_ui->cancelBtn, &Self::cancelAction);
    for (QAbstractButton* button : { m_ui->selectAllButton, m_ui->deselectAllButton,
                                     m_ui->removeAllFilesButton, m_ui->removeSelectedFilesButton })
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { selectDeselectRemoveAction(button); });

    const CustomTableView* table = m_ui->mainTableView;
    connect(table, &CustomTableView::removeRequested, this, &Self::removeAction);
    connect(table, &CustomTableView::moveUpRequested, m_ui->moveUpButton, &QToolButton::click);
    connect(table, &CustomTableView::moveDownRequested, m_ui->moveDownButton, &QToolButton::click);
    ProcessPanel* sheet = processViewPanel();
    sheet->addAction(m_ui->quitAction); // whose key the sheet would keep from the window
    connect(sheet, &ProcessPanel::viewLogRequested, this, &Self::viewLogAction);
    connect(sheet, &ProcessPanel::cancelRequested, this, &Self::cancelProcessAction);
    connect(sheet, &ProcessPanel::closeRequested, this, &Self::closeProcessAction);

    connect(m_ui->rightBox, &SettingsPane::helpRequested, this, &Self::helpAction);
    connect(m_settings.get(), &Settings::outputTypeChanged, this, &Self::setSplitOptions);
    connect(m_settings.get(), &Settings::isSplitTIFFIntoSinglePagesChanged, this,
            [this] { setSplitOptions(m_settings->outputType()); });
    connect(m_run.get(), &RunControl::outputFolderWanted, this, [this] {
        if (pane().isHidden())
            toggleSettings();
        pane().showOutputFolder();
    });
    connect(m_ui->togglePreviewAction, &QAction::triggered, this, [this] {
        if (!m_ui->previewBox->isHidden())
            leaveRoom(pane(), *m_ui->toggleSettingsAction, *m_ui->togglePreviewAction);
    });
    connect(m_view.get(), &ViewState::isProcessingChanged, this, &Self::isProcessingChanged);
    connect(m_view.get(), &ViewState::processingLabelColorChanged, this,
            &Self::processingLabelColorChanged);
    connect(m_worker.get(), &Worker::readyToTerminate, this, &Self::readyToTerminate);
}

void PagestackAppDelegate::markTheKeyLetters()
{
    const QColor color = m_window->palette().color(QPalette::ButtonText);
    constexpr auto context = "pagestack::KeyLetter";
    // A letter of the button's text in the language of the window; no two in the window are equal.
    const KeyLetterOfButton letters[] = {
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "r", "removeBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "i", "importBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "f", "addFilesBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "o", "addFolderBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "u", "inculdeSubfoldersBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "s", "convertBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "d", "setCurrentAsDefaultOutputFolderPathBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "p", "openFolderAfterConversionBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "l", "viewLogBtn"),
        QT_TRANSLATE_NOOP3("pagestack::KeyLetter", "c", "cancelProcessBtn"),
    };
    for (const auto& [letter, name] : letters)
        setButtonKeyCharacter(m_window->findChild<QAbstractButton*>(QLatin1StringView(name)),
                              QCoreApplication::translate(context, letter, name), color);
}

void PagestackAppDelegate::openAppAction()
{
    // Not showNormal(), which would forget that the window was maximized.
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void PagestackAppDelegate::openPaths(const QStringList& paths)
{
    m_load->openURLs(fileURLs(paths));
}

void PagestackAppDelegate::openFromOutside(const QList<QUrl>& urls)
{
    openAppAction();
    m_incoming->add(urls);
}

bool PagestackAppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (hasVisibleWindows && m_window->isVisible())
        return false;
    openAppAction();
    return true;
}

bool PagestackAppDelegate::applicationShouldTerminate()
{
    pane().endEditing();
    m_settings->synchronize();
    saveWindowState();
    if (!m_worker->isBusy())
        return true;
    m_worker->terminate();
    cancelProcessAction();
    return false;
}

/// From the first yes on the window may close, as quitting makes it do. A run is not ended unasked.
bool PagestackAppDelegate::mayQuit()
{
    if (!m_hasQuit && m_run->isUnderWay() && !m_worker->isTerminating()) {
        m_run->askBeforeItEnds([this] { quitUnasked(); });
        return false;
    }
    m_hasQuit = m_hasQuit || applicationShouldTerminate();
    return m_hasQuit;
}

void PagestackAppDelegate::quitAction()
{
    if (mayQuit())
        QCoreApplication::quit();
}

void PagestackAppDelegate::quitUnasked()
{
    m_hasQuit = m_hasQuit || applicationShouldTerminate();
    if (m_hasQuit)
        QCoreApplication::quit();
}

/// Closing the window ends the program, but not before the load or run under way has ended, or
/// hides the window.
bool PagestackAppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Close && !m_hasQuit) {
        event->ignore();
        if (m_endsWithWindow)
            quitAction();
        else
            m_window->hide();
        return true;
    }
    // A click beside a sheet would leave the keys with a window that takes none.
    if (QWidget* sheet = sheetInFront();
        event->type() == QEvent::WindowActivate && sheet != nullptr && sheet->isVisible())
        QMetaObject::invokeMethod(sheet, &QWidget::activateWindow, Qt::QueuedConnection);
    if (event->type() == QEvent::PaletteChange && m_view)
        m_view->followPalette();
    return QObject::eventFilter(watched, event);
}

/// That of a run is not modal; a question is in front of it.
QWidget* PagestackAppDelegate::sheetInFront() const
{
    QWidget* modal = QApplication::activeModalWidget();
    return modal == nullptr && m_run ? processViewPanel() : modal;
}

void PagestackAppDelegate::saveWindowState()
{
    m_services.defaults.setObject(
        windowKey,
        QVariantMap { { u"geometry"_s, asText(m_window->saveGeometry()) },
                      { u"sides"_s, asText(m_ui->mainSplitView->saveState()) },
                      { u"columns"_s, asText(m_ui->mainTableView->saveColumns()) } });
    m_services.defaults.synchronize();
}

void PagestackAppDelegate::restoreWindowState()
{
    const QVariantMap state = m_services.defaults.objectForKey(windowKey).toMap();
    // restoreGeometry brings a window back that would lie outside of all screens.
    const QByteArray geometry = asState(state.value(u"geometry"_s));
    if (geometry.isEmpty() || !m_window->restoreGeometry(geometry))
        m_window->resize(m_window->size().boundedTo(m_window->screen()->availableSize() - frame));
    if (const QByteArray sides = asState(state.value(u"sides"_s)); !sides.isEmpty())
        m_ui->mainSplitView->restoreState(sides);
    if (const QByteArray columns = asState(state.value(u"columns"_s)); !columns.isEmpty())
        m_ui->mainTableView->restoreColumns(columns);
}

void PagestackAppDelegate::toggleSettings()
{
    const bool show = pane().isHidden();
    m_services.defaults.setBool(showSettingsKey, show);
    m_services.synchronize(m_window.get());
    showSettings(show);
    if (show)
        leaveRoom(*m_ui->previewBox, *m_ui->togglePreviewAction, *m_ui->toggleSettingsAction);
}

/// Hides `other` by its action where the screen has no room for all sides of the window; while that
/// cannot be, the side that has just come.
void PagestackAppDelegate::leaveRoom(const QWidget& other, QAction& action, QAction& newcomer)
{
    const QSize screen = m_window->screen()->availableSize();
    const auto layOut = [this] {
        m_ui->mainSplitView->refresh();
        m_ui->centralLayout->activate();
        m_window->layout()->activate();
    };
    layOut();
    if (other.isHidden() || m_window->minimumSizeHint().width() <= screen.width())
        return;
    (action.isEnabled() ? action : newcomer).trigger();
    layOut();
    m_window->resize(m_window->size().boundedTo(screen - frame));
}

void PagestackAppDelegate::showSettings(bool show)
{
    (show ? m_ui->preferencesToolbarItem : m_ui->dummyToolbarItem)->setChecked(true);
    m_ui->toggleSettingsAction->setChecked(show);
    pane().setVisible(show);
}

void PagestackAppDelegate::setSplitOptions(int)
{
    pane().setSplitOptions();
    updateTotalLabel();
}

void PagestackAppDelegate::addFiles()
{
    pane().endEditing();
    m_load->addFiles();
}

void PagestackAppDelegate::addFolder()
{
    pane().endEditing();
    m_load->addFolder();
}

void PagestackAppDelegate::importAction()
{
    pane().endEditing();
    openImportFilesPanel();
}

void PagestackAppDelegate::removeAction()
{
    pane().endEditing();
    removeFiles();
}

void PagestackAppDelegate::searchAction()
{
    pane().endEditing();
    m_list->search();
}

void PagestackAppDelegate::exportAction()
{
    pane().endEditing();
    m_list->exportAction();
}

} // namespace pagestack
