#include "selection/Marquee.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <random>
#include <utility>

namespace marigold {

// Internal linkage keeps these failure printers private to this file.
static void PrintTo(const PointF& p, std::ostream* os) {
    *os << "(" << p.x << ", " << p.y << ")";
}
static void PrintTo(const RectF& r, std::ostream* os) {
    *os << "(" << r.x << ", " << r.y << ", " << r.width << ", " << r.height << ")";
}

namespace {

// With unit bounds, view coordinates are the normalised ones, unclamped.
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

TEST(Marquee, SelectAllAndDeselectKeepTheAspect) {
    Marquee m;
    EXPECT_TRUE(m.deselected());
    m.setAspectHeight(1, 2);
    m.selectAll();
    EXPECT_FALSE(m.deselected());
    EXPECT_EQ(m.rect(kWide), kWide);
    m.deselect();
    EXPECT_TRUE(m.deselected());
    EXPECT_EQ(m.endPoint(), PointF{});
    // Still held to 1:2 (100 x 50 points on kWide) after a deselect.
    m.setStartAndEndPoint({0, 0}, kWide);
    m.setEndPoint({100, 100}, kWide);
    expectPointNear(m.endPoint(), {0.5f, 0.5f});

    // A line has no area but is still a selection; the aspect does not reshape it.
    Marquee line = makeMarquee({0.5f, 0.25f}, {0.5f, 0.75f});
    line.setAspectHeight(1, 1);
    EXPECT_FALSE(line.deselected());
    EXPECT_EQ(line.size(), (SizeF{0, 0.5f}));
    EXPECT_EQ(line.endPoint(), (PointF{0.5f, 0.75f}));
}

TEST(Marquee, FreeEndPointIsClampedToTheImage) {
    const RectF bounds{10, 20, 200, 100};
    const std::pair<PointF, PointF> cases[] = {
        {{-50, -50}, {0, 0}}, {{500, 500}, {1, 1}}, {{110, -1}, {0.5f, 0}}, {{9, 70}, {0, 0.5f}}};
    // Zero, negative or NaN in either part means no constraint.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::pair<float, float> freeAspects[] = {{0, 0},  {0, 2},   {2, 0},  {-1, 2},
                                                   {1, -1}, {nan, 1}, {1, nan}};
    for (const auto& [h, w] : freeAspects) {
        for (const auto& [view, expected] : cases) {
            SCOPED_TRACE(testing::Message()
                         << h << ":" << w << " " << testing::PrintToString(view));
            Marquee m;
            m.setStartAndEndPoint({60, 45}, bounds);
            m.setAspectHeight(h, w);
            m.setEndPoint(view, bounds);
            EXPECT_EQ(m.endPoint(), expected);
            EXPECT_EQ(m.startPoint(), (PointF{0.25f, 0.25f}));
        }
    }
}

TEST(Marquee, ConstrainedEndPointFollowsTheRule) {
    struct Case {
        const char* name;
        float aspectHeight, aspectWidth;
        PointF startView, priorEndView, dragView, expectedEnd;
    };
    // The ratio is held in view points: on kWide, 0.5 x 0.5 normalised is 100 x 50 points.
    const Case cases[] = {
        {"TooTall", 1, 2, {0, 0}, {0, 0}, {100, 100}, {0.5f, 0.5f}},
        {"TooWide", 1, 2, {0, 0}, {0, 0}, {200, 50}, {0.5f, 0.5f}},
        {"TooTallDownward", 1, 2, {200, 100}, {200, 100}, {100, 0}, {0.5f, 0.5f}},
        {"TooWideLeftward", 1, 2, {200, 100}, {200, 100}, {0, 50}, {0.5f, 0.5f}},
        // An exact ratio, or 0/0, leaves the previous end point in place.
        {"EqualQuotient", 1, 2, {0, 0}, {40, 60}, {100, 50}, {0.2f, 0.6f}},
        {"DragOntoStart", 1, 2, {50, 20}, {40, 60}, {50, 20}, {0.2f, 0.6f}},
        // (400, 150) clamps to (1, 1), 200 x 100 points, before the rule sees it.
        {"ClampsFirst", 1, 1, {0, 0}, {0, 0}, {400, 150}, {0.5f, 1}},
        // dw == 0: an infinite quotient collapses the end onto the start's y.
        {"ZeroWidth", 1, 2, {50, 20}, {50, 20}, {50, 90}, {0.25f, 0.2f}},
        // A start outside the image gives an end outside [0, 1] that is kept as is.
        {"Unclamped", 1, 1, {250, 50}, {250, 50}, {0, 75}, {1.125f, 0.75f}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Marquee m;
        m.setStartAndEndPoint(c.startView, kWide);
        m.setEndPoint(c.priorEndView, kWide);
        m.setAspectHeight(c.aspectHeight, c.aspectWidth);
        const PointF start = m.startPoint();
        m.setEndPoint(c.dragView, kWide);
        expectPointNear(m.endPoint(), c.expectedEnd);
        EXPECT_EQ(m.startPoint(), start);
    }
}

TEST(Marquee, ConversionThroughBounds) {
    const RectF b{-40, -20, 80, 60};
    EXPECT_EQ(Marquee::convertPoint({-40, -20}, b), (PointF{0, 0}));
    expectPointNear(Marquee::convertPoint({0, -5}, b), {0.5f, 0.25f});
    expectPointNear(Marquee::convertPoint({-120, 100}, b), {-1, 2});
    // A drag from upper-right to lower-left comes back as the same view rectangle.
    Marquee m;
    m.setStartAndEndPoint({20, 10}, b);
    m.setEndPoint({-20, -5}, b);
    EXPECT_EQ(m.rect(b), (RectF{-20, -5, 40, 15}));
}

TEST(Marquee, MoveClampsInsideTheBoundsAndNormalises) {
    const RectF b{50, 30, 200, 100};
    struct Case {
        PointF start, end, delta;
        RectF expected;
    };
    const Case cases[] = {
        {{0.25f, 0.25f}, {0.75f, 0.5f}, {10, 5}, {110, 60, 100, 25}},
        {{0.25f, 0.5f}, {0.75f, 0.25f}, {1e9f, 1e9f}, {150, 105, 100, 25}},
        {{0.75f, 0.25f}, {0.25f, 0.5f}, {-1e9f, -1e9f}, {50, 30, 100, 25}},
        // Larger than the bounds: the upper clamp comes last, so the far edges end flush.
        {{-0.25f, 1.5f}, {1.25f, -0.5f}, {0, 0}, {-50, -70, 300, 200}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.expected));
        Marquee m = makeMarquee(c.start, c.end);
        EXPECT_EQ(m.rectTranslatedFromPoint({3, 7}, {3 + c.delta.x, 7 + c.delta.y}, b), c.expected);
        m.translateFromPoint({3, 7}, {3 + c.delta.x, 7 + c.delta.y}, b);
        expectPointNear(m.startPoint(), Marquee::convertPoint({c.expected.x, c.expected.y}, b));
        expectPointNear(m.endPoint(),
                        Marquee::convertPoint({c.expected.maxX(), c.expected.maxY()}, b));
    }
}

TEST(Marquee, ContainsPointIsStrict) {
    // View rectangle (50, 25)-(150, 75), built from the upper-right corner.
    const Marquee m = makeMarquee({0.75f, 0.75f}, {0.25f, 0.25f});
    const std::pair<PointF, bool> cases[] = {
        {{100, 50}, true},  {{50.5f, 25.5f}, true}, {{149.5f, 74.5f}, true}, {{50, 50}, false},
        {{150, 50}, false}, {{100, 25}, false},     {{100, 75}, false},
    };
    for (const auto& [view, inside] : cases) {
        EXPECT_EQ(m.containsPoint(view, kWide), inside) << testing::PrintToString(view);
    }
}

// Grabbing a corner re-anchors the start at the opposite one; a miss changes nothing.
void expectGrab(const Marquee& original, PointF view, bool hit, PointF anchor) {
    SCOPED_TRACE(testing::PrintToString(view) + " from " +
                 testing::PrintToString(original.startPoint()));
    Marquee m = original;
    EXPECT_EQ(m.pointIsNearCorner(view, kWide), hit);
    EXPECT_EQ(m.endPoint(), original.endPoint());
    EXPECT_EQ(m.startPoint(), hit ? anchor : original.startPoint());
}

TEST(Marquee, KnobsAreTenPointSquaresThatReanchorTheOppositeCorner) {
    const RectF bounds{50, 30, 200, 100};
    const Marquee k = makeMarquee({0.75f, 0.25f}, {0.25f, 0.75f});
    EXPECT_EQ(k.lowerLeftKnob(bounds), (RectF{95, 50, 10, 10}));
    EXPECT_EQ(k.lowerRightKnob(bounds), (RectF{195, 50, 10, 10}));
    EXPECT_EQ(k.upperLeftKnob(bounds), (RectF{95, 100, 10, 10}));
    EXPECT_EQ(k.upperRightKnob(bounds), (RectF{195, 100, 10, 10}));

    // Corners in view points on kWide: (50, 25), (150, 25), (50, 75), (150, 75).
    const PointF lo{0.25f, 0.25f}, hi{0.75f, 0.75f};
    const std::pair<PointF, PointF> corners[] = {
        {{50, 25}, hi}, {{150, 25}, {lo.x, hi.y}}, {{50, 75}, {hi.x, lo.y}}, {{150, 75}, lo}};
    const std::pair<PointF, bool> offsets[] = {
        {{0, 0}, true}, {{4.9f, 4.9f}, true}, {{5, 0}, false}, {{0, -5.1f}, false}};
    // Both orientations, so that no expected anchor equals the original start in both.
    for (const Marquee& original : {makeMarquee(lo, hi), makeMarquee(hi, lo)}) {
        for (const auto& [corner, opposite] : corners) {
            for (const auto& [d, hit] : offsets) {
                expectGrab(original, {corner.x + d.x, corner.y + d.y}, hit, opposite);
            }
        }
    }

    // A 4 x 2 point selection at view (100, 50): all four knobs overlap, and the lower-left
    // knob wins, then lower-right, then upper-left.
    const Marquee tiny = makeMarquee({0.5f, 0.5f}, {0.52f, 0.52f});
    const PointF s = tiny.startPoint(), e = tiny.endPoint();
    expectGrab(tiny, {102, 51}, true, e);
    expectGrab(tiny, {106, 51}, true, {s.x, e.y});
    expectGrab(tiny, {102, 56}, true, {e.x, s.y});
    expectGrab(tiny, {106, 56}, true, s);
    expectGrab(tiny, {110, 51}, false, {});
}

// Random drags: a free drag stays inside the bounds, a constrained one holds the ratio in view
// points within the box the pointer spans, and a move keeps the size inside the bounds.
TEST(Marquee, RandomDragsAndMovesKeepTheirInvariants) {
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<float> unit(0, 1), far(-0.5f, 1.5f), part(0.5f, 20);
    std::uniform_real_distribution<float> delta(-3000, 3000);
    const RectF b{-30, 40, 640, 480};
    const float slack = 1e-3f;
    auto expectInside = [&](RectF r) {
        EXPECT_TRUE(r.x >= b.x - slack && r.y >= b.y - slack && r.maxX() <= b.maxX() + slack &&
                    r.maxY() <= b.maxY() + slack)
            << testing::PrintToString(r);
    };
    int constrained = 0;
    for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
        const PointF start{b.x + unit(rng) * b.width, b.y + unit(rng) * b.height};
        const PointF drag{b.x + far(rng) * b.width, b.y + far(rng) * b.height};
        Marquee free;
        free.setStartAndEndPoint(start, b);
        free.setEndPoint(drag, b);
        expectInside(free.rect(b));

        Marquee held;
        const float h = part(rng), w = part(rng);
        held.setAspectHeight(h, w);
        held.setStartAndEndPoint(start, b);
        held.setEndPoint(drag, b);
        const RectF c = held.rect(b);
        EXPECT_LE(c.width, free.rect(b).width + slack);
        EXPECT_LE(c.height, free.rect(b).height + slack);
        if (c.width > 0 && c.height > 0) {
            ++constrained;
            EXPECT_NEAR(c.height, h / w * c.width, slack * (1 + h / w)) << i;
        }

        const RectF before = free.rect(b);
        free.translateFromPoint({0, 0}, {delta(rng), delta(rng)}, b);
        EXPECT_LE(free.startPoint().x, free.endPoint().x);
        EXPECT_LE(free.startPoint().y, free.endPoint().y);
        EXPECT_NEAR(free.rect(b).width, before.width, slack);
        EXPECT_NEAR(free.rect(b).height, before.height, slack);
        expectInside(free.rect(b));
    }
    EXPECT_GT(constrained, 1500);
}

}  // namespace
}  // namespace marigold
