#include "engine/threads/MainThread.h"

#include "engine/threads/WorkerThread.h"
#include "tests/support/Testing.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QSemaphore>

#include <atomic>

// The application object is made anew for every test, since ending the calls holds for its
// lifetime.
class MainThreadTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_application.emplace(m_argumentCount, m_arguments); }

    void runsInOrderAndCarriesExceptionsBack()
    {
        const auto fail = [] { throw std::out_of_range("row 3"); };
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, callOnMainThread(fail)); // at once
        WorkerThread idle(fail);
        joinWorker(idle); // never started
        // Joining serves the worker without an event loop, where a plain wait() would never end.
        for (const bool byJoining : { false, true }) {
            int calls = 0;
            const auto other = started([&] {
                for (int i = 0; i < 500; ++i)
                    callOnMainThread([&] { ++calls; });
            });
            QList<int> order;
            const auto worker = started([&] {
                for (int i = 0; i < 200; i += 2) {
                    callOnMainThread(
                        [&] { order += QThread::currentThread() == qApp->thread() ? i : -1; });
                    order += i + 1; // unguarded: the caller has waited
                }
                try {
                    callOnMainThread(fail);
                } catch (const std::out_of_range& error) {
                    order += QByteArray(error.what()) == "row 3" ? 200 : -1;
                }
            });
            QEventLoop loop; // the worker cannot end before its calls are served
            connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
            if (!byJoining)
                loop.exec();
            joinWorker(*worker); // serves the other one's calls, too
            QVERIFY(worker->isFinished());
            joinWorker(*other);
            QCOMPARE(calls, 500);
            QCOMPARE(order.size(), 201);
            for (int i = 0; i <= 200; ++i)
                QCOMPARE(order.at(i), i);
        }
    }

    void releasesCallersAtShutdown()
    {
        for (const bool applicationGoes : { false, true }) {
            init();
            QSemaphore isAboutToCall;
            std::atomic_int calls = 0;
            const auto work = [&] {
                isAboutToCall.release();
                callOnMainThread([&] { ++calls; });
            };
            const auto first = started(work);
            const auto second = started(work);
            isAboutToCall.acquire(2);
            applicationGoes ? m_application.reset() : endMainThreadCalls();
            first->wait();
            second->wait();
            QVERIFY(first->isFinished() && second->isFinished());
            callOnMainThread([&] { ++calls; });
            QCoreApplication::processEvents(); // a wake-up still posted finds nothing to run
            QCOMPARE(calls.load(), 0);
        }
    }

private:
    static std::unique_ptr<WorkerThread> started(const std::function<void()>& work)
    {
        auto worker = std::make_unique<WorkerThread>(work);
        worker->start();
        return worker;
    }

    int m_argumentCount = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = { m_name, nullptr };
    std::optional<QCoreApplication> m_application;
};

QTEST_APPLESS_MAIN(MainThreadTest)
#include "MainThreadTest.moc"
