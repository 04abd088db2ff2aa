#pragma once

#include <cstddef>
#include <cstdint>

namespace marigold {

// EXIF values sit at any byte offset and in either byte order, so they are put together
// byte by byte; the caller has checked that the bytes exist (`fits`).

// True when `count` bytes starting at `offset` lie inside `size` bytes, without overflow.
inline bool fits(std::size_t size, std::uint64_t offset, std::uint64_t count) {
    return offset <= size && count <= size - offset;
}

inline std::uint16_t get16(const std::uint8_t* p, bool motorola) {
    return motorola ? std::uint16_t(p[0] << 8 | p[1]) : std::uint16_t(p[1] << 8 | p[0]);
}

inline std::uint32_t get32(const std::uint8_t* p, bool motorola) {
    const std::uint32_t b0 = p[0], b1 = p[1], b2 = p[2], b3 = p[3];
    return motorola ? b0 << 24 | b1 << 16 | b2 << 8 | b3 : b3 << 24 | b2 << 16 | b1 << 8 | b0;
}

inline void put16(std::uint8_t* p, std::uint16_t value, bool motorola) {
    p[motorola ? 0 : 1] = std::uint8_t(value >> 8);
    p[motorola ? 1 : 0] = std::uint8_t(value & 0xFF);
}

}  // namespace marigold
