#include "selection/Marquee.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace marigold {

// Readable failure messages; internal linkage keeps them private to this file.
static void PrintTo(const PointF& p, std::ostream* os) {
    *os << "(" << p.x << ", " << p.y << ")";
}
static void PrintTo(const RectF& r, std::ostream* os) {
    *os << "(" << r.x << ", " << r.y << ", " << r.width << ", " << r.height << ")";
}
static void PrintTo(const Marquee& m, std::ostream* os) {
    *os << m.description().toStdString() << " aspect " << m.aspectHeight() << ":"
        << m.aspectWidth();
}

namespace {

// Bounds of one view point per unit: view coordinates are the normalised ones, unclamped.
constexpr RectF kUnit{0, 0, 1, 1};
constexpr RectF kWide{0, 0, 200, 100};

Marquee makeMarquee(PointF start, PointF end) {
    Marquee m;
    m.setStartAndEndPoint(end, kUnit);
    m.setStartPoint(start, kUnit);
    return m;
}

void expectPointNear(PointF actual, PointF expected) {
    EXPECT_FLOAT_EQ(actual.x, expected.x);
    EXPECT_FLOAT_EQ(actual.y, expected.y);
}

void expectRectNear(RectF actual, RectF expected) {
    EXPECT_FLOAT_EQ(actual.x, expected.x);
    EXPECT_FLOAT_EQ(actual.y, expected.y);
    EXPECT_FLOAT_EQ(actual.width, expected.width);
    EXPECT_FLOAT_EQ(actual.height, expected.height);
}

TEST(Marquee, FreshMarqueeIsAllZeroAndDeselected) {
    const Marquee m;
    EXPECT_EQ(m.startPoint(), PointF{});
    EXPECT_EQ(m.endPoint(), PointF{});
    EXPECT_EQ(m.aspectHeight(), 0);
    EXPECT_EQ(m.aspectWidth(), 0);
    EXPECT_TRUE(m.deselected());
}

TEST(Marquee, SelectAllAndDeselectKeepTheAspect) {
    Marquee m;
    m.setAspectHeight(3, 4);
    m.selectAll();
    EXPECT_EQ(m.width(), 1);
    EXPECT_EQ(m.height(), 1);
    EXPECT_EQ(m.size(), (SizeF{1, 1}));
    EXPECT_FALSE(m.deselected());
    EXPECT_EQ(m.rect(kWide), kWide);

    m.deselect();
    EXPECT_TRUE(m.deselected());
    EXPECT_EQ(m.startPoint(), PointF{});
    EXPECT_EQ(m.endPoint(), PointF{});
    EXPECT_EQ(m.aspectHeight(), 3);
    EXPECT_EQ(m.aspectWidth(), 4);

    m.setStartAndEndPoint({70, 40}, kWide);
    EXPECT_TRUE(m.deselected());
    EXPECT_EQ(m.startPoint(), (PointF{0.35f, 0.4f}));
}

TEST(Marquee, ZeroWidthWithHeightIsNotDeselected) {
    const Marquee line = makeMarquee({0.5f, 0.25f}, {0.5f, 0.75f});
    EXPECT_FALSE(line.deselected());
    EXPECT_EQ(line.width(), 0);
    EXPECT_EQ(line.height(), 0.5f);
    EXPECT_TRUE(line.rect(kWide).isEmpty());
}

TEST(Marquee, SettingTheAspectLeavesTheRectangleAlone) {
    Marquee m = makeMarquee({0.1f, 0.2f}, {0.9f, 0.3f});
    const Marquee before = m;
    m.setAspectHeight(1, 1);
    EXPECT_EQ(m.startPoint(), before.startPoint());
    EXPECT_EQ(m.endPoint(), before.endPoint());
}

TEST(Marquee, CopiesAreIndependentValues) {
    Marquee original = makeMarquee({0.1f, 0.2f}, {0.6f, 0.7f});
    original.setAspectHeight(2, 3);
    Marquee copy = original;
    copy.selectAll();
    copy.setAspectHeight(0, 0);
    EXPECT_EQ(original.startPoint(), (PointF{0.1f, 0.2f}));
    EXPECT_EQ(original.aspectHeight(), 2);

    Marquee target;
    target.setMarquee(original);
    EXPECT_EQ(target, original);
    EXPECT_EQ(target.aspectWidth(), 3);
}

TEST(Marquee, FreeEndPointIsClampedToTheImage) {
    const RectF bounds{10, 20, 200, 100};
    struct Case {
        PointF view;
        PointF expected;
    };
    const std::vector<Case> cases = {
        {{-50, -50}, {0, 0}}, {{500, 500}, {1, 1}},      {{110, -1}, {0.5f, 0}},
        {{9, 70}, {0, 0.5f}}, {{110, 70}, {0.5f, 0.5f}}, {{210, 120}, {1, 1}},
        {{300, 0}, {1, 0}},   {{10, 20}, {0, 0}},
    };
    // Zero, negative or NaN in either part means no constraint.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<std::pair<float, float>> freeAspects = {{0, 0},  {0, 2},   {2, 0},  {-1, 2},
                                                              {1, -1}, {nan, 1}, {1, nan}};
    for (const auto& [h, w] : freeAspects) {
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message()
                         << "aspect " << h << ":" << w << " view " << c.view.x << ", " << c.view.y);
            Marquee m;
            m.setStartAndEndPoint({60, 45}, bounds);
            m.setAspectHeight(h, w);
            m.setEndPoint(c.view, bounds);
            EXPECT_EQ(m.endPoint(), c.expected);
            EXPECT_EQ(m.startPoint(), (PointF{0.25f, 0.25f}));
        }
    }
}

struct AspectCase {
    std::string name;
    float aspectHeight;
    float aspectWidth;
    RectF bounds;
    PointF startView;
    PointF priorEndView;  // dragged freely before the constraint is set
    PointF dragView;
    PointF expectedEnd;
};

void PrintTo(const AspectCase& c, std::ostream* os) {
    *os << c.name;
}

class MarqueeAspect : public testing::TestWithParam<AspectCase> {};

TEST_P(MarqueeAspect, EndPointFollowsTheRule) {
    const AspectCase& c = GetParam();
    Marquee m;
    m.setStartAndEndPoint(c.startView, c.bounds);
    m.setEndPoint(c.priorEndView, c.bounds);
    m.setAspectHeight(c.aspectHeight, c.aspectWidth);
    const PointF start = m.startPoint();
    m.setEndPoint(c.dragView, c.bounds);
    expectPointNear(m.endPoint(), c.expectedEnd);
    EXPECT_EQ(m.startPoint(), start);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MarqueeAspect,
    testing::Values(
        // The ratio is held in view points: 100 x 50 points, but 0.5 x 0.5 normalised.
        AspectCase{"TooTallFollowsWidth", 1, 2, kWide, {0, 0}, {0, 0}, {100, 100}, {0.5f, 0.5f}},
        AspectCase{"TooWideFollowsHeight", 1, 2, kWide, {0, 0}, {0, 0}, {200, 50}, {0.5f, 0.5f}},
        AspectCase{"TooTallDownward", 1, 2, kWide, {200, 100}, {200, 100}, {100, 0}, {0.5f, 0.5f}},
        AspectCase{"TooWideLeftward", 1, 2, kWide, {200, 100}, {200, 100}, {0, 50}, {0.5f, 0.5f}},
        AspectCase{"NonZeroOrigin",
                   1,
                   2,
                   {50, 30, 200, 100},
                   {50, 30},
                   {50, 30},
                   {150, 130},
                   {0.5f, 0.5f}},
        // Exact ratio (and 0/0) are left alone: the previous end point stays.
        AspectCase{
            "EqualQuotientKeepsOldEnd", 1, 2, kWide, {0, 0}, {40, 60}, {100, 50}, {0.2f, 0.6f}},
        AspectCase{
            "DragOntoStartKeepsOldEnd", 1, 2, kWide, {50, 20}, {40, 60}, {50, 20}, {0.2f, 0.6f}},
        // Clamping comes before the rule: (400, 150) is (1, 1) here, 100 x 200 points.
        AspectCase{"ClampsBeforeTheRule", 1, 1, kWide, {0, 0}, {0, 0}, {400, 150}, {0.5f, 1}},
        AspectCase{
            "ClampedOntoExactRatio", 1, 2, kWide, {0, 0}, {20, 10}, {400, 300}, {0.1f, 0.1f}},
        // dw == 0: infinite quotient, the end collapses onto the start's y.
        AspectCase{"ZeroWidthCollapsesOntoStartY",
                   1,
                   2,
                   kWide,
                   {50, 20},
                   {50, 20},
                   {50, 90},
                   {0.25f, 0.2f}},
        AspectCase{"ZeroHeightCollapsesOntoStartX",
                   1,
                   2,
                   kWide,
                   {50, 20},
                   {50, 20},
                   {150, 20},
                   {0.25f, 0.2f}},
        // A start outside the image (unclamped) gives a constrained end outside [0, 1]; it is
        // kept, not clamped again.
        AspectCase{"ConstrainedResultIsNotClamped",
                   1,
                   1,
                   {0, 0, 128, 128},
                   {160, 64},
                   {160, 64},
                   {0, 80},
                   {1.125f, 0.625f}}),
    [](const testing::TestParamInfo<AspectCase>& info) { return info.param.name; });

TEST(Marquee, AspectExampleGivesAHundredByFiftyPointRectangle) {
    Marquee m;
    m.setAspectHeight(1, 2);
    m.setStartAndEndPoint({0, 0}, kWide);
    m.setEndPoint({100, 100}, kWide);
    EXPECT_EQ(m.rect(kWide), (RectF{0, 0, 100, 50}));
    EXPECT_EQ(m.size(), (SizeF{0.5f, 0.5f}));
}

TEST(Marquee, ConversionThroughBounds) {
    const std::vector<RectF> boundsTable = {
        {0, 0, 200, 100}, {50, 30, 200, 100}, {-40, -20, 80, 60}, {0.5f, 1000, 3, 7}};
    for (const RectF& b : boundsTable) {
        SCOPED_TRACE(testing::Message() << "bounds " << testing::PrintToString(b));
        EXPECT_EQ(Marquee::convertPoint({b.x, b.y}, b), (PointF{0, 0}));
        expectPointNear(Marquee::convertPoint({b.maxX(), b.maxY()}, b), {1, 1});
        expectPointNear(Marquee::convertPoint({b.x + b.width / 2, b.y + b.height / 4}, b),
                        {0.5f, 0.25f});
        // No clamping in the conversion itself.
        expectPointNear(Marquee::convertPoint({b.x - b.width, b.maxY() + b.height}, b), {-1, 2});

        // A drag from upper-right to lower-left comes back as the same view rectangle.
        const PointF a{b.x + 0.75f * b.width, b.y + 0.5f * b.height};
        const PointF z{b.x + 0.25f * b.width, b.y + 0.125f * b.height};
        Marquee m;
        m.setStartAndEndPoint(a, b);
        m.setEndPoint(z, b);
        expectRectNear(m.rect(b), {z.x, z.y, a.x - z.x, a.y - z.y});

        m.selectAll();
        expectRectNear(m.rect(b), b);
    }
    EXPECT_TRUE(std::isinf(Marquee::convertPoint({1, 1}, {0, 0, 0, 10}).x));
}

struct TranslateCase {
    std::string name;
    RectF bounds;
    PointF start;  // normalised
    PointF end;
    PointF delta;  // view points
    RectF expected;
};

void PrintTo(const TranslateCase& c, std::ostream* os) {
    *os << c.name;
}

class MarqueeTranslate : public testing::TestWithParam<TranslateCase> {};

TEST_P(MarqueeTranslate, MovesInsideTheBoundsAndNormalises) {
    const TranslateCase& c = GetParam();
    Marquee m = makeMarquee(c.start, c.end);
    const Marquee before = m;
    const PointF from{c.bounds.x + 3, c.bounds.y + 7};
    const PointF to{from.x + c.delta.x, from.y + c.delta.y};

    const RectF moved = m.rectTranslatedFromPoint(from, to, c.bounds);
    EXPECT_EQ(m, before);
    EXPECT_EQ(moved, c.expected);
    EXPECT_EQ(moved.width, before.rect(c.bounds).width);
    EXPECT_EQ(moved.height, before.rect(c.bounds).height);

    m.translateFromPoint(from, to, c.bounds);
    expectPointNear(m.startPoint(), Marquee::convertPoint({c.expected.x, c.expected.y}, c.bounds));
    expectPointNear(m.endPoint(),
                    Marquee::convertPoint({c.expected.maxX(), c.expected.maxY()}, c.bounds));
    EXPECT_LE(m.startPoint().x, m.endPoint().x);
    EXPECT_LE(m.startPoint().y, m.endPoint().y);
    expectRectNear(m.rect(c.bounds), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MarqueeTranslate,
    testing::Values(
        TranslateCase{
            "SmallMove", kWide, {0.25f, 0.25f}, {0.75f, 0.5f}, {10, 5}, {60, 30, 100, 25}},
        TranslateCase{"HugeDeltaUpRight",
                      kWide,
                      {0.75f, 0.5f},
                      {0.25f, 0.25f},
                      {1e6f, 1e6f},
                      {100, 75, 100, 25}},
        TranslateCase{"HugeDeltaDownLeft",
                      kWide,
                      {0.75f, 0.25f},
                      {0.25f, 0.5f},
                      {-1e6f, -1e6f},
                      {0, 0, 100, 25}},
        TranslateCase{"NonZeroOriginUpRight",
                      {50, 30, 200, 100},
                      {0.25f, 0.5f},
                      {0.75f, 0.25f},
                      {1e9f, 1e9f},
                      {150, 105, 100, 25}},
        TranslateCase{"NonZeroOriginDownLeft",
                      {50, 30, 200, 100},
                      {0.25f, 0.5f},
                      {0.75f, 0.25f},
                      {-1e9f, -1e9f},
                      {50, 30, 100, 25}},
        // Wider and taller than the bounds: the upper clamp wins and the size is kept.
        TranslateCase{"LargerThanBoundsEndsFlushUpper",
                      kWide,
                      {-0.25f, 1.5f},
                      {1.25f, -0.5f},
                      {0, 0},
                      {-100, -100, 300, 200}}),
    [](const testing::TestParamInfo<TranslateCase>& info) { return info.param.name; });

TEST(Marquee, ContainsPointIsStrict) {
    // View rectangle (50, 25)-(150, 75), built from the upper-right corner.
    const Marquee m = makeMarquee({0.75f, 0.75f}, {0.25f, 0.25f});
    struct Case {
        PointF view;
        bool inside;
    };
    const std::vector<Case> cases = {
        {{100, 50}, true},  {{50.5f, 25.5f}, true}, {{149.5f, 74.5f}, true}, {{50, 50}, false},
        {{150, 50}, false}, {{100, 25}, false},     {{100, 75}, false},      {{50, 25}, false},
        {{150, 75}, false}, {{49, 50}, false},      {{100, 76}, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(m.containsPoint(c.view, kWide), c.inside) << testing::PrintToString(c.view);
    }
}

TEST(Marquee, KnobsAreTenPointSquaresAroundTheCorners) {
    EXPECT_EQ(Marquee::knobAroundPoint({100, 50}), (RectF{95, 45, 10, 10}));
    const RectF bounds{50, 30, 200, 100};
    const Marquee m = makeMarquee({0.75f, 0.25f}, {0.25f, 0.75f});
    EXPECT_EQ(m.lowerLeftKnob(bounds), (RectF{95, 50, 10, 10}));
    EXPECT_EQ(m.lowerRightKnob(bounds), (RectF{195, 50, 10, 10}));
    EXPECT_EQ(m.upperLeftKnob(bounds), (RectF{95, 100, 10, 10}));
    EXPECT_EQ(m.upperRightKnob(bounds), (RectF{195, 100, 10, 10}));
}

TEST(Marquee, CornerHitIsASquareAndReanchorsOpposite) {
    // Corners in view points: (50, 25), (150, 25), (50, 75), (150, 75).
    const PointF lo{0.25f, 0.25f};
    const PointF hi{0.75f, 0.75f};
    struct Corner {
        const char* name;
        PointF view;
        PointF opposite;
    };
    const std::vector<Corner> corners = {
        {"lower-left", {50, 25}, hi},
        {"lower-right", {150, 25}, {lo.x, hi.y}},
        {"upper-left", {50, 75}, {hi.x, lo.y}},
        {"upper-right", {150, 75}, lo},
    };
    struct Offset {
        PointF d;
        bool hit;
    };
    // Lower and left knob edges are inside, upper and right outside; (4.9, 4.9) is about 6.9
    // points away, so the knob is a square rather than a circle.
    const std::vector<Offset> offsets = {
        {{0, 0}, true},      {{-5, -5}, true}, {{4.9f, 4.9f}, true},    {{-5, 4.9f}, true},
        {{4.9f, -5}, true},  {{5, 0}, false},  {{0, 5}, false},         {{-5.1f, 0}, false},
        {{0, -5.1f}, false}, {{5, 5}, false},  {{-5.1f, -5.1f}, false},
    };
    // Both orientations, so that no expected anchor equals the original start in both.
    const std::vector<Marquee> originals = {makeMarquee(lo, hi), makeMarquee(hi, lo)};
    for (const Marquee& original : originals) {
        for (const Corner& corner : corners) {
            for (const Offset& o : offsets) {
                SCOPED_TRACE(testing::Message()
                             << corner.name << " offset " << testing::PrintToString(o.d)
                             << " start " << testing::PrintToString(original.startPoint()));
                Marquee m = original;
                const PointF p{corner.view.x + o.d.x, corner.view.y + o.d.y};
                EXPECT_EQ(m.pointIsNearCorner(p, kWide), o.hit);
                EXPECT_EQ(m.endPoint(), original.endPoint());
                EXPECT_EQ(m.startPoint(), o.hit ? corner.opposite : original.startPoint());
            }
        }
    }
}

TEST(Marquee, OverlappingKnobsPreferLowerLeftThenLowerRightThenUpperLeft) {
    // A 4 x 2 point selection at view (100, 50): all four knobs overlap.
    const Marquee original = makeMarquee({0.5f, 0.5f}, {0.52f, 0.52f});
    const PointF lo = original.startPoint();
    const PointF hi = original.endPoint();
    struct Case {
        PointF view;
        PointF expectedStart;
    };
    const std::vector<Case> cases = {
        {{102, 51}, hi},            // in all four: lower-left wins
        {{106, 51}, {lo.x, hi.y}},  // lower-right and upper-right: lower-right wins
        {{102, 56}, {hi.x, lo.y}},  // upper-left and upper-right: upper-left wins
        {{106, 56}, lo},            // upper-right only
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.view));
        Marquee m = original;
        EXPECT_TRUE(m.pointIsNearCorner(c.view, kWide));
        EXPECT_EQ(m.startPoint(), c.expectedStart);
    }
    Marquee m = original;
    EXPECT_FALSE(m.pointIsNearCorner({110, 51}, kWide));
    EXPECT_EQ(m, original);
}

TEST(Marquee, GrabbedCornerFollowsThePointer) {
    Marquee m = makeMarquee({0.25f, 0.25f}, {0.75f, 0.75f});
    ASSERT_TRUE(m.pointIsNearCorner({52, 27}, kWide));
    m.setEndPoint({20, 10}, kWide);
    EXPECT_EQ(m.startPoint(), (PointF{0.75f, 0.75f}));
    expectRectNear(m.rect(kWide), {20, 10, 130, 65});
}

TEST(Marquee, PointIsNearPoint) {
    struct Case {
        PointF a;
        PointF b;
        bool near;
    };
    const std::vector<Case> cases = {
        {{0.5f, 0.5f}, {0.5f, 0.5f}, true},
        {{0.03f, 0.02f}, {0, 0}, true},   // 0.0013
        {{0.03f, 0.03f}, {0, 0}, false},  // 0.0018
        {{0.3f, 0.5f}, {0.3387f, 0.5f}, true},
        {{0.3f, 0.5f}, {0.3388f, 0.5f}, false},
        {{0.9f, 0.1f}, {0.9f, 0.0613f}, true},
        // Exactly below the threshold in double arithmetic, but the float sum rounds up to it.
        {{0.0100370999f, 0.0374066383f}, {0, 0}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.a) + " " + testing::PrintToString(c.b));
        EXPECT_EQ(Marquee::pointIsNearPoint(c.a, c.b), c.near);
        EXPECT_EQ(Marquee::pointIsNearPoint(c.b, c.a), c.near);
    }
    const double x = 0.0100370999f;
    const double y = 0.0374066383f;
    EXPECT_LT(x * x + y * y, 0.0015) << "fixture no longer separates float from double";
}

TEST(Marquee, DescriptionPrintsSixDecimals) {
    Marquee m;
    EXPECT_EQ(m.description(), QStringLiteral("(0.000000, 0.000000, 0.000000, 0.000000)"));
    m.selectAll();
    EXPECT_EQ(m.description(), QStringLiteral("(0.000000, 0.000000, 1.000000, 1.000000)"));
    m = makeMarquee({0.25f, -0.5f}, {1.0f / 3.0f, 1.125f});
    EXPECT_EQ(m.description(), QStringLiteral("(0.250000, -0.500000, 0.333333, 1.125000)"));
}

// Random drags: a free drag stays inside the bounds; a constrained one holds the ratio in view
// points and never grows beyond the box the pointer spans.
TEST(Marquee, RandomDragsKeepTheirInvariants) {
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<float> unit(0, 1);
    std::uniform_real_distribution<float> origin(-500, 500);
    std::uniform_real_distribution<float> extent(1, 2000);
    std::uniform_real_distribution<float> aspectPart(0.5f, 20);
    int constrained = 0;
    for (int i = 0; i < 20000; ++i) {
        const RectF b{origin(rng), origin(rng), extent(rng), extent(rng)};
        const PointF start{b.x + unit(rng) * b.width, b.y + unit(rng) * b.height};
        // Drags reach up to half the bounds beyond each edge.
        const PointF drag{b.x + (unit(rng) * 2 - 0.5f) * b.width,
                          b.y + (unit(rng) * 2 - 0.5f) * b.height};
        const float slack =
            8 * FLT_EPSILON * (std::fabs(b.x) + std::fabs(b.y) + 2 * b.width + 2 * b.height);

        Marquee free;
        free.setStartAndEndPoint(start, b);
        free.setEndPoint(drag, b);
        const RectF r = free.rect(b);
        ASSERT_GE(r.x, b.x - slack) << i;
        ASSERT_GE(r.y, b.y - slack) << i;
        ASSERT_LE(r.maxX(), b.maxX() + slack) << i;
        ASSERT_LE(r.maxY(), b.maxY() + slack) << i;

        Marquee held;
        const float h = aspectPart(rng);
        const float w = aspectPart(rng);
        held.setAspectHeight(h, w);
        held.setStartAndEndPoint(start, b);
        held.setEndPoint(drag, b);
        const RectF c = held.rect(b);
        ASSERT_LE(held.width(), free.width() * (1 + 4 * FLT_EPSILON) + FLT_EPSILON) << i;
        ASSERT_LE(held.height(), free.height() * (1 + 4 * FLT_EPSILON) + FLT_EPSILON) << i;
        if (held.deselected()) continue;
        if (c.width > 0 && c.height > 0) {
            ++constrained;
            const double ratio = double(h) / double(w);
            const double tolerance = 8 * FLT_EPSILON * (b.height + ratio * b.width);
            ASSERT_NEAR(c.height, ratio * c.width, tolerance) << i;
        }
    }
    EXPECT_GT(constrained, 15000);
}

// Random moves keep a selection that fits inside the bounds, at the same size, lower-left first.
TEST(Marquee, RandomMovesStayInsideAtTheSameSize) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> unit(0, 1);
    std::uniform_real_distribution<float> delta(-3000, 3000);
    const RectF b{-30, 40, 640, 480};
    const float slack = 1e-3f;
    for (int i = 0; i < 5000; ++i) {
        Marquee m = makeMarquee({unit(rng), unit(rng)}, {unit(rng), unit(rng)});
        const RectF before = m.rect(b);
        m.translateFromPoint({0, 0}, {delta(rng), delta(rng)}, b);
        const RectF after = m.rect(b);
        ASSERT_LE(m.startPoint().x, m.endPoint().x) << i;
        ASSERT_LE(m.startPoint().y, m.endPoint().y) << i;
        ASSERT_NEAR(after.width, before.width, slack) << i;
        ASSERT_NEAR(after.height, before.height, slack) << i;
        ASSERT_GE(after.x, b.x - slack) << i;
        ASSERT_GE(after.y, b.y - slack) << i;
        ASSERT_LE(after.maxX(), b.maxX() + slack) << i;
        ASSERT_LE(after.maxY(), b.maxY() + slack) << i;
    }
}

}  // namespace
}  // namespace marigold
