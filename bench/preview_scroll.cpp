// preview_scroll FILE: scrolls through the thumbnails of a file and turns its pages for some
// seconds, and prints the longest time that the main thread was not free.
#include "engine/options/ConversionOptions.h"
#include "mainwindow/preview/PreviewPane.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QSpinBox>
#include <QTimer>

#include <cstdio>

#include <algorithm>

using namespace pagestack;

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc < 2)
        return 2;
    PreviewPane pane;
    pane.bind([] { return ConversionOptions(); });
    pane.resize(400, 640);
    pane.show();
    QElapsedTimer clock;
    clock.start();
    qint64 last = 0;
    qint64 longest = 0;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, [&] {
        longest = std::max(longest, clock.elapsed() - last);
        last = clock.elapsed();
    });
    beat.start(1);
    pane.showFile(QString::fromLocal8Bit(argv[1]));
    auto* const field = pane.findChild<QSpinBox*>();
    auto* const strip = pane.findChild<QAbstractScrollArea*>(QLatin1StringView("previewStrip"));
    QTimer steps;
    int step = 0;
    QObject::connect(&steps, &QTimer::timeout, [&] {
        ++step;
        QScrollBar& bar = *strip->horizontalScrollBar();
        bar.setValue(bar.value() < bar.maximum() ? bar.value() + 150 : 0);
        if (step % 8 == 0)
            field->setValue(field->value() < field->maximum() ? field->value() + 1 : 1);
    });
    steps.start(16);
    QTimer::singleShot(8000, &application, &QApplication::quit);
    QApplication::exec();
    std::printf("%d pages, %d steps, longest gap %lld ms\n", field->maximum(), step,
                static_cast<long long>(longest));
    return 0;
}
