#include "cli/JobThread.h"
#include "cli/Options.h"
#include "engine/job/Process.h"
#include "engine/plan/RunPlan.h"
#include "engine/support/Paths.h"
#include "filelist/FileItem.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

#include <ctime>
#include <exception>
#include <sys/resource.h>

// How much of a run's processor time is that of the job's own thread, which no further processor
// takes over: serial_part [OPTION...] SOURCE..., as for pagestack-convert, one run without a log.
// Sources are files. In ms: the list and the plan, the job's thread, all threads of the run; and
// the share of the second in the third.

using namespace pagestack;

namespace {

double milliseconds(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

QList<OutputFile> outputsOf(const QStringList& sources)
{
    QList<OutputFile> outputs;
    for (const QString& source : sources) {
        OutputFile output;
        output.filename = absolutePath(source);
        output.fileItems.append(FileItem::initWithURL(QUrl::fromLocalFile(output.filename)));
        outputs.append(output);
    }
    return outputs;
}

int measure(const Options& options)
{
    const double start = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
    Settings settings(nullptr);
    applyTo(settings, options.conversion);
    settings.setIsOpenFolderAfterConversion(false);
    settings.setOutputFolderPath(absolutePath(options.outputFolder));
    const RunPlan plan(outputsOf(options.sources), settings, options.conversion.run);
    Process job;
    job.log()->setStored(false);
    job.log()->setTextDropped(true);
    job.setOutputFiles(plan.outputs());
    job.setSettings(&settings);
    job.setJobs(askedJobs(options));
    job.setRunOptions(options.conversion.run);
    job.setHazards(plan.hasHazards());
    job.setTotalFileSelected(static_cast<int>(plan.outputs().size()));
    job.setIsCombining(true);

    const double begun = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
    double own = 0;
    runOnThread([&] {
        job.start();
        own = milliseconds(CLOCK_THREAD_CPUTIME_ID);
    });
    const double all = milliseconds(CLOCK_PROCESS_CPUTIME_ID) - begun;
    rusage used = {};
    ::getrusage(RUSAGE_SELF, &used);
    std::printf("plan %.1f job %.1f all %.1f share %.1f%% files %d peak %.0f MB\n", begun - start,
                own, all, 100 * own / all, job.totalFileCreated(),
                static_cast<double>(used.ru_maxrss) / 1000);
    return job.message() == Process::allConvertedText() || job.totalFileCreated() > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
try {
    const QCoreApplication application(argc, argv);
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QFile::decodeName(argv[i]));
    return measure(parseOptions(words));
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
}
