#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QTemporaryDir>

#include "platform/VipsRuntime.h"

// Logic tests still need an application object: the undo manager groups by event-loop
// pass, the controller defers corrections to the next pass, and the clipboard is the
// desktop's. A GUI one, not a widget one: the model links no widgets.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The desktop's shared lists (recent files) of a scratch home, never the user's.
    // Temporary output folders of the tests go with the run too.
    QTemporaryDir home;
    qputenv("XDG_DATA_HOME", home.path().toUtf8());
    qputenv("TMPDIR", home.path().toUtf8());
    QGuiApplication app(argc, argv);
    if (!marigold::startVips(argv[0])) return 1;
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
