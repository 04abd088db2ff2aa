#pragma once

// What each fuzz target does with one input. Shared by the libFuzzer entry points and by
// the test that replays every saved regression input, so both run exactly the same code.
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "jpeg/JpegContext.h"
#include "jpeg/OrientationTag.h"

namespace marigold::fuzz {

inline void silence(JpegContext& context) {
    context.setErrorStream(nullptr);
    context.setOutputStream(nullptr);
}

// The section reader in EXIF mode, which also runs the EXIF parser on every EXIF block.
inline void readSectionsForExif(std::span<const std::uint8_t> data) {
    JpegContext context;
    silence(context);
    context.readJpegBuffer(data, READ_EXIF, "input");
    context.discardData();
}

// The section reader keeping the image, then the writer putting the file back together.
inline void readSectionsWithImage(std::span<const std::uint8_t> data) {
    JpegContext context;
    silence(context);
    if (context.readJpegBuffer(data, READ_IMAGE, "input")) context.writeJpegBuffer();
    context.discardData();
}

// One APP1 segment's data (from its length bytes on), parsed and then stripped of its
// thumbnail pointers, as the transplant does.
inline void parseExifBlock(std::span<const std::uint8_t> data) {
    std::vector<std::uint8_t> block(data.begin(), data.end());
    JpegContext context;
    silence(context);
    context.processExif(block);
    context.removeThumbnail(block);
}

// The in-place orientation reader, then the writer on a copy.
inline void readAndWriteOrientation(std::span<const std::uint8_t> data) {
    getOrientation(data);
    std::vector<std::uint8_t> copy(data.begin(), data.end());
    setOrientation(copy, copy.empty() ? 1 : copy.back());
}

// The transplant: the first two bytes give the source's length (big-endian), the source
// follows, the rest is the target.
inline void transplantExif(std::span<const std::uint8_t> data) {
    if (data.size() < 2) return;
    const std::size_t sourceLength = std::size_t(data[0]) << 8 | data[1];
    const std::span<const std::uint8_t> rest = data.subspan(2);
    const std::size_t split = sourceLength < rest.size() ? sourceLength : rest.size();
    JpegContext context;
    silence(context);
    context.copyExif(rest.first(split), rest.subspan(split));
}

}  // namespace marigold::fuzz
