#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>

#include "processing/CropGeometry.h"

namespace marigold {
namespace {

TEST(CropGeometryTest, RoundRectRoundsEachFieldHalvesAwayFromZero) {
    const struct {
        RectF in, expected;
    } cases[] = {
        {{10.4f, 20.5f, 99.5f, 0.4f}, {10, 21, 100, 0}},
        {{-0.5f, -1.5f, 2.5f, 3.49f}, {-1, -2, 3, 3}},
        // The right edge is round(x) + round(width), not the rounded edge 2.
        {{0.4f, 0.4f, 1.4f, 1.4f}, {0, 0, 1, 1}},
    };
    for (const auto& c : cases) EXPECT_EQ(roundRect(c.in), c.expected);
}

struct PlanCase {
    const char* name;
    RectF rect;
    float scale;
    int wide, high;  // 0 x 0 for an empty plan
};

void PrintTo(const PlanCase& c, std::ostream* out) {
    *out << c.name;
}

class PlanCropTest : public ::testing::TestWithParam<PlanCase> {};

TEST_P(PlanCropTest, OutputSize) {
    const PlanCase& c = GetParam();
    const CropPlan plan = planCrop(c.rect, c.scale);
    EXPECT_EQ(plan.isEmpty(), c.wide == 0);
    if (c.wide == 0) return;
    EXPECT_EQ(plan.outputWide, c.wide);
    EXPECT_EQ(plan.outputHigh, c.high);
    EXPECT_EQ(plan.rounded, roundRect(c.rect));
}

const float kNaN = std::numeric_limits<float>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(
    Table, PlanCropTest,
    ::testing::Values(PlanCase{"heightRoundsToZero", {10.4f, 20.5f, 99.5f, 0.4f}, 1, 0, 0},
                      PlanCase{"narrowWidthRaisedTo10", {0, 0, 4, 100}, 1, 10, 250},
                      PlanCase{"lowHeightWinsAndWidthFollows", {0, 0, 100, 4}, 0.5f, 250, 10},
                      PlanCase{"raisedWidthThenHeightAlready10", {0, 0, 5, 5}, 0.1f, 10, 10},
                      PlanCase{"halvesAwayFromZero", {3, 7, 667, 199}, 0.5f, 334, 100},
                      PlanCase{"plainScale", {0, 0, 600, 400}, 1.0f / 3, 200, 133},
                      PlanCase{"zeroScale", {0, 0, 100, 100}, 0, 0, 0},
                      PlanCase{"notANumberScale", {0, 0, 100, 100}, kNaN, 0, 0},
                      PlanCase{"negativeWidth", {0, 0, -50, 100}, 1, 0, 0},
                      PlanCase{"notANumberOrigin", {kNaN, 0, 50, 100}, 1, 0, 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CropGeometryTest, SizeToFit) {
    const struct {
        SizeF size, box, expected;
    } cases[] = {
        {{350, 700}, {350, 350}, {175, 350}},
        {{400, 300}, {800, 300}, {400, 300}},  // fits exactly
        {{400, 300}, {800, 200}, {200 * 4.0f / 3, 200}},
    };
    for (const auto& c : cases) {
        const SizeF fitted = sizeToFit(c.size, c.box);
        EXPECT_FLOAT_EQ(fitted.width, c.expected.width);
        EXPECT_FLOAT_EQ(fitted.height, c.expected.height);
    }
}

}  // namespace
}  // namespace marigold
