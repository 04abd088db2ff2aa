#pragma once

#include <functional>
#include <vector>

namespace marigold {

// The next JPEG quality to try after an attempt came out `ratio` times the limit. Coarse
// steps far over the limit, single steps near it; qualities of 95 and up step gently.
float nextFactorForFactor(float factor, float ratio);

struct JpegAttempt {
    int quality;
    int size;              // bytes, metadata included
    bool stopped = false;  // encoding stopped at `size`, so far over the limit
};

// One attempt: encode at `quality` and keep the result only if `byteLimit` is 0 or the
// size is below it. Reports the size it reached; false when nothing was kept. Sizes from
// `stopAt` up (when it is not 0) all lead to the same next step, so the attempt may stop
// there and report any size at or above it.
using JpegAttemptFunction = std::function<bool(int quality, int byteLimit, int stopAt, int* size)>;

// Steps the quality down from `quality` until an attempt fits under `limitKB` (0: no
// limit, one attempt). False when the quality ran out, or when an attempt that fitted
// still failed (its write did), since lower qualities would fail the same way.
bool searchJpegQuality(int quality, int limitKB, const JpegAttemptFunction& attempt,
                       std::vector<JpegAttempt>* trace = nullptr);

}  // namespace marigold
