#include "output/JpegSizeSearch.h"

#include <algorithm>
#include <cstdint>

namespace marigold {

float nextFactorForFactor(float f, float r) {
    // Only the threefold bound is compared in single precision; the rest widen r first.
    if (r > 3.0f) {
        if (f == 100.0f) return f - 5.0f;
        if (f >= 97.0f && f < 100.0f) return f - 20.0f;
        return f - 40.0f;
    }
    struct Row {
        double bound;
        float high, low;
    };
    static constexpr Row rows[] = {
        {2.0, 5, 30}, {1.7, 5, 20}, {1.6, 5, 16}, {1.5, 5, 13}, {1.4, 5, 10},
        {1.3, 4, 9},  {1.2, 4, 8},  {1.17, 3, 7}, {1.15, 2, 6}, {1.13, 2, 5},
        {1.1, 2, 4},  {1.07, 2, 3}, {1.03, 2, 2},
    };
    const bool high = f >= 95.0f;
    for (const Row& row : rows) {
        if (double(r) > row.bound) return f - (high ? row.high : row.low);
    }
    return f - 1.0f;
}

namespace {

// The smallest size that counts as more than three times the limit, in the single
// precision the first row of the table compares in: every size from there on steps the
// same way, whatever it is exactly.
int threefoldSize(int byteLimit) {
    if (byteLimit <= 0) return 0;
    int64_t size = int64_t(byteLimit) * 3;
    while (!(float(size) / float(byteLimit) > 3.0f)) ++size;
    return int(std::min<int64_t>(size, INT32_MAX));
}

}  // namespace

bool searchJpegQuality(int quality, int limitKB, const JpegAttemptFunction& attempt,
                       std::vector<JpegAttempt>* trace) {
    // The limit travels as a 32-bit byte count, as the file sizes do.
    const int byteLimit = int(uint32_t(limitKB) << 10);
    const int stopAt = threefoldSize(byteLimit);
    while (quality > 0) {
        int size = 0;
        const bool kept = attempt(quality, byteLimit, stopAt, &size);
        if (trace) trace->push_back({quality, size, stopAt > 0 && size >= stopAt});
        if (kept) return true;
        if (byteLimit == 0 || size < byteLimit) return false;
        const float ratio = float(size) / float(byteLimit);
        quality = int(nextFactorForFactor(float(quality), ratio));
    }
    return false;
}

}  // namespace marigold
