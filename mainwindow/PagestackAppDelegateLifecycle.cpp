#include "engine/settings/UserDefaults.h"
#include "engine/threads/MainThread.h"
#include "engine/threads/WorkerThread.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/run/ProcessPanel.h"
#include "ui_MainWindow.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString windowKey = u"WINDOW"_s;

    QString asText(const QByteArray& state) { return QString::fromLatin1(state.toBase64()); }

    QByteArray asState(const QVariant& text)
    {
        return QByteArray::fromBase64(text.toString().toLatin1());
    }

} // namespace

bool PagestackAppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (hasVisibleWindows && m_window->isVisible())
        return false;
    openAppAction();
    return true;
}

bool PagestackAppDelegate::applicationShouldTerminate()
{
    endEditing();
    m_settings->synchronize();
    saveWindowState();
    if (!m_worker)
        return true;
    m_isTerminating = true;
    cancelAction();
    cancelProcessAction();
    return false;
}

/// From the first yes on the window may close, as quitting makes it do.
bool PagestackAppDelegate::mayQuit()
{
    m_hasQuit = m_hasQuit || applicationShouldTerminate();
    return m_hasQuit;
}

void PagestackAppDelegate::quitAction()
{
    if (mayQuit())
        QCoreApplication::quit();
}

/// Closing the window ends the program, but not before the load or run under way has ended, or
/// hides the window.
bool PagestackAppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_window.get() && event->type() == QEvent::Close && !m_hasQuit) {
        event->ignore();
        if (m_endsWithWindow)
            quitAction();
        else
            m_window->hide();
        return true;
    }
    if (watched == m_window.get() && event->type() == QEvent::PaletteChange)
        followPalette();
    if (event->type() == QEvent::FocusOut)
        commitSettingsFields();
    return QObject::eventFilter(watched, event);
}

void PagestackAppDelegate::startWorker(std::function<void()> work)
{
    Q_ASSERT(!m_worker);
    m_worker = std::make_unique<WorkerThread>(std::move(work));
    connect(m_worker.get(), &QThread::finished, this, &PagestackAppDelegate::workerEnded,
            Qt::QueuedConnection);
    m_worker->start();
}

/// `work` runs on a thread of its own, with the window busy as during a load, and gives the focus
/// back. Refused while a load or a run is under way.
void PagestackAppDelegate::startBusy(std::function<void()> work)
{
    if (m_worker)
        return;
    const QPointer<QWidget> focus = m_window->focusWidget();
    resetView(false);
    startProcess();
    startWorker([this, focus, work = std::move(work)] {
        work();
        callOnMainThread([&] {
            stopProcess();
            resetView(true);
            if (focus)
                focus->setFocus();
        });
    });
}

void PagestackAppDelegate::workerEnded()
{
    finishWorker();
    if (!m_isTerminating) {
        if (m_clash)
            askForNumbers();
        return;
    }
    m_isTerminating = false;
    emit readyToTerminate();
}

/// Waits for the worker, which has been asked to end or has come to its end.
void PagestackAppDelegate::finishWorker()
{
    if (!m_worker)
        return;
    joinWorker(*m_worker);
    m_worker.reset();
}

void PagestackAppDelegate::saveWindowState()
{
    m_services.defaults.setObject(
        windowKey,
        QVariantMap { { u"geometry"_s, asText(m_window->saveGeometry()) },
                      { u"columns"_s, asText(m_ui->mainTableView->saveColumns()) } });
    m_services.defaults.synchronize();
}

void PagestackAppDelegate::restoreWindowState()
{
    const QVariantMap state = m_services.defaults.objectForKey(windowKey).toMap();
    // restoreGeometry brings a window back that would lie outside of all screens.
    if (const QByteArray geometry = asState(state.value(u"geometry"_s)); !geometry.isEmpty())
        m_window->restoreGeometry(geometry);
    if (const QByteArray columns = asState(state.value(u"columns"_s)); !columns.isEmpty())
        m_ui->mainTableView->restoreColumns(columns);
}

} // namespace pagestack
