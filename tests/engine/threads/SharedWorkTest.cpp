#include "engine/threads/SharedWork.h"

#include "tests/support/Testing.h"

#include <atomic>
#include <latch>
#include <thread>

class SharedWorkTest : public QObject
{
    Q_OBJECT

private slots:
    // A thread that sleeps on while there is work, and one that is kept from what it waits for.
    void isDoneByWhoeverWaits()
    {
        SharedWork work;
        bool isOver = false;
        std::thread helper([&] {
            SharedWork::Lock lock = work.lock();
            work.helpUntil(lock, [&] { return isOver; });
        });
        std::latch bothAreAtIt(2);
        work.run([&] { bothAreAtIt.arrive_and_wait(); });
        {
            const SharedWork::Lock lock = work.lock();
            isOver = true;
            work.notify();
        }
        helper.join();
        work.run([] {}); // alone
    }

    // Parts that are done twice or not at all, work that goes on after its run, wake-ups that are
    // lost: threads that hand each other rounds of work, in which they wait in turns.
    void losesNothing()
    {
        constexpr int rounds = 3000;
        SharedWork work;
        int made = 0;
        int used = 0;
        std::array<int, 5> parts {};
        std::thread maker([&] {
            for (int round = 1; round <= rounds; ++round) {
                std::atomic<std::size_t> next = 0;
                const std::function<void()> takeParts = [&] {
                    for (std::size_t i = next++; i < parts.size(); i = next++)
                        ++parts[i]; // unguarded: each is one thread's
                };
                work.run(takeParts);
                SharedWork::Lock lock = work.lock();
                made = round;
                work.notify();
                work.wait(lock, [&] { return used >= round - round % 3; });
            }
        });
        int wrong = 0;
        for (int round = 1; round <= rounds; ++round) {
            SharedWork::Lock lock = work.lock();
            work.helpUntil(lock, [&] { return made >= round; });
            if (round % 3 == 0) // when the maker waits
                wrong += std::ranges::count(parts, round) == 5 ? 0 : 1;
            used = round;
            work.notify();
        }
        maker.join();
        QCOMPARE(wrong, 0);
    }
};

QTEST_APPLESS_MAIN(SharedWorkTest)
#include "SharedWorkTest.moc"
