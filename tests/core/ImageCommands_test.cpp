#include <gtest/gtest.h>

#include "support/ControllerFixture.h"

namespace marigold {
namespace {

using test::difference;

class ImageCommands : public AppControllerTest {
protected:
    bool shows(const Image& expected) const {
        const Image& shown = document().image();
        return shown.pixelsWide() == expected.pixelsWide() &&
               shown.pixelsHigh() == expected.pixelsHigh() &&
               difference(shown.pixels(), expected.pixels()).max() == 0;
    }
};

// Each edit of the picture is one step named after it, and undo and redo give back exactly
// the pixels shown before and after.
TEST_F(ImageCommands, EveryPictureEditIsOneNamedStepThatUndoesAndRedoes) {
    open(test::gradientImage(60, 40));
    const std::pair<const char*, std::function<void()>> edits[] = {
        {"Flip Horizontal", [&] { controller.flipHorizontal(); }},
        {"Flip Vertical", [&] { controller.flipVertical(); }},
        {"Rotate", [&] { controller.rotateImage90(false); }},
        {"Desaturate", [&] { controller.desaturate(); }},
    };
    UndoManager& undo = controller.undoManager();
    for (const auto& [name, edit] : edits) {
        const Image before = document().image();
        edit();
        finishPass();
        const Image after = document().image();
        EXPECT_FALSE(shows(before)) << name;
        EXPECT_EQ(undo.undoActionName(), QString::fromUtf8(name));
        undo.undo();
        EXPECT_TRUE(shows(before)) << name;
        undo.redo();
        EXPECT_TRUE(shows(after)) << name;
    }
    // Turned right a quarter, then the rest of the edits: the picture stands upright.
    EXPECT_EQ(document().image().pixelsWide(), 40);
    EXPECT_EQ(controller.rotation(), -90);
}

TEST_F(ImageCommands, AFlipKeepsTheSelectionOverTheSamePartAndATurnDeselects) {
    open(test::gradientImage(60, 40));
    Marquee left;
    left.setStartAndEndPoint({0, 0}, {0, 0, 60, 40});
    left.setEndPoint({20, 40}, {0, 0, 60, 40});
    controller.setMarquee(left);
    controller.flipHorizontal();
    const RectF crop = document().cropRect();
    EXPECT_FLOAT_EQ(crop.x, 40);
    EXPECT_FLOAT_EQ(crop.width, 20);
    EXPECT_EQ(controller.pixelWidth(), 20);
    controller.rotateImage90(true);
    EXPECT_FALSE(document().hasSelection());
    EXPECT_EQ(controller.rotation(), 90);
    controller.rotateImage90(true);
    controller.rotateImage90(true);
    EXPECT_EQ(controller.rotation(), -90) << "angles stay within -180 to 180";
}

// From halfway between two ticks a step right lands on the lower tick and a step left on the
// upper one; a drag's preview turns a small copy drawn at the full size and leaves no step.
TEST_F(ImageCommands, TickStepsBreakTiesTowardTheTurnAndPreviewsLeaveNoStep) {
    open(test::gradientImage(1200, 800));
    controller.setRotation(22.5);
    controller.rotateImageCW();
    EXPECT_EQ(controller.rotation(), 0);
    controller.setRotation(22.5);
    controller.rotateImageCCW();
    EXPECT_EQ(controller.rotation(), 45);
    finishPass();
    const int steps = controller.undoManager().undoCount();
    controller.setPreviewRotation(30);
    EXPECT_EQ(document().image().pixelsWide(), 419) << "the 350 x 233 copy turned";
    EXPECT_EQ(int(document().image().size().width), 1439) << "1200 cos 30 + 800 sin 30";
    EXPECT_EQ(controller.rotation(), 45) << "a preview is not the angle";
    finishPass();
    EXPECT_EQ(controller.undoManager().undoCount(), steps);
}

}  // namespace
}  // namespace marigold
