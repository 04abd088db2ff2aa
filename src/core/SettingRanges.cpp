#include "core/SettingRanges.h"

#include <algorithm>

#include "platform/DefaultsKeys.h"

namespace marigold {

using namespace keys;

namespace {

// Thicker borders would swallow small outputs; longer delays look like a hang.
constexpr int kMaxBorderThickness = 100;
constexpr int kMaxCaptureDelay = 600;

const SettingRange kRanges[] = {
    // An unknown format is written as JPEG, the factory format: the window then shows JPEG
    // with its quality, as it writes.
    {DefFileFormat, 101, 104, std::nullopt},
    {DefInterpolation, 0, 3, std::nullopt},
    {DefPreserveExif, 0, 2, std::nullopt},
    {DefTimeStamp, 0, 2, std::nullopt},
    {DefBorderThickness, 0, kMaxBorderThickness, std::nullopt},
    {DefTimedCaptureDelay, 1, kMaxCaptureDelay, std::nullopt},
    // An unknown pointer paints no pointer at all.
    {DefCursor, 0, 5, 0},
};

}  // namespace

const SettingRange* settingRange(QLatin1StringView key) {
    const auto found = std::find_if(std::begin(kRanges), std::end(kRanges),
                                    [key](const SettingRange& range) { return range.key == key; });
    return found == std::end(kRanges) ? nullptr : found;
}

int integerSetting(const Defaults& defaults, QLatin1StringView key) {
    const int value = defaults.integerForKey(key);
    const SettingRange* range = settingRange(key);
    if (!range || (value >= range->low && value <= range->high)) return value;
    if (range->outside) return *range->outside;
    // Guards against a registration that is itself out of range (none registered in tests).
    return std::clamp(defaults.registeredIntegerForKey(key), range->low, range->high);
}

}  // namespace marigold
