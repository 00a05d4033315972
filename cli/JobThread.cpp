#include "cli/JobThread.h"

#include "cli/Options.h"
#include "engine/threads/Capacity.h"
#include "engine/threads/WorkerThread.h"

#include <QEventLoop>

#include <algorithm>

namespace pagestack {

int askedJobs(const Options& options)
{
    if (options.memoryLimit == 0)
        return options.jobs;
    const std::uint64_t limit = std::min<std::uint64_t>(
        options.memoryLimit, memoryLimitBytes().value_or(options.memoryLimit));
    return jobsWithin(options.jobs > 0 ? options.jobs : usableCores(), limit);
}

bool runOnThread(const std::function<void()>& work)
{
    WorkerThread worker(work);
    QEventLoop loop;
    QObject::connect(&worker, &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    worker.start();
    if (!worker.isRunning() && !worker.isFinished())
        return false;
    loop.exec();
    worker.wait();
    return true;
}

} // namespace pagestack
