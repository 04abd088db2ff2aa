#pragma once

#include <QLatin1StringView>
#include <optional>

#include "platform/Defaults.h"

namespace marigold {

// The valid codes of an integer setting and what a stored value outside them means. The
// settings file can be edited by hand, so every reader goes through this one table.
struct SettingRange {
    QLatin1StringView key;
    int low;
    int high;
    // What a value outside [low, high] reads as; none: the factory value.
    std::optional<int> outside;
};

// The range of `key`, or none for a key whose every integer is valid.
const SettingRange* settingRange(QLatin1StringView key);

// The stored integer when it is valid for `key`, otherwise what the table says it means.
int integerSetting(const Defaults& defaults, QLatin1StringView key);

}  // namespace marigold
