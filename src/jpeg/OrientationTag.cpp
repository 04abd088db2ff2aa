#include "jpeg/OrientationTag.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "jpeg/ExifBytes.h"

namespace marigold {

namespace {

constexpr std::size_t kTiffStart = 12;  // SOI, APP1 marker, length, "Exif\0\0"
constexpr unsigned kOrientationTag = 0x0112;

struct OrientationEntry {
    std::size_t entry;  // from the start of the TIFF structure
    bool motorola;
};

// The first 12 bytes of a file, if they are SOI, APP1 and "Exif\0\0": the TIFF length N.
std::optional<std::size_t> tiffLength(std::span<const std::uint8_t> head) {
    static constexpr std::uint8_t kStart[] = {0xFF, 0xD8, 0xFF, 0xE1};
    static constexpr std::uint8_t kExif[] = {'E', 'x', 'i', 'f', 0, 0};
    if (head.size() < kTiffStart || !std::equal(kStart, kStart + 4, head.begin())) return {};
    const std::size_t length = std::size_t(head[4]) << 8 | head[5];
    if (length < 8 || !std::equal(kExif, kExif + 6, head.begin() + 6)) return {};
    return length - 8;
}

std::optional<OrientationEntry> findOrientation(std::span<const std::uint8_t> tiff) {
    const std::size_t n = tiff.size();
    if (n < 12) return {};
    const std::uint8_t* t = tiff.data();
    bool motorola;
    if (t[0] == 'I' && t[1] == 'I' && t[2] == 0x2A && t[3] == 0) {
        motorola = false;
    } else if (t[0] == 'M' && t[1] == 'M' && t[2] == 0 && t[3] == 0x2A) {
        motorola = true;
    } else {
        return {};
    }
    // Only first-directory offsets below 64 KB are taken; an EXIF segment is no longer.
    if ((motorola ? get16(t + 4, true) : get16(t + 6, false)) != 0) return {};
    const std::size_t offset = motorola ? get16(t + 6, true) : get16(t + 4, false);
    if (offset > n - 2) return {};
    const unsigned count = get16(t + offset, motorola);
    for (unsigned i = 0; i < count; ++i) {
        const std::size_t entry = offset + 2 + 12 * std::size_t(i);
        if (entry > n - 12) return {};
        if (get16(t + entry, motorola) == kOrientationTag) return OrientationEntry{entry, motorola};
    }
    return {};
}

int oldValue(std::span<const std::uint8_t> tiff, const OrientationEntry& found) {
    return tiff[found.entry + (found.motorola ? 9 : 8)];
}

// Entry bytes 2..11: format unsigned short, one component, the value in its first two bytes.
void newEntryTail(std::uint8_t* tail, std::uint8_t value, bool motorola) {
    const std::uint8_t intel[10] = {0x03, 0x00, 0x01, 0x00, 0x00, 0x00, value, 0x00, 0x00, 0x00};
    const std::uint8_t mm[10] = {0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, value, 0x00, 0x00};
    std::memcpy(tail, motorola ? mm : intel, 10);
}

std::span<const std::uint8_t> tiffOf(std::span<const std::uint8_t> file) {
    const std::optional<std::size_t> n = tiffLength(file);
    if (!n || file.size() - kTiffStart < *n) return {};
    return file.subspan(kTiffStart, *n);
}

}  // namespace

int getOrientation(std::span<const std::uint8_t> file) {
    const std::span<const std::uint8_t> tiff = tiffOf(file);
    const std::optional<OrientationEntry> found = findOrientation(tiff);
    return found ? oldValue(tiff, *found) : 0;
}

int setOrientation(std::span<std::uint8_t> file, std::uint8_t orientation) {
    const std::span<const std::uint8_t> tiff = tiffOf(file);
    const std::optional<OrientationEntry> found = findOrientation(tiff);
    if (!found) return 0;
    const int old = oldValue(tiff, *found);
    newEntryTail(file.data() + kTiffStart + found->entry + 2, orientation, found->motorola);
    return old;
}

}  // namespace marigold
