#include "mainwindow/state/Worker.h"

#include "engine/threads/MainThread.h"
#include "engine/threads/WorkerThread.h"
#include "mainwindow/state/ViewState.h"

#include <QMainWindow>
#include <QPointer>

#include <utility>

namespace pagestack {

Worker::Worker(QMainWindow& window, ViewState& view)
    : m_window(window)
    , m_view(view)
{
}

Worker::~Worker() { finish(); }

void Worker::start(std::function<void()> work)
{
    Q_ASSERT(!m_thread);
    m_thread = std::make_unique<WorkerThread>(std::move(work));
    connect(m_thread.get(), &QThread::finished, this, &Worker::end, Qt::QueuedConnection);
    m_thread->start();
}

void Worker::startBusy(std::function<void()> work)
{
    if (isBusy())
        return;
    const QPointer<QWidget> focus = m_window.focusWidget();
    m_view.resetView(false);
    m_view.startProcess();
    start([this, focus, work = std::move(work)] {
        work();
        callOnMainThread([&] {
            m_view.stopProcess();
            m_view.resetView(true);
            if (focus)
                focus->setFocus();
        });
    });
}

void Worker::end()
{
    finish();
    if (m_isTerminating.exchange(false))
        emit readyToTerminate();
    else
        emit ended();
}

void Worker::finish()
{
    if (!m_thread)
        return;
    joinWorker(*m_thread);
    m_thread.reset();
}

void Worker::cancel()
{
    ++m_cancelCount;
    m_view.setIsProcessing(false);
}

void Worker::terminate()
{
    m_isTerminating = true; // a load that is about to start sees it
    cancel();
}

std::function<bool()> Worker::untilCancelled() const
{
    return [this, cancels = m_cancelCount.load()] {
        return m_cancelCount == cancels && !m_isTerminating;
    };
}

} // namespace pagestack
