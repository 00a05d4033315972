// page_preview FILE [PAGE]: seconds for the reduced picture of a page, the best of three.
#include "engine/preview/PagePicture.h"

#include <QElapsedTimer>

#include <cstdio>

#include <algorithm>

using namespace pagestack;

int main(int argc, char** argv)
try {
    if (argc < 2)
        return 2;
    const IsStopped never = [] { return false; };
    PreviewFile file(QString::fromLocal8Bit(argv[1]));
    const int page = argc > 2 ? QByteArray(argv[2]).toInt() - 1 : 0;
    qint64 bestMs = -1;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer clock;
        clock.start();
        pictureOf(file.open(never), { page, {}, { 700, 900 } }, never);
        const qint64 ms = clock.elapsed();
        bestMs = bestMs < 0 ? ms : std::min(bestMs, ms);
    }
    std::printf("%.3f s\n", static_cast<double>(bestMs) / 1000);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
