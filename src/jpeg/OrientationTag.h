#pragma once

#include <cstdint>
#include <span>

namespace marigold {

// Reading and rewriting the orientation tag in a whole JPEG file's bytes, without the section
// store. Only a file whose EXIF APP1 segment comes straight after the start-of-image marker is
// looked at, and only the first directory; every failure answers 0 and changes nothing.

// The low byte of the orientation value, or 0.
int getOrientation(std::span<const std::uint8_t> file);
// Rewrites the tag as one unsigned short holding `orientation`; the file keeps its length.
// Answers the old low byte, or 0 when there is no tag to rewrite.
int setOrientation(std::span<std::uint8_t> file, std::uint8_t orientation);

}  // namespace marigold
