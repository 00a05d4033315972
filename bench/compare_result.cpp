// compare_result FILE FORMAT [QUALITY]: what a page takes that is compared with its result: the
// time to the reduced picture and to a part, and the memory that is held and was held at most.
#include "mainwindow/preview/ComparedResult.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace pagestack;
using namespace Qt::StringLiterals;

namespace {

/// Kibibytes, by /proc.
int memory(const QByteArray& name)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).simplified().split(' ').first().toInt();
    return 0;
}

/// What is free is no matter of what is held.
void giveBack()
{
#ifdef __GLIBC__
    ::malloc_trim(0);
#endif
}

void tell(const char* what, const QElapsedTimer& clock, int before)
{
    giveBack();
    std::printf("%-22s %5lld ms, holds %6d KB, most %6d KB\n", what, clock.elapsed(),
                memory("RssAnon") - before, memory("VmHWM"));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    QCoreApplication app(argc, argv);
    const IsStopped never = [] { return false; };
    const auto file = std::make_shared<PreviewFile>(QString::fromLocal8Bit(argv[1]));
    ConversionOptions options;
    options.outputType = static_cast<OutputType>(QByteArray(argv[2]).toInt());
    options.jpegQuality = argc > 3 ? QByteArray(argv[3]).toInt() : options.jpegQuality;
    QElapsedTimer clock;
    clock.start();
    QSize size;
    {
        const PagePicture picture = pictureOf(file->open(never), { 0, {}, { 900, 700 } }, never);
        size = picture.pageSize;
    }
    const int before = (giveBack(), memory("RssAnon"));
    tell("original", clock, before);
    QThreadPool threads;
    ComparedResult result(threads, [&] { return options; });
    clock.restart();
    QObject::connect(&result, &ComparedResult::failed, &app, [&](const QString& reason) {
        std::printf("%s\n", qPrintable(reason));
        QCoreApplication::exit(1);
    });
    QObject::connect(&result, &ComparedResult::made, &app,
                     [&](const MakeImage& make, const QString& text, const QStringList&) {
                         std::printf("%s\n", qPrintable(text));
                         tell("encoded", clock, before);
                         const ShownImage whole = make({ 0, {}, { 900, 700 } }, never);
                         tell("with its picture", clock, before);
                         for (int i = 0; i < 3; ++i) {
                             clock.restart();
                             const QRect region((size.width() - 1200) * i / 2,
                                                (size.height() - 900) * i / 2, 1200, 900);
                             const ShownImage part = make({ 0, region, { 1200, 900 } }, never);
                             tell("a part", clock, before);
                         }
                         QCoreApplication::quit();
                     });
    result.setPage(file, 0, {});
    const int code = QCoreApplication::exec();
    threads.waitForDone();
    return code;
}
