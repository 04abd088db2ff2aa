#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include "destinations/Destination.h"
#include "destinations/TargetController.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"

namespace marigold {
namespace {

using namespace keys;

class TargetControllerTest : public ::testing::Test {
protected:
    TargetControllerTest() {
        defaults.registerDefaults(Defaults::factoryDefaults());
        targets.setAlertHandler([this](const QString& title, const QString& text,
                                       const QString& button) {
            alerts << title + QLatin1Char('|') + text + QLatin1Char('|') + button;
        });
        targets.setSaveInFolderHandler([this](const QString& folder) { savedIn << folder; });
    }

    QString make(const QString& name, const QByteArray& contents = "x",
                 QFile::Permissions extra = {}) {
        const QString path = dir.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        file.close();
        file.setPermissions(file.permissions() | extra);
        return path;
    }
    QString folder(const QString& name) {
        QDir().mkpath(dir.filePath(name));
        return dir.filePath(name);
    }
    // A desktop entry whose command runs `exec` with the file it is given as %f.
    QString desktopEntry(const QString& name, const QString& exec) {
        return make(name + QStringLiteral(".desktop"),
                    QStringLiteral("[Desktop Entry]\nType=Application\nName=%1 Viewer\nExec=%2\n")
                        .arg(name, exec)
                        .toUtf8());
    }
    void configure(int tag, const QString& path) {
        targets.drop(tag, DropOffer{{path}, std::nullopt, false, false});
    }
    QVariantMap stored() const { return defaults.dictionaryForKey(DefDestinations); }

    QTemporaryDir dir;
    Defaults defaults{dir.filePath(QStringLiteral("settings.ini"))};
    TargetController targets{defaults};
    QStringList alerts;
    QStringList savedIn;
};

TEST_F(TargetControllerTest, WellsTakeOneFolderOrApplicationAndTheOutputOnlyWhenConfigured) {
    const QString pictures = folder(QStringLiteral("web.pictures"));
    const QString viewer = desktopEntry(QStringLiteral("view"), QStringLiteral("true %f"));
    const QString script = make(QStringLiteral("send.sh"), "#!/bin/sh\n", QFile::ExeOwner);
    const QString note = make(QStringLiteral("note.txt"));
    configure(2, pictures);
    const QVariantMap wellConfig = *targets.well(2)->configuration();
    const struct {
        int tag;
        DropOffer offer;
        DropOperation expected;
        const char* why;
    } cases[] = {
        {0, {{pictures, viewer}, {}, false, false}, DropOperation::None, "two files"},
        {0, {{note}, {}, false, false}, DropOperation::None, "a plain document from outside"},
        {0, {{note}, {}, false, true}, DropOperation::None, "the output on an empty well"},
        {2, {{note}, {}, false, true}, DropOperation::Copy, "the output on a folder well"},
        {0, {{pictures}, {}, false, false}, DropOperation::Link, "a folder"},
        {0, {{viewer}, {}, false, false}, DropOperation::Link, "a desktop entry"},
        {0, {{script}, {}, false, false}, DropOperation::Link, "an executable"},
        {0, {{}, wellConfig, false, false}, DropOperation::Move, "another well"},
        {2, {{}, wellConfig, true, false}, DropOperation::Generic, "a well back onto itself"},
        {0, {{}, {}, false, false}, DropOperation::None, "nothing a well reads"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(targets.dragOperation(c.tag, c.offer), c.expected) << c.why;
    }
}

TEST_F(TargetControllerTest, LabelsComeFromThePathAndVanishedDestinationsComeUpEmpty) {
    const QString dotted = folder(QStringLiteral("site.v2"));
    const QString viewer = desktopEntry(QStringLiteral("view"), QStringLiteral("true %f"));
    const QString gone = folder(QStringLiteral("gone"));
    QVariantMap destinations{
        {QStringLiteral("0"), configWithDestination(dotted, QStringLiteral("Stale"), 0, 0)},
        {QStringLiteral("1"), configWithDestination(viewer, QStringLiteral("Stale"), 1, 1)},
        {QStringLiteral("2"), configWithDestination(gone, QStringLiteral("Gone"), 2, 0)},
    };
    QDir(gone).removeRecursively();
    targets.setupWithDestinations(destinations, 0);
    EXPECT_EQ(targets.well(0)->label(), QStringLiteral("site.v2")) << "a dot in a folder stays";
    EXPECT_EQ(targets.well(1)->label(), QStringLiteral("view Viewer")) << "the entry's Name";
    EXPECT_TRUE(targets.well(2)->isEmpty());
}

TEST_F(TargetControllerTest, AWellDraggedOntoAnotherMovesItsConfigurationAndOutClearsIt) {
    const QString web = folder(QStringLiteral("web"));
    configure(3, web);
    int menuRebuilds = 0;
    QObject::connect(&targets, &TargetController::destinationsDidChange,
                     [&menuRebuilds] { ++menuRebuilds; });
    targets.drop(1, DropOffer{{}, targets.well(3)->configuration(), false, false});
    targets.wellDragEnded(3, TargetController::DragEnd::Moved);
    EXPECT_EQ(targets.well(1)->destination(), web);
    EXPECT_TRUE(targets.well(3)->isEmpty());
    EXPECT_EQ(stored().keys(), QStringList{QStringLiteral("1")});
    EXPECT_EQ(stored().value(QStringLiteral("1")).toMap().value(QStringLiteral("tag")).toInt(), 1);
    EXPECT_EQ(menuRebuilds, 2);

    targets.wellDragEnded(1, TargetController::DragEnd::Back);
    EXPECT_EQ(targets.well(1)->destination(), web) << "dropped back on itself: nothing";
    targets.wellDragEnded(1, TargetController::DragEnd::Nowhere);
    EXPECT_TRUE(stored().isEmpty());
}

TEST_F(TargetControllerTest, AnEmptyDoubleClickWellSnapsBackToTheStoredOne) {
    configure(2, folder(QStringLiteral("web")));
    targets.selectDoubleClickDestination(2);
    QList<int> shown;
    QObject::connect(&targets, &TargetController::doubleClickDestinationChanged,
                     [&shown](int tag) { shown << tag; });
    targets.selectDoubleClickDestination(4);
    EXPECT_EQ(targets.doubleClickDestination(), 2);
    QCoreApplication::processEvents();
    EXPECT_EQ(shown.value(shown.size() - 1, -1), 2) << "the radio buttons are set back";
}

TEST_F(TargetControllerTest, SendingOpensTheFileInTheApplicationOrSavesInTheFolder) {
    const QString marker = dir.filePath(QStringLiteral("marker"));
    const QString viewer = desktopEntry(
        QStringLiteral("mark"), QStringLiteral("sh -c 'echo \"$0\" > %1' %f").arg(marker));
    const QString broken = desktopEntry(QStringLiteral("broken"), QStringLiteral("true %f"));
    const QString web = folder(QStringLiteral("web"));
    const QString output = make(QStringLiteral("output.jpg"));
    configure(0, viewer);
    configure(1, broken);
    configure(2, web);
    // Its program uninstalled after the well was set up.
    desktopEntry(QStringLiteral("broken"), QStringLiteral("/nonexistent/marigold-viewer %f"));

    targets.selectDoubleClickDestination(0);
    targets.sendFile(output);
    QElapsedTimer waited;
    waited.start();
    while (!QFile::exists(marker) && waited.elapsed() < 10000) QThread::msleep(20);
    QFile written(marker);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly)) << "the entry's command never ran";
    EXPECT_EQ(written.readAll().trimmed(), output.toUtf8());

    targets.sendFile(1, output);
    EXPECT_EQ(alerts, QStringList{QStringLiteral("Unable to launch application %1|Please check "
                                                 "your destination setup.|Okay")
                                      .arg(broken)});
    targets.sendFile(2, output);
    EXPECT_EQ(savedIn, QStringList{web});
}

TEST(DestinationTest, SendToEntriesAreTitledByKindAndKeyedByWellPlace) {
    const QVariantMap destinations{
        {QStringLiteral("3"),
         configWithDestination(QStringLiteral("/home/a/Desktop"), QStringLiteral("Desktop"), 3, 0)},
        {QStringLiteral("0"),
         configWithDestination(QStringLiteral("/srv/web"), QStringLiteral("web"), 0, 0)},
        {QStringLiteral("5"),
         configWithDestination(QStringLiteral("/usr/bin/gimp"), QStringLiteral("GIMP"), 5, 1)},
        {QStringLiteral("4"), configWithDestination(QStringLiteral("/x"), QStringLiteral("x"), 4, 7)},
    };
    const QList<SendToItem> expected = {{QStringLiteral("Save in web"), 0, 1},
                                        {QStringLiteral("Save on Desktop"), 3, 4},
                                        {QStringLiteral("Unknown"), 4, 5},
                                        {QStringLiteral("Open in GIMP"), 5, 6}};
    EXPECT_EQ(sendToMenuItems(destinations), expected);
}

}  // namespace
}  // namespace marigold
