#pragma once

#include <cstdint>
#include <ctime>
#include <span>
#include <string>

namespace marigold {

// What the section reader and the EXIF parser learn about one file. Zero (or empty) means
// not found; flash used and metering mode are -1 when unknown.
struct ImageInfo {
    static constexpr std::size_t kMaxComment = 1998;

    std::time_t fileDateTime = 0;
    std::uint64_t fileSize = 0;
    std::string cameraMake;
    std::string cameraModel;
    std::string dateTime;
    int height = 0;
    int width = 0;
    int orientation = 0;  // 1..8, 0 when absent or undefined
    bool isColor = false;
    int process = 0;  // the start-of-frame marker code
    int flashUsed = 0;
    float focalLength = 0;
    float exposureTime = 0;
    float apertureFNumber = 0;
    float distance = 0;
    float ccdWidth = 0;  // sensor width in millimetres
    float exposureBias = 0;
    int meteringMode = 0;
    int lightSource = 0;
    int exposureProgram = 0;
    int isoEquivalent = 0;
    std::string comments;

    // The thumbnail as found inside the EXIF block it was read from: its offset from the
    // block's TIFF header, its size and where it lies in memory. Valid while that block is.
    std::uint32_t thumbnailOffset = 0;
    std::uint32_t thumbnailSize = 0;
    std::uint8_t* thumbnailLocation = nullptr;

    // Where the orientation value lies in its EXIF block, and its number format.
    std::uint8_t* orientationLocation = nullptr;
    int orientationFormat = 0;

    std::span<const std::uint8_t> thumbnail() const {
        if (!thumbnailLocation) return {};
        return {thumbnailLocation, thumbnailSize};
    }
};

}  // namespace marigold
