#include <gtest/gtest.h>

#include <QSize>
#include <algorithm>
#include <cmath>
#include <string>
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

TEST(CropGeometryTest, ExactSizeCropsPlanExactlyThatSizeCentredAndNearlyAsLargeAsPossible) {
    const QSize pictures[] = {{6000, 4000}, {4000, 6000}, {1600, 1200}, {100, 100}, {37, 901}};
    const QSize targets[] = {{640, 480}, {641, 479}, {1080, 1080}, {10, 999}, {3000, 17}};
    // A region a pixel or two across cannot be enlarged to an exact size.
    const std::pair<QSize, QSize> tooSmall[] = {{{100, 100}, {10, 999}},
                                                {{100, 100}, {3000, 17}},
                                                {{37, 901}, {641, 479}},
                                                {{37, 901}, {3000, 17}}};
    for (const QSize picture : pictures) {
        for (const QSize target : targets) {
            const std::optional<SizedCrop> crop =
                exactSizeCrop(picture.width(), picture.height(), target.width(), target.height());
            const bool feasible = std::find(std::begin(tooSmall), std::end(tooSmall),
                                            std::pair{picture, target}) == std::end(tooSmall);
            ASSERT_EQ(crop.has_value(), feasible) << picture.width() << " to " << target.width()
                                                  << "x" << target.height();
            if (!crop) continue;
            const CropPlan plan = planCrop(crop->rect, crop->scale);
            const RectF& r = crop->rect;
            const RectF largest = largestCentredCrop(picture.width(), picture.height(),
                                                     target.width(), target.height());
            const std::string what = std::to_string(picture.width()) + "x" +
                                     std::to_string(picture.height()) + " to " +
                                     std::to_string(target.width()) + "x" +
                                     std::to_string(target.height());
            EXPECT_EQ(plan.outputWide, target.width()) << what;
            EXPECT_EQ(plan.outputHigh, target.height()) << what;
            EXPECT_TRUE(r.x >= 0 && r.y >= 0 && r.x + r.width <= picture.width() &&
                        r.y + r.height <= picture.height())
                << what;
            EXPECT_LE(std::abs(2 * r.x + r.width - picture.width()), 1) << what << ": centred";
            EXPECT_LE(std::abs(2 * r.y + r.height - picture.height()), 1) << what << ": centred";
            EXPECT_GE(r.width, std::floor(largest.width) - 64) << what;
        }
    }
}

}  // namespace
}  // namespace marigold
