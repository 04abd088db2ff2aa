#include <filesystem>
#include <system_error>

#include "jpeg/ExifTransplant.h"
#include "jpeg/JpegContext.h"
#include "jpeg/OrientationTag.h"

namespace marigold {

void JpegContext::_recordFileFacts(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        errFatal("No such file");
        return;
    }
    const std::uintmax_t size = fs::file_size(path, error);
    _info.fileSize = error ? 0 : size;
    const fs::file_time_type time = fs::last_write_time(path, error);
    if (!error) {
        _info.fileDateTime = std::chrono::system_clock::to_time_t(
            std::chrono::time_point_cast<std::chrono::system_clock::duration>(
                std::chrono::file_clock::to_sys(time)));
    }
}

void JpegContext::_startAfresh() {
    resetJpgfile();
    _info = ImageInfo{};
    _info.flashUsed = -1;
    _info.meteringMode = -1;
}

bool JpegContext::parseFile(const std::string& path) {
    _currentFile = path;
    _startAfresh();
    _recordFileFacts(path);
    return readJpegFile(path, READ_EXIF);
}

std::optional<std::vector<std::uint8_t>> JpegContext::copyExif(
    std::span<const std::uint8_t> source, std::span<const std::uint8_t> target) {
    _startAfresh();
    if (!readJpegBuffer(source, READ_EXIF, "source")) return std::nullopt;
    discardAllButExif();
    // The thumbnail itself is no EXIF block: parsing it changes nothing, and the pointer
    // entries go from the directory remembered from the source's block, which keeps its
    // length with the thumbnail bytes left in it unreferenced.
    if (_info.thumbnailLocation) {
        removeThumbnail({_info.thumbnailLocation, _info.thumbnailSize});
    }
    if (!readJpegBuffer(target, READ_IMAGE, "target")) return std::nullopt;
    std::vector<std::uint8_t> bytes = writeJpegBuffer();
    discardData();
    return bytes;
}

std::optional<std::vector<std::uint8_t>> transplantExifUpright(std::span<const std::uint8_t> source,
                                                               std::span<const std::uint8_t> target) {
    if (source.size() < 2 || source[0] != 0xFF || source[1] != 0xD8) return std::nullopt;
    JpegContext context;
    std::optional<std::vector<std::uint8_t>> bytes = context.copyExif(source, target);
    if (bytes) setOrientation(*bytes, 1);
    return bytes;
}

}  // namespace marigold
