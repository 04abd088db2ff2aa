#include "output/JpegSizeSearch.h"

#include <gtest/gtest.h>

#include <map>

namespace marigold {
namespace {

TEST(JpegSizeSearch, NextQualityFollowsTheStepTable) {
    struct Case {
        float factor, ratio, next;
    };
    const Case cases[] = {
        // Row 1's own split of the high band.
        {100, 3.5f, 95}, {98, 3.5f, 78}, {97, 3.5f, 77}, {96, 3.5f, 56}, {95, 3.5f, 55}, {60, 3.5f, 20},
        // Exactly 3 is not over 3: row 2.
        {100, 3.0f, 95}, {80, 3.0f, 50},
        {95, 2.44f, 90}, {90, 2.44f, 60}, {90, 1.171875f, 83},
        {95, 1.25f, 91}, {94, 1.25f, 86},
        {80, 1.8f, 60}, {80, 1.65f, 64}, {80, 1.55f, 67}, {80, 1.45f, 70}, {80, 1.35f, 71},
        {80, 1.16f, 74}, {80, 1.14f, 75}, {80, 1.12f, 76}, {80, 1.08f, 77}, {80, 1.05f, 78},
        {96, 1.16f, 94}, {96, 1.18f, 93}, {96, 1.05f, 94}, {96, 1.01f, 95},
        // Bounds are strict, and the ratio is widened to double before the comparison:
        // 1.03f is just below the double 1.03, 1.0301f well above it.
        {80, 1.03f, 79}, {80, 1.0301f, 78}, {80, 1.0f, 79}, {80, 0.5f, 79},
        {1, 1.0f, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(nextFactorForFactor(c.factor, c.ratio), c.next)
            << "factor " << c.factor << " ratio " << c.ratio;
    }
}

// Attempts answered from a table of sizes per quality, as an encoder would.
struct ScriptedEncoder {
    std::map<int, int> sizes;
    bool writeFails = false;
    bool stopsEarly = false;  // reports no more than the stop size, as a real encoder may
    int writes = 0;
    int lastStopAt = 0;
    bool operator()(int quality, int byteLimit, int stopAt, int* size) {
        lastStopAt = stopAt;
        *size = sizes.count(quality) ? sizes.at(quality) : 1000;
        if (stopsEarly && stopAt > 0) *size = std::min(*size, stopAt);
        if (byteLimit != 0 && *size >= byteLimit) return false;
        ++writes;
        return !writeFails;
    }
};

TEST(JpegSizeSearch, WorkedExampleStepsDownUntilAFit) {
    ScriptedEncoder encoder{{{100, 400000}, {95, 250000}, {90, 120000}, {83, 102400}, {82, 90000}}};
    std::vector<JpegAttempt> trace;
    ASSERT_TRUE(searchJpegQuality(100, 100, std::ref(encoder), &trace));
    // 83 lands exactly on the limit, which is rejected: one more step.
    const std::vector<int> qualities = {100, 95, 90, 83, 82};
    ASSERT_EQ(trace.size(), qualities.size());
    for (size_t i = 0; i < trace.size(); ++i) EXPECT_EQ(trace[i].quality, qualities[i]);
    EXPECT_EQ(encoder.writes, 1);
}

TEST(JpegSizeSearch, EndsWithoutWritingWhenNothingFitsOrNothingIsTried) {
    struct Case {
        const char* what;
        int quality, limitKB;
        std::map<int, int> sizes;
        bool writeFails;
        bool found;
        size_t attempts;
    };
    const Case cases[] = {
        {"no limit: one attempt, written", 80, 0, {{80, 5'000'000}}, false, true, 1},
        {"quality 1 over the limit steps to 0", 1, 10, {{1, 20000}}, false, false, 1},
        {"quality 0 never attempts", 0, 10, {}, false, false, 0},
        {"negative quality never attempts", -5, 10, {}, false, false, 0},
        {"a failed write of a fitting attempt ends the search", 80, 10, {{80, 100}}, true, false, 1},
    };
    for (const Case& c : cases) {
        ScriptedEncoder encoder{c.sizes, c.writeFails};
        std::vector<JpegAttempt> trace;
        EXPECT_EQ(searchJpegQuality(c.quality, c.limitKB, std::ref(encoder), &trace), c.found) << c.what;
        EXPECT_EQ(trace.size(), c.attempts) << c.what;
    }
}

TEST(JpegSizeSearch, StoppingAtThreeTimesTheLimitChangesNoStep) {
    for (int limitKB : {10, 50, 100, 777, 9990}) {
        // A walk through far over, just over and just under three times the limit:
        // 100 -> 95 -> 55 -> 25 -> 5 -> below 1.
        const double limit = limitKB * 1024.0;
        std::map<int, int> sizes;
        for (const auto& [quality, ratio] : std::map<int, double>{
                 {100, 40}, {95, 3.0001}, {55, 2.9999}, {25, 1.8}, {5, 3.0000001}}) {
            sizes[quality] = int(limit * ratio);
        }
        ScriptedEncoder exact{sizes}, stopping{sizes};
        stopping.stopsEarly = true;
        std::vector<JpegAttempt> exactTrace, stoppingTrace;
        const bool found = searchJpegQuality(100, limitKB, std::ref(exact), &exactTrace);
        EXPECT_EQ(searchJpegQuality(100, limitKB, std::ref(stopping), &stoppingTrace), found);
        ASSERT_EQ(exactTrace.size(), stoppingTrace.size()) << limitKB;
        for (size_t i = 0; i < exactTrace.size(); ++i) {
            EXPECT_EQ(exactTrace[i].quality, stoppingTrace[i].quality) << limitKB << " attempt " << i;
        }
        // The stop is the very first size the table reads as more than threefold.
        const int stopAt = exact.lastStopAt;
        EXPECT_TRUE(float(stopAt) / float(limit) > 3.0f) << limitKB;
        EXPECT_FALSE(float(stopAt - 1) / float(limit) > 3.0f) << limitKB;
    }
}

}  // namespace
}  // namespace marigold
