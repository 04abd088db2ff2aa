#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace marigold {

// The JPEG file `target` carrying the EXIF block and comment of the JPEG file `source`, its
// orientation tag set to 1: outputs are written upright, so the tag must not turn them again.
// Nothing when `source` is no JPEG or either cannot be read; nothing is printed for a source
// that is plainly not a JPEG (pictures of any other format are opened too).
std::optional<std::vector<std::uint8_t>> transplantExifUpright(std::span<const std::uint8_t> source,
                                                               std::span<const std::uint8_t> target);

}  // namespace marigold
