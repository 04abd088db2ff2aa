#include "selection/ControlArithmetic.h"

#include <gtest/gtest.h>

namespace marigold::controls {
namespace {

TEST(ControlArithmetic, StepperSnapsInTheClicksDirection) {
    struct Case {
        int previous, stepped, expected;
    };
    // Increment 10; `stepped` is what one platform step gave.
    for (const Case c : {Case{13, 23, 20}, Case{13, 3, 10}, Case{15, 25, 20}, Case{20, 10, 10},
                         Case{0, 10, 10}, Case{10, 0, 0}, Case{20, 21, 20}, Case{20, 19, 20}}) {
        EXPECT_EQ(snapStepperValue(c.previous, c.stepped, 10), c.expected)
            << c.previous << " -> " << c.stepped;
    }
    EXPECT_EQ(snapStepperValue(13, 14, 0), 14) << "no increment, no snapping";
}

TEST(ControlArithmetic, SmallDocumentsAreCentredLargeOnesClamped) {
    struct Case {
        SizeF document;
        PointF proposed, expected;
    };
    const SizeF visible{500, 400};
    for (const Case c : {
             Case{{300, 200}, {0, 0}, {-100, -100}},
             Case{{300, 200}, {40, 70}, {-100, -100}},
             // Odd differences: halves round away from zero, not down or toward zero.
             Case{{301, 201}, {0, 0}, {-100, -100}},
             Case{{1000, 200}, {-50, 30}, {0, -100}},
             Case{{1000, 200}, {700, 0}, {500, -100}},
             Case{{1000, 200}, {123.4f, 0}, {123, -100}},
             Case{{500, 900}, {10, 600}, {0, 500}},
         }) {
        const PointF got = constrainScrollPoint(c.proposed, c.document, visible);
        EXPECT_EQ(got, c.expected) << c.document.width << "x" << c.document.height << " at ("
                                   << got.x << ", " << got.y << ")";
    }
    EXPECT_EQ(centerDocument({37, 5}, {1000, 200}, visible), (PointF{37, -100}))
        << "a larger axis keeps its place";
    EXPECT_EQ(centerDocument({0, 0}, {300, 200}, visible), (PointF{-100, -100}));
}

TEST(ControlArithmetic, ScaleWheelSteps) {
    struct Case {
        double delta;
        bool ctrl;
        int expected;
    };
    for (const Case c : {Case{120, false, 1}, Case{-120, false, -1}, Case{120, true, 10},
                         Case{-1, true, -10}, Case{0, true, 0}, Case{0.5, false, 1}}) {
        EXPECT_EQ(scaleWheelStep(c.delta, c.ctrl), c.expected) << c.delta << " ctrl " << c.ctrl;
    }
}

TEST(ControlArithmetic, RotationTicksAndTheirShiftRule) {
    for (const auto& [degrees, tick] : {std::pair{-0.0001, 0.0}, {45.0001, 45.0}, {-22.6, -45.0},
                                        {170.0, 180.0}, {-200.0, -180.0}, {67.4, 45.0}}) {
        EXPECT_EQ(closestRotationTick(degrees), tick) << degrees;
    }
    // Snapping is the setting unless Shift is held, which turns it round.
    EXPECT_TRUE(rotationSnapsToTicks(true, false));
    EXPECT_FALSE(rotationSnapsToTicks(true, true));
    EXPECT_FALSE(rotationSnapsToTicks(false, false));
    EXPECT_TRUE(rotationSnapsToTicks(false, true));
}

}  // namespace
}  // namespace marigold::controls
