#include <gtest/gtest.h>

#include <QApplication>

#include "platform/VipsRuntime.h"

// Logic tests still need an application object: the undo manager groups by event-loop
// pass and the controller defers corrections to the next pass.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (!marigold::startVips(argv[0])) return 1;
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
