#include <benchmark/benchmark.h>

#include <QApplication>

#include "platform/VipsRuntime.h"

// The widget benchmarks need an application object; offscreen, so no display is needed.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (!marigold::startVips(argv[0])) return 1;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
